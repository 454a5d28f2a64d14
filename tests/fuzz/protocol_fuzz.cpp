// Fuzz target: the request protocol. Any bytes, taken as a received request,
// go through every parser; then requests made from the input are formatted
// and parsed back, and must come back as they were sent whenever they fit a
// message and their texts can travel as fields.
#include <fuzzer/FuzzedDataProvider.h>

#include <string>

#include "channel/protocol.h"
#include "tests/fuzz/check.h"

using namespace skiff::channel;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  // Each parse works on a copy of its own, as the server's does on its buffer.
  std::string copy;
  auto received = [&](const char* text) { return SplitRequest((copy = text).data()); };
  const std::string raw(reinterpret_cast<const char*>(data), size);
  ParseNumbers<3>(received(raw.c_str()).arguments);
  ParseNodeSymbol(received(raw.c_str()).arguments);
  ParseNodeParentPath(received(raw.c_str()).arguments);
  ParseMatchingSymbols(received(raw.c_str()).arguments);

  FuzzedDataProvider in(data, size);
  const std::string a = in.ConsumeRandomLengthString(600).c_str();
  const std::string b = in.ConsumeRandomLengthString(600).c_str();
  const int32_t n[3] = {in.ConsumeIntegral<int32_t>(), in.ConsumeIntegral<int32_t>(),
                        in.ConsumeIntegral<int32_t>()};
  Message m;
  size_t need = 0;
  const bool fields = IsFieldText(a.c_str()) && IsFieldText(b.c_str());
  switch (in.ConsumeIntegralInRange(0, 3)) {
    case 0: {
      need = FormatNodeSymbol(m, a.c_str(), b.c_str(), static_cast<uint32_t>(n[0]), n[1] & 1);
      if (need > kMessageSize || !fields) break;
      Request r = received(m.data());
      NodeSymbolRequest p = ParseNodeSymbol(r.arguments);
      Check(r.code == kGetNodeSymbol && p.selectionName == a && p.parentSelectionName == b &&
            p.customSubmapId == n[0] && p.doRecreateParentPath == (n[1] & 1));
      break;
    }
    case 1: {
      need = FormatNodeParentPath(m, a.c_str(), b.c_str(), n[0]);
      if (need > kMessageSize || !fields) break;
      Request r = received(m.data());
      NodeParentPathRequest p = ParseNodeParentPath(r.arguments);
      Check(r.code == kGetNodeParentPath && p.hostnameOrIPAddress == a &&
            p.parentSelectionName == b && p.numRootObjects == n[0]);
      break;
    }
    case 2: {  // the query comes last and may hold any text
      need = FormatMatchingSymbols(m, n[0], n[1], a.c_str(), n[2]);
      if (need > kMessageSize) break;
      Request r = received(m.data());
      MatchingSymbolsRequest p = ParseMatchingSymbols(r.arguments);
      Check(r.code == kGetMatchingSymbols && p.queryCategoryType == n[0] &&
            p.queryMatchType == n[1] && p.numRootObjects == n[2] && p.queryString == a);
      break;
    }
    default: {
      const auto code = static_cast<RequestCode>(in.ConsumeIntegralInRange(1, kLastRequestCode));
      need = FormatNumbers(m, code, {n[0], n[1], n[2]});
      Request r = received(m.data());
      Check(r.code == code &&
            ParseNumbers<3>(r.arguments) == std::array<int32_t, 3>{n[0], n[1], n[2]});
    }
  }
  Check(need > kMessageSize || need == std::string(m.data()).size() + 1);
  return 0;
}
