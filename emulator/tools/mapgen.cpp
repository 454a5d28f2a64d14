// qxw-mapgen: writes an IP map of any size in map file form, the same for
// the same options and seed.
//
// The map: a Root submap with the "IP Internet" symbol; on the Internet
// submap, nested locations; in each innermost location, networks and
// routers; a network's submap holds its segments, the network node symbols
// of its nodes and its routers; a segment's submap holds its nodes; a node's
// submap holds its interfaces, whose objects carry the TopM fields. Routers
// have a symbol in their location and on every network they join, with the
// compound status source. Meta-connections join neighbouring top-level
// locations and open into a policy-3 submap. Some node symbols are hidden,
// some nodes have a user-plane symbol, and a "Facilities" submap of another
// application shows some nodes again.
#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

struct Options {
  uint64_t seed = 1;
  int locations = 2;       // top-level locations
  int depth = 2;           // levels of locations
  int sublocations = 1;    // locations inside each location above the last level
  int networks = 2;        // networks in each innermost location
  int segments = 2;        // segments per network
  int nodes = 2;           // nodes per segment
  int interfaces = 2;      // interfaces per node
  int routers = 1;         // routers per innermost location
  int userPlaneEvery = 5;  // every Nth node gets a user-plane symbol (0: none)
  int hiddenEvery = 7;     // every Nth segment node symbol is hidden (0: none)
  int otherAppEvery = 6;   // every Nth node is shown on the Facilities submap (0: none)
  int wide = 0;            // nodes of one extra segment of the first network
  long objects = 0;        // aim for about this many objects
  const char* output = nullptr;
};

// splitmix64: small, fast and the same everywhere.
class Random {
 public:
  explicit Random(uint64_t seed) : state_(seed) {}
  uint64_t Next() {
    uint64_t z = (state_ += 0x9e3779b97f4a7c15ULL);
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ULL;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebULL;
    return z ^ (z >> 31);
  }
  int Below(int n) { return static_cast<int>(Next() % static_cast<uint64_t>(n)); }

 private:
  uint64_t state_;
};

std::string Quote(const std::string& s) {
  std::string out = "\"";
  for (char c : s) {
    if (c == '"' || c == '\\') {
      out += '\\';
      out += c;
    } else if (static_cast<unsigned char>(c) < 0x20) {
      char buf[8];
      std::snprintf(buf, sizeof(buf), "\\u%04x", c);
      out += buf;
    } else {
      out += c;
    }
  }
  return out + "\"";
}

// Writes the three entity arrays; objects go straight to the output, the
// submaps and symbols to temporary files appended at the end.
class Writer {
 public:
  explicit Writer(FILE* out) : out_(out), submaps_(std::tmpfile()), symbols_(std::tmpfile()) {
    if (submaps_ == nullptr || symbols_ == nullptr) {
      std::perror("qxw-mapgen: tmpfile");
      std::exit(1);
    }
  }

  void Object(const std::string& json) { Element(out_, &objectCount_, json); }
  void Submap(const std::string& json) { Element(submaps_, &submapCount_, json); }
  void Symbol(const std::string& json) { Element(symbols_, &symbolCount_, json); }

  void Finish() {
    std::fputs("\n],\n\"submaps\": [\n", out_);
    Append(submaps_);
    std::fputs("\n],\n\"symbols\": [\n", out_);
    Append(symbols_);
    std::fputs("\n]\n}\n", out_);
  }

  long objects() const { return objectCount_; }
  long submaps() const { return submapCount_; }
  long symbols() const { return symbolCount_; }

 private:
  static void Element(FILE* f, long* count, const std::string& json) {
    if (*count > 0) std::fputs(",\n", f);
    std::fputs(json.c_str(), f);
    ++*count;
  }
  void Append(FILE* f) {
    std::rewind(f);
    char buffer[1 << 16];
    size_t n;
    while ((n = std::fread(buffer, 1, sizeof(buffer), f)) > 0) std::fwrite(buffer, 1, n, out_);
    std::fclose(f);
  }

