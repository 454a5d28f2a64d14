// The IP map qxw-mapgen makes: its options, and the generator that lays out
// the map's locations, networks, segments, nodes and routers and hands their
// elements to the writer.
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
#ifndef SKIFF_EMULATOR_TOOLS_MAPGEN_GENERATOR_H_
#define SKIFF_EMULATOR_TOOLS_MAPGEN_GENERATOR_H_

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "emulator/tools/mapgen_random.h"
#include "emulator/tools/mapgen_writer.h"

namespace mapgen {

// What to make: the sizes of the map's parts, how often nodes get their
// extra symbols, and where the map goes.
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

// Makes one map; the same options give the same map. Ids are handed out in
// order from 1 for each kind of entity.
class Generator {
 public:
  // `o` and `w` must outlive the generator; `out` is the writer's output.
  Generator(const Options& o, Writer& w, FILE* out) : o_(o), w_(w), out_(out), random_(o.seed) {}

  // Writes the whole map file, the writer's Finish() included.
  void Run();

 private:
  struct LocationResult {
    uint32_t object;
    uint32_t symbol;
  };

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

  struct InterfaceResult {
    std::string address;
    std::string listEntry;  // the owner's "TopM Interface List" string
  };

  FILE* out() { return out_; }

  // The next id of each kind.
  uint32_t NewObjectId() { return ++objectId_; }
  uint32_t NewSubmapId() { return ++submapId_; }
  uint32_t NewSymbolId() { return ++symbolId_; }

  // Writes an icon symbol, placed at (`x`, `y`), or after `pred` when that
  // is not 0; an empty `app` gives an empty "apps". Returns its id.
  uint32_t Icon(uint32_t submap, uint32_t object, const std::string& label, const std::string& type,
                const std::string& app, int plane, int status, int x, int y, bool hidden = false,
                int statusSource = 1, uint32_t pred = 0);
  // Writes a connection symbol between `e1` and `e2`; returns its id.
  uint32_t Connection(uint32_t submap, uint32_t object, uint32_t e1, uint32_t e2,
                      const std::string& type, bool meta = false);
  // Writes the object of a connection, named `name`; returns its id.
  uint32_t LinkObject(const std::string& name);

  // A location at `level` (1 at the top), with the locations inside it or,
  // at the last level, its networks and routers. Sets `*firstRouter` to the
  // first router object inside it unless already set.
  LocationResult Location(uint32_t parentSubmap, uint32_t parentObject, const std::string& path,
                          int level, uint32_t* firstRouter);
  // A network of the location, with its segments and their nodes.
  NetworkResult Network(uint32_t locationSubmap, uint32_t locationObject);
  // Segment number `index` of the network, with `nodes` nodes of
  // `interfaces` interfaces; the wide segment has its own name.
  void Segment(NetworkResult& n, int index, int nodes, int interfaces, bool wide);
  // The network's next host address.
  std::string Address(NetworkResult& n);
  // A random physical address.
  std::string PhysAddress();
  // One interface object and its symbol on the owner's submap.
  InterfaceResult Interface(uint32_t owner, uint32_t ownerSubmap, const std::string& ownerName,
                            int index, NetworkResult& n, uint32_t segment);
  // The fields of a node or router object, as members of a JSON object.
  std::string NodeFields(const std::string& name, const std::string& firstAddress, bool router);
  // A node on a segment: its object, interfaces, and its symbols on the
  // segment and network submaps. Returns its symbol on the segment submap.
  uint32_t Node(NetworkResult& n, uint32_t segment, uint32_t segmentSubmap, int interfaces, int k,
                uint32_t predOnSegment);
  // A router of the location, joining every one of `networks`; returns its
  // object.
  uint32_t Router(uint32_t locationSubmap, const std::string& tag,
                  std::vector<NetworkResult>& networks);
  // The meta-connection between two top-level locations, with its submap
  // joining their routers when both have one.
  void MetaConnection(uint32_t internet, uint32_t fromSymbol, uint32_t toSymbol,
                      uint32_t fromRouter, uint32_t toRouter);

  const Options& o_;
  Writer& w_;
  FILE* out_;
  Random random_;
  uint32_t objectId_ = 0, submapId_ = 0, symbolId_ = 0;
  uint32_t facilitiesSubmap_ = 0;
  int networkCount_ = 0;
  int nodeCount_ = 0;
};

}  // namespace mapgen

#endif  // SKIFF_EMULATOR_TOOLS_MAPGEN_GENERATOR_H_
