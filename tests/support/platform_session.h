// Test support: a platform session on a map of the test's own, and access to
// the emulator's control protocol.
#ifndef SKIFF_TESTS_SUPPORT_PLATFORM_SESSION_H_
#define SKIFF_TESTS_SUPPORT_PLATFORM_SESSION_H_

#include <cstdint>
#include <string>

#include <nlohmann/json.hpp>

#include "platform/qxw.h"

namespace skifftest {

// The text of a test map in tests/maps/.
std::string TestMap(const std::string& name);
// The text of a map of the Java tests (java/test/resources/maps/), which the
// C++ tests share where they check the same map from below.
std::string JavaTestMap(const std::string& name);

// Writes `text` to a new file under the temporary directory; returns its path.
std::string WriteTempFile(const std::string& text, const std::string& suffix = ".json");

// Opens a platform session (QXwInit) on the map given as map file text, or
// on the emulator's default map when the text is empty, and ends it
// (QXwDone) when destroyed. Check ok() before use.
class PlatformSession {
 public:
  explicit PlatformSession(const std::string& mapJson = "");
  ~PlatformSession();

  bool ok() const { return ok_; }
  // QXwErrorMsg of the failed QXwInit.
  const std::string& error() const { return error_; }
  // The session's map information, owned by this object.
  QXwMapInfo* map() const { return map_; }

  // Ends the session now (QXwDone), as the destructor would.
  void End();

  PlatformSession(const PlatformSession&) = delete;
  PlatformSession& operator=(const PlatformSession&) = delete;

 private:
  bool ok_ = false;
  bool ended_ = false;
  std::string error_;
  std::string mapPath_;
  QXwMapInfo* map_ = nullptr;
};

// Applies a control command in process and returns the parsed reply.
nlohmann::json Control(const std::string& command);
// Applies a control command that must succeed (fails the test otherwise).
nlohmann::json ControlOk(const std::string& command);
// Calls of a platform function since the last reset-counters.
uint64_t Calls(const std::string& function);
void ResetCalls();
// Delivers every queued event with QXwProcessEvent; returns how many.
int DeliverPending();

}  // namespace skifftest

#endif  // SKIFF_TESTS_SUPPORT_PLATFORM_SESSION_H_