  FILE* out_;
  FILE* submaps_;
  FILE* symbols_;
  long objectCount_ = 0, submapCount_ = 0, symbolCount_ = 0;
};

const char* const kIpMap = "IP Map";
const char* const kOtherApp = "Facilities Map";
const char* const kVendors[] = {"Unset", "Acme", "Globex", "Initech", "Umbrella", "Hooli"};

class Generator {
 public:
  Generator(const Options& o, Writer& w, FILE* out) : o_(o), w_(w), out_(out), random_(o.seed) {}

  void Run() {
    const uint32_t root = NewSubmapId();
    const uint32_t internetObject = NewObjectId();
    const uint32_t internet = NewSubmapId();
    facilitiesSubmap_ = o_.otherAppEvery > 0 ? NewSubmapId() : 0;
    std::fprintf(out(),
                 "{\n\"map\": {\"name\": \"campus\", \"permissions\": 2, \"rootSubmap\": %u},\n",
                 root);
    std::fputs("\"standardFields\": true,\n\"fields\": [],\n\"objects\": [\n", out());

    w_.Submap(SubmapJson(root, "Root", kIpMap, 0, 0));
    w_.Object(ObjectJson(internetObject, internet, 0,
                         "\"Selection Name\": \"IP Internet\", \"isNetwork\": true"));
    w_.Submap(SubmapJson(internet, "IP Internet", kIpMap, 0, internetObject));
    Icon(root, internetObject, "IP Internet", "Network:IP Internet", kIpMap, 2, 0, 20, 20);

    if (facilitiesSubmap_ != 0) {
      const uint32_t facilities = NewObjectId();
      w_.Object(ObjectJson(facilities, facilitiesSubmap_, 0, "\"Selection Name\": \"Facilities\""));
      w_.Submap(SubmapJson(facilitiesSubmap_, "Facilities", kOtherApp, 0, facilities));
      Icon(root, facilities, "Facilities", "Building:Facilities", kOtherApp, 2, 0, 60, 20);
    }

    // Top-level locations, each with a user-plane copy on the Root submap.
    std::vector<uint32_t> topSymbols, topRouterObjects;
    for (int l = 1; l <= o_.locations; ++l) {
      uint32_t routerObject = 0;
      LocationResult r = Location(internet, internetObject, std::to_string(l), 1, &routerObject);
      topSymbols.push_back(r.symbol);
      topRouterObjects.push_back(routerObject);
      Icon(root, r.object, "Location " + std::to_string(l), "Location:Building", "", 4, 0,
           100 + l * 40, 80);
    }

    // Meta-connections between neighbouring top-level locations.
    for (size_t i = 0; i + 1 < topSymbols.size(); ++i)
      MetaConnection(internet, topSymbols[i], topSymbols[i + 1], topRouterObjects[i],
                     topRouterObjects[i + 1]);
    w_.Finish();
  }

 private:
  struct LocationResult {
    uint32_t object;
    uint32_t symbol;
  };

  FILE* out() { return out_; }

  uint32_t NewObjectId() { return ++objectId_; }
  uint32_t NewSubmapId() { return ++submapId_; }
  uint32_t NewSymbolId() { return ++symbolId_; }

  static std::string SubmapJson(uint32_t id, const std::string& name, const char* app, int policy,
                                uint32_t parent) {
    char buf[256];
    std::snprintf(buf, sizeof(buf),
                  "{\"id\": %u, \"name\": %s, \"app\": %s, \"policy\": %d, \"parentObject\": %u}",
                  id, Quote(name).c_str(), Quote(app).c_str(), policy, parent);
    return buf;
  }

  static std::string ObjectJson(uint32_t id, uint32_t child, int status, const std::string& fields,
                                int compound = -1) {
    std::string s = "{\"id\": " + std::to_string(id);
    if (child != 0) s += ", \"childSubmap\": " + std::to_string(child);
    if (status != 0) s += ", \"status\": " + std::to_string(status);
    if (compound >= 0) s += ", \"compoundStatus\": " + std::to_string(compound);
    return s + ", \"fields\": {" + fields + "}}";
  }

