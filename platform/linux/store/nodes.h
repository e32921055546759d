// Operations on nodes: a key of the registry, a printer, a key of its data. Each runs inside a
// transaction of the caller's.
#ifndef CORVANE_PLATFORM_LINUX_STORE_NODES_H_
#define CORVANE_PLATFORM_LINUX_STORE_NODES_H_

#include <vector>

#include "platform/linux/store/database.h"
#include "platform/linux/store/names.h"

namespace Corvane::Store {

// The node at `path` below `parent`; `parent` itself for an empty path. ERROR_FILE_NOT_FOUND;
// ERROR_KEY_DELETED when `parent` is no more.
LSTATUS FindNode(Database& database, std::int64_t parent, const std::vector<Name>& path,
                 std::int64_t* node);

// The same, making what is missing. ERROR_KEY_DELETED.
LSTATUS MakeNode(Database& database, std::int64_t parent, const std::vector<Name>& path,
                 std::int64_t* node, bool* made);

// With its values. ERROR_ACCESS_DENIED when there are nodes below it, or it is a root.
LSTATUS DeleteNode(Database& database, std::int64_t node);

// ERROR_KEY_DELETED.
LSTATUS CheckNode(Database& database, std::int64_t node);
// Notes that the node is written to now. ERROR_KEY_DELETED.
LSTATUS TouchNode(Database& database, std::int64_t node);

struct Extent {
  std::int64_t count = 0;
  std::int64_t maxNameChars = 0;
  std::int64_t maxDataBytes = 0;
};

struct NodeInfo {
  std::int64_t written = 0;  // as a FILETIME
  Extent subkeys;
  Extent values;
};

// All but what tells of values. ERROR_KEY_DELETED.
LSTATUS GetNodeInfo(Database& database, std::int64_t node, NodeInfo* info);

// Changes with every commit of another connection, while this one is open; -1 when it cannot be
// had.
std::int64_t DataVersion(Database& database);

}  // namespace Corvane::Store

#endif  // CORVANE_PLATFORM_LINUX_STORE_NODES_H_
