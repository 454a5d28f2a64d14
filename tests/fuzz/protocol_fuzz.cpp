// Fuzz target: the request protocol. Any bytes, taken as a received request,
// go through every parser; then requests made from the input are formatted
// and parsed back, and must come back as they were sent whenever they fit a
// message and their texts can travel as fields.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "channel/protocol.h"

using namespace skiff::channel;

namespace {

void Check(bool holds) {
  if (!holds) std::abort();
}

// Parses `text` as a received request with `parse`, on a copy of its own.
template <typename Parse>
auto Received(const std::string& text, Parse parse) {
  std::vector<char> copy(text.c_str(), text.c_str() + text.size() + 1);
  return parse(SplitRequest(copy.data()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string raw(reinterpret_cast<const char*>(data), size);
  Received(raw, [](Request r) { return ParseNumbers<3>(r.arguments); });
  Received(raw, [](Request r) { return ParseNodeSymbol(r.arguments).customSubmapId; });
  Received(raw, [](Request r) { return ParseNodeParentPath(r.arguments).numRootObjects; });
  Received(raw, [](Request r) { return ParseMatchingSymbols(r.arguments).queryMatchType; });

  FuzzedDataProvider in(data, size);
  const std::string a = in.ConsumeRandomLengthString(600).c_str();
  const std::string b = in.ConsumeRandomLengthString(600).c_str();
  const int32_t n[3] = {in.ConsumeIntegral<int32_t>(), in.ConsumeIntegral<int32_t>(),
                        in.ConsumeIntegral<int32_t>()};
  Message m;
  size_t need = 0;
  const bool fields = IsFieldText(a.c_str()) && IsFieldText(b.c_str());
  switch (in.ConsumeIntegralInRange(0, 3)) {
    case 0:
      need = FormatNodeSymbol(m, a.c_str(), b.c_str(), static_cast<uint32_t>(n[0]), n[1] & 1);
      if (need > kMessageSize || !fields) break;
      Received(m.data(), [&](Request r) {
        NodeSymbolRequest p = ParseNodeSymbol(r.arguments);
        Check(r.code == kGetNodeSymbol && p.selectionName == a && p.parentSelectionName == b &&
              p.customSubmapId == n[0] && p.doRecreateParentPath == (n[1] & 1));
        return 0;
      });
      break;
    case 1:
      need = FormatNodeParentPath(m, a.c_str(), b.c_str(), n[0]);
      if (need > kMessageSize || !fields) break;
      Received(m.data(), [&](Request r) {
        NodeParentPathRequest p = ParseNodeParentPath(r.arguments);
        Check(r.code == kGetNodeParentPath && p.hostnameOrIPAddress == a &&
              p.parentSelectionName == b && p.numRootObjects == n[0]);
        return 0;
      });
      break;
    case 2:  // the query comes last and may hold any text
      need = FormatMatchingSymbols(m, n[0], n[1], a.c_str(), n[2]);
      if (need > kMessageSize) break;
      Received(m.data(), [&](Request r) {
        MatchingSymbolsRequest p = ParseMatchingSymbols(r.arguments);
        Check(r.code == kGetMatchingSymbols && p.queryCategoryType == n[0] &&
              p.queryMatchType == n[1] && p.numRootObjects == n[2] && p.queryString == a);
        return 0;
      });
      break;
    default: {
      const auto code = static_cast<RequestCode>(in.ConsumeIntegralInRange(1, kLastRequestCode));
      need = FormatNumbers(m, code, {n[0], n[1], n[2]});
      Received(m.data(), [&](Request r) {
        Check(r.code == code &&
              ParseNumbers<3>(r.arguments) == std::array<int32_t, 3>{n[0], n[1], n[2]});
        return 0;
      });
    }
  }
  Check(need > kMessageSize || need == std::string(m.data()).size() + 1);
  return 0;
}
