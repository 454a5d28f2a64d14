// qxw-mapgen: writes an IP map of any size in map file form, the same for
// the same options and seed. This file reads the command line and sizes the
// map; mapgen_generator.h describes the map itself.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "emulator/tools/mapgen_generator.h"
#include "emulator/tools/mapgen_writer.h"

namespace {

using mapgen::Generator;
using mapgen::Options;
using mapgen::Writer;

// `value` as an integer from 0 to 100000000; exits the program with a
// message naming the option `name` otherwise.
int IntArg(const char* value, const char* name) {
  char* end = nullptr;
  long n = std::strtol(value, &end, 10);
  if (end == value || *end != '\0' || n < 0 || n > 100000000) {
    std::fprintf(stderr, "qxw-mapgen: %s needs a non-negative integer\n", name);
    std::exit(2);
  }
  return static_cast<int>(n);
}

// Prints the options.
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