  uint32_t Icon(uint32_t submap, uint32_t object, const std::string& label, const std::string& type,
                const std::string& app, int plane, int status, int x, int y, bool hidden = false,
                int statusSource = 1, uint32_t pred = 0) {
    uint32_t id = NewSymbolId();
    std::string s = "{\"id\": " + std::to_string(id) + ", \"submap\": " + std::to_string(submap) +
                    ", \"object\": " + std::to_string(object) + ", \"label\": " + Quote(label) +
                    ", \"type\": " + Quote(type) +
                    ", \"variety\": 1, \"plane\": " + std::to_string(plane) +
                    ", \"status\": " + std::to_string(status) +
                    ", \"statusSource\": " + std::to_string(statusSource) + ", \"apps\": [" +
                    (app.empty() ? "" : Quote(app)) + "]";
    if (hidden) s += ", \"hidden\": true";
    if (pred != 0) {
      s += ", \"placement\": 2, \"pred\": " + std::to_string(pred);
    } else {
      s += ", \"placement\": 1, \"x\": " + std::to_string(x) + ", \"y\": " + std::to_string(y) +
           ", \"width\": 32, \"height\": 32";
    }
    w_.Symbol(s + "}");
    return id;
  }

  uint32_t Connection(uint32_t submap, uint32_t object, uint32_t e1, uint32_t e2,
                      const std::string& type, bool meta = false) {
    uint32_t id = NewSymbolId();
    w_.Symbol("{\"id\": " + std::to_string(id) + ", \"submap\": " + std::to_string(submap) +
              ", \"object\": " + std::to_string(object) + ", \"type\": " + Quote(type) +
              ", \"variety\": 2, \"plane\": 2, \"statusSource\": 1, \"apps\": [\"IP Map\"], "
              "\"endpoint1\": " +
              std::to_string(e1) + ", \"endpoint2\": " + std::to_string(e2) +
              (meta ? ", \"metaConnection\": true" : "") + "}");
    return id;
  }

  uint32_t LinkObject(const std::string& name) {
    uint32_t id = NewObjectId();
    w_.Object(ObjectJson(id, 0, 0, "\"Selection Name\": " + Quote(name)));
    return id;
  }

  LocationResult Location(uint32_t parentSubmap, uint32_t parentObject, const std::string& path,
                          int level, uint32_t* firstRouter) {
    const uint32_t object = NewObjectId();
    const uint32_t submap = NewSubmapId();
    const std::string name = "Location " + path;
    w_.Object(
        ObjectJson(object, submap, 0,
                   "\"Selection Name\": " + Quote(name) +
                       ", \"isLocation\": true, \"Location ID\": " + std::to_string(parentObject)));
    w_.Submap(SubmapJson(submap, name, kIpMap, 0, object));
    const uint32_t symbol =
        Icon(parentSubmap, object, name, level == 1 ? "Location:Building" : "Location:Floor",
             kIpMap, 2, random_.Below(3), 40 * level, 40 * level);
    if (level < o_.depth) {
      for (int s = 1; s <= o_.sublocations; ++s) {
        uint32_t router = 0;
        Location(submap, object, path + "." + std::to_string(s), level + 1, &router);
        if (*firstRouter == 0) *firstRouter = router;
      }
      return {object, symbol};
    }
    // Innermost location: networks, then routers joining them.
    std::vector<NetworkResult> networks;
    for (int n = 1; n <= o_.networks; ++n) networks.push_back(Network(submap, object));
    for (int r = 1; r <= o_.routers; ++r) {
      uint32_t router = Router(submap, path + "-" + std::to_string(r), networks);
      if (*firstRouter == 0) *firstRouter = router;
    }
    return {object, symbol};
  }

  struct NetworkResult {
    uint32_t object;
    uint32_t submap;
    uint32_t symbol;  // on the location's submap
    std::string prefix;
    uint32_t firstSegment = 0;
    uint32_t firstSegmentSubmap = 0;
    std::vector<uint32_t> segmentSymbols;  // on the network's submap
    uint32_t lastNetworkNodeSymbol = 0;
    int nextHost = 1;
  };

