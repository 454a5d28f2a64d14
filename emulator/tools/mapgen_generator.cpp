// Generating the IP map of qxw-mapgen (see mapgen_generator.h).
#include "emulator/tools/mapgen_generator.h"

#include "emulator/tools/mapgen_text.h"

namespace mapgen {

namespace {

const char* const kIpMap = "IP Map";
const char* const kOtherApp = "Facilities Map";
const char* const kVendors[] = {"Unset", "Acme", "Globex", "Initech", "Umbrella", "Hooli"};

}  // namespace

void Generator::Run() {
  const uint32_t root = NewSubmapId();
  const uint32_t internetObject = NewObjectId();
  const uint32_t internet = NewSubmapId();
  facilitiesSubmap_ = o_.otherAppEvery > 0 ? NewSubmapId() : 0;
  std::fprintf(
      out(), "{\n\"map\": {\"name\": \"campus\", \"permissions\": 2, \"rootSubmap\": %u},\n", root);
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

uint32_t Generator::Icon(uint32_t submap, uint32_t object, const std::string& label,
                         const std::string& type, const std::string& app, int plane, int status,
                         int x, int y, bool hidden, int statusSource, uint32_t pred) {
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

uint32_t Generator::Connection(uint32_t submap, uint32_t object, uint32_t e1, uint32_t e2,
                               const std::string& type, bool meta) {
  uint32_t id = NewSymbolId();
  w_.Symbol("{\"id\": " + std::to_string(id) + ", \"submap\": " + std::to_string(submap) +
            ", \"object\": " + std::to_string(object) + ", \"type\": " + Quote(type) +
            ", \"variety\": 2, \"plane\": 2, \"statusSource\": 1, \"apps\": [\"IP Map\"], "
            "\"endpoint1\": " +
            std::to_string(e1) + ", \"endpoint2\": " + std::to_string(e2) +
            (meta ? ", \"metaConnection\": true" : "") + "}");
  return id;
}

uint32_t Generator::LinkObject(const std::string& name) {
  uint32_t id = NewObjectId();
  w_.Object(ObjectJson(id, 0, 0, "\"Selection Name\": " + Quote(name)));
  return id;
}

Generator::LocationResult Generator::Location(uint32_t parentSubmap, uint32_t parentObject,
                                              const std::string& path, int level,
                                              uint32_t* firstRouter) {
  const uint32_t object = NewObjectId();
  const uint32_t submap = NewSubmapId();
  const std::string name = "Location " + path;
  w_.Object(
      ObjectJson(object, submap, 0,
                 "\"Selection Name\": " + Quote(name) +
                     ", \"isLocation\": true, \"Location ID\": " + std::to_string(parentObject)));
  w_.Submap(SubmapJson(submap, name, kIpMap, 0, object));
  const uint32_t symbol =
      Icon(parentSubmap, object, name, level == 1 ? "Location:Building" : "Location:Floor", kIpMap,
           2, random_.Below(3), 40 * level, 40 * level);
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

Generator::NetworkResult Generator::Network(uint32_t locationSubmap, uint32_t locationObject) {
  ++networkCount_;
  NetworkResult n;
  // 10.0.1 to 10.255.255, then on into 11.0.0 and above: names stay unique.
  n.prefix = std::to_string(10 + (networkCount_ >> 16)) + "." +
             std::to_string((networkCount_ >> 8) & 255) + "." + std::to_string(networkCount_ & 255);
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

void Generator::Segment(NetworkResult& n, int index, int nodes, int interfaces, bool wide) {
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

std::string Generator::Address(NetworkResult& n) {
  int host = n.nextHost++;
  return n.prefix + "." + std::to_string(host % 250 + 1) +
         (host > 250 ? "." + std::to_string(host / 250) : "");
}

std::string Generator::PhysAddress() {
  char buf[32];
  uint64_t r = random_.Next();
  std::snprintf(buf, sizeof(buf), "08:00:2b:%02x:%02x:%02x", static_cast<unsigned>(r & 255),
                static_cast<unsigned>((r >> 8) & 255), static_cast<unsigned>((r >> 16) & 255));
  return buf;
}

Generator::InterfaceResult Generator::Interface(uint32_t owner, uint32_t ownerSubmap,
                                                const std::string& ownerName, int index,
                                                NetworkResult& n, uint32_t segment) {
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
  return {address, std::to_string(index) + " " + ifName + " " + address + " 255.255.255.0 " + phys};
}

std::string Generator::NodeFields(const std::string& name, const std::string& firstAddress,
                                  bool router) {
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

// A node on a segment: its object, interfaces, and its symbols on the
// segment and network submaps. Returns its symbol on the segment submap.
uint32_t Generator::Node(NetworkResult& n, uint32_t segment, uint32_t segmentSubmap, int interfaces,
                         int k, uint32_t predOnSegment) {
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
  n.lastNetworkNodeSymbol = Icon(n.submap, object, name, "Computer:Workstation", kIpMap, 2, status,
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

uint32_t Generator::Router(uint32_t locationSubmap, const std::string& tag,
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
    Icon(n.firstSegmentSubmap, object, name, "Connector:Router", kIpMap, 2, compound, 20, 60, false,
         2);
    for (uint32_t segmentSymbol : n.segmentSymbols) {
      Connection(n.submap, LinkObject(name + "/" + n.prefix + "/" + std::to_string(segmentSymbol)),
                 onNetwork, segmentSymbol, "Connection:IP");
    }
    Connection(locationSubmap, LinkObject(name + "/" + n.prefix), symbol, n.symbol,
               "Connection:IP");
  }
  return object;
}

void Generator::MetaConnection(uint32_t internet, uint32_t fromSymbol, uint32_t toSymbol,
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

}  // namespace mapgen
