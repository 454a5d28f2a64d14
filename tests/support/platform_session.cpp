#include "tests/support/platform_session.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include "emulator/qxwemu.h"

namespace skifftest {

namespace {

std::string ReadMap(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  EXPECT_TRUE(in.good()) << "no test map " << path;
  return std::string(std::istreambuf_iterator<char>(in), {});
}

}  // namespace

std::string TestMap(const std::string& name) {
  return ReadMap(std::string(SKIFF_TEST_MAPS) + "/" + name);
}

std::string JavaTestMap(const std::string& name) {
  return ReadMap(std::string(SKIFF_JAVA_TEST_MAPS) + "/" + name);
}

std::string WriteTempFile(const std::string& text, const std::string& suffix) {
  const char* dir = std::getenv("TMPDIR");
  std::string pattern = std::string(dir != nullptr ? dir : "/tmp") + "/skifftest-XXXXXX" + suffix;
  int fd = mkstemps(pattern.data(), static_cast<int>(suffix.size()));
  if (fd < 0) {
    ADD_FAILURE() << "cannot create a temporary file";
    return {};
  }
  close(fd);
  std::ofstream(pattern, std::ios::binary) << text;
  return pattern;
}

PlatformSession::PlatformSession(const std::string& mapJson) {
  if (mapJson.empty()) {
    unsetenv("QXW_MAP");
  } else {
    mapPath_ = WriteTempFile(mapJson);
    setenv("QXW_MAP", mapPath_.c_str(), 1);
  }
  ok_ = QXwInit() == 0;
  if (!ok_) {
    error_ = QXwErrorMsg(QXwError());
    return;
  }
  map_ = QXwGetMapInfo();
}

void PlatformSession::End() {
  if (ok_ && !ended_) QXwDone();
  ended_ = true;
}

PlatformSession::~PlatformSession() {
  QXwFreeMapInfo(map_);
  End();
  unsetenv("QXW_MAP");
  if (!mapPath_.empty()) std::remove(mapPath_.c_str());
}

nlohmann::json Control(const std::string& command) {
  return nlohmann::json::parse(qxwemu::Control(command));
}

nlohmann::json ControlOk(const std::string& command) {
  nlohmann::json reply = Control(command);
  EXPECT_TRUE(reply.value("ok", false)) << command << " -> " << reply.dump();
  return reply;
}

uint64_t Calls(const std::string& function) {
  nlohmann::json reply = Control("counters");
  return reply["counters"].value(function, uint64_t{0});
}

void ResetCalls() { ControlOk("reset-counters"); }

int DeliverPending() {
  int delivered = 0;
  while (qxwemu::PendingEvents() > 0 && QXwProcessEvent() >= 0) ++delivered;
  return delivered;
}

}  // namespace skifftest