  NetworkResult Network(uint32_t locationSubmap, uint32_t locationObject) {
    ++networkCount_;
    NetworkResult n;
    // 10.0.1 to 10.255.255, then on into 11.0.0 and above: names stay unique.
    n.prefix = std::to_string(10 + (networkCount_ >> 16)) + "." +
               std::to_string((networkCount_ >> 8) & 255) + "." +
               std::to_string(networkCount_ & 255);
    n.object = NewObjectId();
    n.submap = NewSubmapId();
    w_.Object(ObjectJson(n.object, n.submap, 0,
                         "\"Selection Name\": " + Quote(n.prefix) +
                             ", \"IP Address\": " + Quote(n.prefix + ".0") +
                             ", \"IP Subnet Mask\": \"255.255.255.0\", \"isNetwork\": true, "
                             "\"Location ID\": " +
                             std::to_string(locationObject)));
    w_.Submap(SubmapJson(n.submap, n.prefix, kIpMap, 0, n.object));
    n.symbol = Icon(locationSubmap, n.object, n.prefix, "Network:IP Network", kIpMap, 2,
                    random_.Below(3), 40 + 40 * (networkCount_ % 16), 200);
    int segments = o_.segments + (networkCount_ == 1 && o_.wide > 0 ? 1 : 0);
    for (int s = 1; s <= segments; ++s) {
      bool wide = networkCount_ == 1 && o_.wide > 0 && s == segments;
      Segment(n, s, wide ? o_.wide : o_.nodes, wide ? 1 : o_.interfaces, wide);
    }
    return n;
  }

  void Segment(NetworkResult& n, int index, int nodes, int interfaces, bool wide) {
    const uint32_t object = NewObjectId();
    const uint32_t submap = NewSubmapId();
    const std::string name = wide ? "wide-segment" : n.prefix + ".Segment" + std::to_string(index);
    w_.Object(
        ObjectJson(object, submap, 0,
                   "\"Selection Name\": " + Quote(name) +
                       ", \"isSegment\": true, \"TopM Network ID\": " + std::to_string(n.object)));
    w_.Submap(SubmapJson(submap, name, kIpMap, 0, object));
    n.segmentSymbols.push_back(
        Icon(n.submap, object, name, "Segment:Bus", kIpMap, 2, 0, 60 * index, 40));
    if (n.firstSegment == 0) {
      n.firstSegment = object;
      n.firstSegmentSubmap = submap;
    }
    uint32_t lastOnSegment = 0;
    for (int k = 1; k <= nodes; ++k) {
      lastOnSegment = Node(n, object, submap, interfaces, k, lastOnSegment);
    }
  }

  std::string Address(NetworkResult& n) {
    int host = n.nextHost++;
    return n.prefix + "." + std::to_string(host % 250 + 1) +
           (host > 250 ? "." + std::to_string(host / 250) : "");
  }

  std::string PhysAddress() {
    char buf[32];
    uint64_t r = random_.Next();
    std::snprintf(buf, sizeof(buf), "08:00:2b:%02x:%02x:%02x", static_cast<unsigned>(r & 255),
                  static_cast<unsigned>((r >> 8) & 255), static_cast<unsigned>((r >> 16) & 255));
    return buf;
  }

  struct InterfaceResult {
    std::string address;
    std::string listEntry;  // the owner's "TopM Interface List" string
  };

