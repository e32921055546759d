#include "platform/linux/store/nodes.h"

#include "platform/linux/misc/time.h"
#include "platform/linux/store/schema.h"

namespace Corvane::Store {
namespace {

// In a file of the old version several may be found.
constexpr char kFindNode[] =
    "SELECT id FROM node2 WHERE parent = ? AND folded = ? "
    "ORDER BY name = ? DESC, written DESC, id DESC";
constexpr char kNodeExists[] = "SELECT 1 FROM node2 WHERE id = ?";
constexpr char kAddNode[] =
    "INSERT INTO node2(parent, folded, name, written) VALUES(?, ?, ?, ?) RETURNING id";
constexpr char kTouchNode[] = "UPDATE node2 SET written = ? WHERE id = ?";
constexpr char kDeleteNode[] = "DELETE FROM node2 WHERE id = ?";
constexpr char kDeleteValues[] = "DELETE FROM value2 WHERE node = ?";
constexpr char kHasSubkeys[] = "SELECT 1 FROM node2 WHERE parent = ? LIMIT 1";
constexpr char kNodeInfo[] =
    "SELECT written, (SELECT count(*) FROM node2 WHERE parent = node.id), "
    "(SELECT coalesce(max(length(name)), 0) FROM node2 WHERE parent = node.id) "
    "FROM node2 AS node WHERE id = ?";
constexpr char kDataVersion[] = "PRAGMA data_version";

std::int64_t NodeTimeNow() {
  SYSTEMTIME now{};
  GetSystemTime(&now);
  FILETIME time{};
  SystemTimeToFileTime(&now, &time);
  return static_cast<std::int64_t>((std::uint64_t{time.dwHighDateTime} << 32) | time.dwLowDateTime);
}

// ERROR_NO_MORE_ITEMS when there is none.
LSTATUS FindChild(Database& database, std::int64_t parent, const Name& name, std::int64_t* child) {
  Query query(database, kFindNode);
  query.Bind(parent).Bind(name.folded).Bind(name.text);
  const LSTATUS result = query.Step();
  if (result == ERROR_SUCCESS) *child = query.Integer(0);
  return result;
}

LSTATUS AddChild(Database& database, std::int64_t parent, const Name& name, std::int64_t* child) {
  const LSTATUS result = TouchNode(database, parent);
  if (result != ERROR_SUCCESS) return result;
  Query query(database, kAddNode);
  query.Bind(parent).Bind(name.folded).Bind(name.text).Bind(NodeTimeNow());
  const LSTATUS added = query.Step();
  if (added == ERROR_SUCCESS) *child = query.Integer(0);
  return added;
}

}  // namespace

LSTATUS FindNode(Database& database, std::int64_t parent, const std::vector<Name>& path,
                 std::int64_t* node) {
  std::int64_t found = parent;
  for (const Name& name : path) {
    const LSTATUS result = FindChild(database, found, name, &found);
    if (result == ERROR_NO_MORE_ITEMS) {
      const LSTATUS parentState = CheckNode(database, parent);
      return parentState == ERROR_SUCCESS ? LSTATUS{ERROR_FILE_NOT_FOUND} : parentState;
    }
    if (result != ERROR_SUCCESS) return result;
  }
  *node = found;
  return path.empty() ? CheckNode(database, parent) : ERROR_SUCCESS;
}

LSTATUS MakeNode(Database& database, std::int64_t parent, const std::vector<Name>& path,
                 std::int64_t* node, bool* made) {
  std::int64_t found = parent;
  bool any = false;
  for (const Name& name : path) {
    LSTATUS result = any ? LSTATUS{ERROR_NO_MORE_ITEMS} : FindChild(database, found, name, &found);
    if (result == ERROR_NO_MORE_ITEMS) {
      any = true;
      result = AddChild(database, found, name, &found);
    }
    if (result != ERROR_SUCCESS) return result;
  }
  *node = found;
  *made = any;
  return path.empty() ? CheckNode(database, parent) : ERROR_SUCCESS;
}

LSTATUS DeleteNode(Database& database, std::int64_t node) {
  if (node == kRegistryRoot || node == kPrinterRoot) return ERROR_ACCESS_DENIED;
  const LSTATUS below = Query(database, kHasSubkeys).Bind(node).Step();
  if (below != ERROR_NO_MORE_ITEMS) return below == ERROR_SUCCESS ? ERROR_ACCESS_DENIED : below;
  const LSTATUS result = Query(database, kDeleteValues).Bind(node).Step(ERROR_SUCCESS);
  return result == ERROR_SUCCESS ? Query(database, kDeleteNode).Bind(node).Step(ERROR_SUCCESS)
                                 : result;
}

LSTATUS CheckNode(Database& database, std::int64_t node) {
  return Query(database, kNodeExists).Bind(node).Step(ERROR_KEY_DELETED);
}

LSTATUS TouchNode(Database& database, std::int64_t node) {
  Query query(database, kTouchNode);
  const LSTATUS result = query.Bind(NodeTimeNow()).Bind(node).Step(ERROR_SUCCESS);
  return result == ERROR_SUCCESS && !query.Changed() ? LSTATUS{ERROR_KEY_DELETED} : result;
}

LSTATUS GetNodeInfo(Database& database, std::int64_t node, NodeInfo* info) {
  Query query(database, kNodeInfo);
  const LSTATUS result = query.Bind(node).Step(ERROR_KEY_DELETED);
  if (result != ERROR_SUCCESS) return result;
  info->written = query.Integer(0);
  info->subkeys = {query.Integer(1), query.Integer(2), 0};
  return ERROR_SUCCESS;
}

std::int64_t DataVersion(Database& database) {
  Query query(database, kDataVersion);
  return query.Step() == ERROR_SUCCESS ? query.Integer(0) : -1;
}

}  // namespace Corvane::Store
