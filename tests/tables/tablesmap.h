// The map the keyed-table tests run on.
//
// Objects: 10 "IP Internet" (child submap 2), 20 "net1" (child submap 3),
// nodes 30 and 31 on net1, interfaces 40 and 41 of node 30 and 42 of node 31
// on net1, 43 (not an interface) and 44 (network and node swapped), 50 "leaf"
// (no child submap, two symbols), 60 "spare" (no child submap). Submap 5 has
// no parent object.
#ifndef SKIFF_TESTS_TABLES_TABLESMAP_H_
#define SKIFF_TESTS_TABLES_TABLESMAP_H_

namespace skifftest {

inline const char kTablesMap[] = R"({
  "map": {"name": "tables", "permissions": 2, "rootSubmap": 1},
  "objects": [
    {"id": 10, "childSubmap": 2, "fields": {"Selection Name": "IP Internet", "isNetwork": true}},
    {"id": 20, "childSubmap": 3, "fields": {"Selection Name": "net1", "isNetwork": true}},
    {"id": 30, "fields": {"Selection Name": "node1", "isNode": true}},
    {"id": 31, "fields": {"Selection Name": "node2", "isNode": true}},
    {"id": 40, "fields": {"isInterface": true, "TopM Network ID": 20, "TopM Node ID": 30}},
    {"id": 41, "fields": {"isInterface": true, "TopM Network ID": 20, "TopM Node ID": 30}},
    {"id": 42, "fields": {"isInterface": true, "TopM Network ID": 20, "TopM Node ID": 31}},
    {"id": 43, "fields": {"isInterface": false, "TopM Network ID": 20, "TopM Node ID": 30}},
    {"id": 44, "fields": {"isInterface": true, "TopM Network ID": 30, "TopM Node ID": 20}},
    {"id": 50, "fields": {"Selection Name": "leaf"}},
    {"id": 60, "fields": {"Selection Name": "spare"}}
  ],
  "submaps": [
    {"id": 1, "name": "Root"},
    {"id": 2, "name": "Internet", "parentObject": 10},
    {"id": 3, "name": "net1", "parentObject": 20},
    {"id": 5, "name": "Spare"}
  ],
  "symbols": [
    {"id": 100, "submap": 1, "object": 10, "variety": 1, "plane": 2},
    {"id": 101, "submap": 2, "object": 20, "variety": 1, "plane": 2},
    {"id": 102, "submap": 3, "object": 30, "variety": 1, "plane": 2},
    {"id": 103, "submap": 3, "object": 31, "variety": 1, "plane": 2},
    {"id": 104, "submap": 2, "object": 50, "variety": 1, "plane": 2},
    {"id": 105, "submap": 1, "object": 50, "variety": 1, "plane": 2}
  ]
})";

}  // namespace skifftest

#endif  // SKIFF_TESTS_TABLES_TABLESMAP_H_