  // One interface object and its symbol on the owner's submap.
  InterfaceResult Interface(uint32_t owner, uint32_t ownerSubmap, const std::string& ownerName,
                            int index, NetworkResult& n, uint32_t segment) {
    const uint32_t object = NewObjectId();
    const std::string ifName = "le" + std::to_string(index - 1);
    const std::string address = Address(n);
    const std::string phys = PhysAddress();
    w_.Object(ObjectJson(
        object, 0, 0,
        "\"Selection Name\": " + Quote(ownerName + ":" + ifName) +
            ", \"IP Address\": " + Quote(address) +
            ", \"IP Subnet Mask\": \"255.255.255.0\", \"SNMP ifPhysAddr\": " + Quote(phys) +
            ", \"isInterface\": true, \"TopM Node ID\": " + std::to_string(owner) +
            ", \"TopM Segment ID\": " + std::to_string(segment) +
            ", \"TopM Network ID\": " + std::to_string(n.object)));
    Icon(ownerSubmap, object, ifName, "Card:Ethernet", kIpMap, 2, random_.Below(2), 30 * index, 30);
    return {address,
            std::to_string(index) + " " + ifName + " " + address + " 255.255.255.0 " + phys};
  }

  std::string NodeFields(const std::string& name, const std::string& firstAddress, bool router) {
    std::string f = "\"Selection Name\": " + Quote(name) +
                    ", \"IP Hostname\": " + Quote(name + ".campus.example") +
                    ", \"IP Address\": " + Quote(firstAddress) + ", \"isNode\": true";
    if (router) f += ", \"isRouter\": true";
    f += ", \"isSNMPSupported\": " + std::string(random_.Below(4) != 0 ? "true" : "false");
    f += ", \"vendor\": " + Quote(kVendors[random_.Below(6)]);
    f += ", \"SNMPAgent\": " + std::to_string(random_.Below(5));
    f += ", \"SNMP sysObjectID\": " +
         Quote(".1.3.6.1.4.1." + std::to_string(1000 + random_.Below(9000)));
    f += ", \"SNMP sysDescr\": " + Quote(router ? "Router OS 12.4" : "Workstation OS 5.1");
    f += ", \"SNMP sysLocation\": \"Campus\", \"SNMP sysContact\": \"noc@campus.example\"";
    f += ", \"isSNMPProxied\": false";
    return f;
  }

  static std::string InterfaceList(const std::vector<std::string>& strings) {
    std::string list = "\"TopM Interface List\": [";
    for (size_t i = 0; i < strings.size(); ++i) list += (i ? ", " : "") + Quote(strings[i]);
    return list + "]";
  }

  // A node on a segment: its object, interfaces, and its symbols on the
  // segment and network submaps. Returns its symbol on the segment submap.
  uint32_t Node(NetworkResult& n, uint32_t segment, uint32_t segmentSubmap, int interfaces, int k,
                uint32_t predOnSegment) {
    ++nodeCount_;
    const uint32_t object = NewObjectId();
    const uint32_t submap = NewSubmapId();
    const std::string name = "host-" + std::to_string(nodeCount_);
    // Interfaces first, so their addresses are known for the node's fields;
    // the node's object is written after them with the id reserved above.
    std::vector<std::string> strings;
    std::string firstAddress;
    for (int i = 1; i <= interfaces; ++i) {
      InterfaceResult r = Interface(object, submap, name, i, n, segment);
      if (i == 1) firstAddress = r.address;
      strings.push_back(r.listEntry);
    }
    const int status = random_.Below(5);
    w_.Object(ObjectJson(object, submap, status,
                         NodeFields(name, firstAddress, false) + ", " + InterfaceList(strings)));
    w_.Submap(SubmapJson(submap, name, kIpMap, 0, object));
    const bool hidden = o_.hiddenEvery > 0 && nodeCount_ % o_.hiddenEvery == 0;
    // The first node of a segment is placed by coordinates, the others each
    // after the one before.
    const uint32_t onSegment = Icon(segmentSubmap, object, name, "Computer:Workstation", kIpMap, 2,
                                    status, 40 * k, 80, hidden, 1, predOnSegment);
    n.lastNetworkNodeSymbol =
        Icon(n.submap, object, name, "Computer:Workstation", kIpMap, 2, status,
             80 + 20 * (nodeCount_ % 30), 120 + 20 * (nodeCount_ / 30 % 30));
    if (o_.userPlaneEvery > 0 && nodeCount_ % o_.userPlaneEvery == 0) {
      Icon(n.submap, object, name, "Computer:Workstation", "", 4, status, 10, 300);
    }
    if (facilitiesSubmap_ != 0 && nodeCount_ % o_.otherAppEvery == 0) {
      Icon(facilitiesSubmap_, object, name, "Computer:Workstation", kOtherApp, 2, status,
           10 * (nodeCount_ % 50), 10);
    }
    return onSegment;
  }

