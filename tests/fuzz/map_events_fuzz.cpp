// Fuzz target: the map's events. The input is control command lines, one a
// line: each changes the emulated map (or makes a platform function fail, or
// serve its lists in another order or shape), and the events it makes go to
// the real handlers, with the fake Java side, in the dispatcher's session
// (dispatcher_session.h), which starts every input on the map as loaded. A handler must neither
// fail nor leave a local reference behind. Lines that would end the session or open another file
// are passed over.
#include <cstdint>
#include <string>
#include <vector>

#include "emulator/control_syntax.h"
#include "emulator/qxwemu.h"
#include "tests/fuzz/dispatcher_session.h"
#include "tests/fuzz/fake_java.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzzsession::Open();
  fuzzsession::Reload();
  const std::string text(reinterpret_cast<const char*>(data), size);
  std::vector<std::string> failing;  // the functions made to fail
  size_t lines = 0;
  for (size_t at = 0; at < text.size() && lines++ < 32;) {
    size_t end = std::min(text.find('\n', at), text.size());
    const std::string line = text.substr(at, end - at);
    at = end + 1;
    std::vector<std::string> words;
    try {
      words = qxwemu::SplitWords(line);
    } catch (const qxwemu::Refusal&) {
      continue;
    }
    if (words.empty() || words[0] == "end-session" || words[0] == "open-map") continue;
    if (words[0] == "fail" && words.size() > 1) failing.push_back(words[1]);
    qxwemu::Control(line);
    fuzzsession::DeliverEvents();
  }
  for (const std::string& function : failing) qxwemu::Control("fail " + function + " off");
  fakejava::Return();
  return 0;
}