  uint32_t Router(uint32_t locationSubmap, const std::string& tag,
                  std::vector<NetworkResult>& networks) {
    const uint32_t object = NewObjectId();
    const uint32_t submap = NewSubmapId();
    const std::string name = "router-" + tag;
    std::vector<std::string> strings;
    int i = 0;
    for (NetworkResult& n : networks) {
      strings.push_back(Interface(object, submap, name, ++i, n, n.firstSegment).listEntry);
    }
    const int compound = random_.Below(5);
    std::string firstAddress = networks.empty() ? "" : networks[0].prefix + ".254";
    w_.Object(ObjectJson(object, submap, 0,
                         NodeFields(name, firstAddress, true) + ", " + InterfaceList(strings),
                         compound));
    w_.Submap(SubmapJson(submap, name, kIpMap, 0, object));
    const uint32_t symbol = Icon(locationSubmap, object, name, "Connector:Router", kIpMap, 2,
                                 compound, 300, 300, false, 2);
    for (NetworkResult& n : networks) {
      const uint32_t onNetwork =
          Icon(n.submap, object, name, "Connector:Router", kIpMap, 2, compound, 20, 20, false, 2);
      Icon(n.firstSegmentSubmap, object, name, "Connector:Router", kIpMap, 2, compound, 20, 60,
           false, 2);
      for (uint32_t segmentSymbol : n.segmentSymbols) {
        Connection(n.submap,
                   LinkObject(name + "/" + n.prefix + "/" + std::to_string(segmentSymbol)),
                   onNetwork, segmentSymbol, "Connection:IP");
      }
      Connection(locationSubmap, LinkObject(name + "/" + n.prefix), symbol, n.symbol,
                 "Connection:IP");
    }
    return object;
  }

  void MetaConnection(uint32_t internet, uint32_t fromSymbol, uint32_t toSymbol,
                      uint32_t fromRouter, uint32_t toRouter) {
    const uint32_t object = NewObjectId();
    const uint32_t submap = NewSubmapId();
    const std::string name = "meta-" + std::to_string(fromSymbol) + "-" + std::to_string(toSymbol);
    w_.Object(ObjectJson(object, submap, 0, "\"Selection Name\": " + Quote(name)));
    w_.Submap(SubmapJson(submap, name, kIpMap, 3, object));
    Connection(internet, object, fromSymbol, toSymbol, "Connection:Meta", true);
    if (fromRouter != 0 && toRouter != 0) {
      uint32_t a =
          Icon(submap, fromRouter, "router", "Connector:Router", kIpMap, 2, 0, 20, 20, false, 2);
      uint32_t b =
          Icon(submap, toRouter, "router", "Connector:Router", kIpMap, 2, 0, 120, 20, false, 2);
      Connection(submap, LinkObject(name + "/link"), a, b, "Connection:Serial");
    }
  }

  const Options& o_;
  Writer& w_;
  FILE* out_;
  Random random_;
  uint32_t objectId_ = 0, submapId_ = 0, symbolId_ = 0;
  uint32_t facilitiesSubmap_ = 0;
  int networkCount_ = 0;
  int nodeCount_ = 0;
};

int IntArg(const char* value, const char* name) {
  char* end = nullptr;
  long n = std::strtol(value, &end, 10);
  if (end == value || *end != '\0' || n < 0 || n > 100000000) {
    std::fprintf(stderr, "qxw-mapgen: %s needs a non-negative integer\n", name);
    std::exit(2);
  }
  return static_cast<int>(n);
}

void Usage() {
  std::printf(
      "usage: qxw-mapgen [options]\n"
      "  --seed N            random seed (1)\n"
      "  --objects N         aim for about N objects (sets the networks per location)\n"
      "  --locations N       top-level locations (2)\n"
      "  --depth N           levels of nested locations (2)\n"
      "  --sublocations N    locations inside each outer location (1)\n"
      "  --networks N        networks per innermost location (2)\n"
      "  --segments N        segments per network (2)\n"
      "  --nodes N           nodes per segment (2)\n"
      "  --interfaces N      interfaces per node (2)\n"
      "  --routers N         routers per innermost location (1)\n"
      "  --user-plane N      every Nth node gets a user-plane symbol (5; 0 for none)\n"
      "  --hidden N          every Nth segment node symbol is hidden (7; 0 for none)\n"
      "  --other-app N       every Nth node is shown on the Facilities submap (6; 0 for none)\n"
      "  --wide N            one more segment, in the first network, with N nodes\n"
      "  -o FILE             write to FILE instead of standard output\n");
}

}  // namespace

int main(int argc, char** argv) {
  Options o;
  for (int i = 1; i < argc; ++i) {
    std::string arg = argv[i];
    if (arg == "-h" || arg == "--help") {
      Usage();
      return 0;
    }
    if (i + 1 >= argc) {
      std::fprintf(stderr, "qxw-mapgen: %s needs a value (see --help)\n", arg.c_str());
      return 2;
    }
    const char* v = argv[++i];
    if (arg == "--seed") {
      o.seed = std::strtoull(v, nullptr, 10);
    } else if (arg == "--objects") {
      o.objects = IntArg(v, "--objects");
    } else if (arg == "--locations") {
      o.locations = IntArg(v, "--locations");
    } else if (arg == "--depth") {
      o.depth = std::max(1, IntArg(v, "--depth"));
    } else if (arg == "--sublocations") {
      o.sublocations = IntArg(v, "--sublocations");
    } else if (arg == "--networks") {
      o.networks = IntArg(v, "--networks");
    } else if (arg == "--segments") {
      o.segments = IntArg(v, "--segments");
    } else if (arg == "--nodes") {
      o.nodes = IntArg(v, "--nodes");
    } else if (arg == "--interfaces") {
      o.interfaces = IntArg(v, "--interfaces");
    } else if (arg == "--routers") {
      o.routers = IntArg(v, "--routers");
    } else if (arg == "--user-plane") {
      o.userPlaneEvery = IntArg(v, "--user-plane");
    } else if (arg == "--hidden") {
      o.hiddenEvery = IntArg(v, "--hidden");
    } else if (arg == "--other-app") {
      o.otherAppEvery = IntArg(v, "--other-app");
    } else if (arg == "--wide") {
      o.wide = IntArg(v, "--wide");
    } else if (arg == "-o") {
      o.output = v;
    } else {
      std::fprintf(stderr, "qxw-mapgen: unknown option %s (see --help)\n", arg.c_str());
      return 2;
    }
  }
  if (o.objects > 0) {
    // Objects per network: the network, its segments, their nodes with
    // their interfaces, and per router an interface and the links.
    long perNetwork = 1 + o.segments * (1 + static_cast<long>(o.nodes) * (1 + o.interfaces)) +
                      static_cast<long>(o.routers) * (o.segments + 2);
    long leaves = o.locations;
    for (int d = 1; d < o.depth; ++d) leaves *= std::max(1, o.sublocations);
    o.networks = static_cast<int>(std::max(1L, o.objects / (perNetwork * std::max(1L, leaves))));
  }
  FILE* out = stdout;
  if (o.output != nullptr) {
    out = std::fopen(o.output, "w");
    if (out == nullptr) {
      std::perror(o.output);
      return 1;
    }
  }
  Writer writer(out);
  Generator generator(o, writer, out);
  generator.Run();
  if (out != stdout && std::fclose(out) != 0) {
    std::perror(o.output);
    return 1;
  }
  std::fprintf(stderr, "qxw-mapgen: %ld objects, %ld submaps, %ld symbols\n", writer.objects(),
               writer.submaps(), writer.symbols());
  return 0;
}
