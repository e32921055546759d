#include "platform/linux/store/enumeration.h"

#include <algorithm>
#include <utility>

#include "platform/linux/store/names.h"
#include "platform/linux/store/nodes.h"

namespace Corvane::Store {
namespace {

constexpr char kListValues[] =
    "SELECT folded, name, type, data FROM value2 WHERE node = ? AND folded >= ? ORDER BY folded";
constexpr char kListSubkeys[] =
    "SELECT folded, name, written, '' FROM node2 WHERE parent = ? AND folded >= ? ORDER BY folded";
constexpr char kSkipToSubkey[] =
    "SELECT folded FROM node2 WHERE parent = ? ORDER BY folded LIMIT 1 OFFSET ?";
constexpr char kSkipToValue[] =
    "SELECT folded FROM value2 WHERE node = ? ORDER BY folded LIMIT 1 OFFSET ?";

// Who only wants the first item, to delete it, does not pay for many after the first time.
constexpr std::size_t kFirstRowsAfterWrite = 16;
constexpr std::size_t kGrowth = 4;
constexpr std::size_t kMaxRows = 8192;
// What is kept in memory; one row may be longer.
constexpr std::size_t kMaxBytes = std::size_t{2} << 20;

}  // namespace

bool Enumeration::Item::CopyName(wchar_t* to, DWORD* chars) const {
  if (name.size() >= *chars) return false;
  *chars = static_cast<DWORD>(name.copy(to, name.size()));
  to[name.size()] = L'\0';
  return true;
}

void Enumeration::Forget() {
  m_rows.clear();
  m_maxRows = 0;
}

bool Enumeration::IsFresh(Connection& connection) const {
  std::int64_t version = -1;
  connection.ReadLocked([&](Database& database) {
    version = DataVersion(database);
    return ERROR_SUCCESS;
  });
  return version != -1 && version == m_version;
}

LSTATUS Enumeration::GetLocked(Connection& connection, std::int64_t node, std::size_t index,
                               Item* item, bool all) {
  const std::uint64_t writes = connection.WritesLocked();
  if (writes != m_writes || node != m_node) Forget();
  m_writes = writes;
  m_node = node;
  const bool isRead = index - m_first < m_rows.size() && (index != 0 || IsFresh(connection));
  const bool goesOn = index != 0 && !m_rows.empty() && index == m_first + m_rows.size();
  if (goesOn && m_atEnd) return ERROR_NO_MORE_ITEMS;
  if (!isRead) {
    const LSTATUS result = Read(connection, index, goesOn, all);
    if (result != ERROR_SUCCESS) {
      Forget();
      return result;
    }
  }
  const Row& row = m_rows[index - m_first];
  *item = {std::wstring_view(m_names).substr(row.nameBegin, row.nameChars), row.number,
           std::string_view(m_data).substr(row.dataBegin, row.dataBytes)};
  return ERROR_SUCCESS;
}

LSTATUS Enumeration::Read(Connection& connection, std::size_t index, bool goesOn, bool all) {
  const std::size_t first = all || m_writes == 0 ? kMaxRows : kFirstRowsAfterWrite;
  m_maxRows = goesOn ? std::min(m_maxRows * kGrowth, kMaxRows) : first;
  m_first = index;
  m_rows.clear();
  m_names.clear();
  m_data.clear();
  return connection.ReadLocked([&](Database& database) {
    m_version = DataVersion(database);
    const LSTATUS result = goesOn ? LSTATUS{ERROR_SUCCESS} : Seek(database, index);
    return result == ERROR_SUCCESS ? ReadRows(database) : result;
  });
}

LSTATUS Enumeration::Seek(Database& database, std::size_t index) {
  m_next.clear();
  if (index == 0) return ERROR_SUCCESS;
  Query query(database, m_what == Of::kValues ? kSkipToValue : kSkipToSubkey);
  const LSTATUS result = query.Bind(m_node).Bind(static_cast<std::int64_t>(index)).Step();
  if (result == ERROR_SUCCESS) m_next = query.Bytes(0);
  if (result != ERROR_NO_MORE_ITEMS) return result;
  const LSTATUS state = CheckNode(database, m_node);
  return state == ERROR_SUCCESS ? result : state;
}

LSTATUS Enumeration::ReadRows(Database& database) {
  Query query(database, m_what == Of::kValues ? kListValues : kListSubkeys);
  const std::string from = m_next;
  query.Bind(m_node).Bind(from);
  LSTATUS result = ERROR_SUCCESS;
  while (m_rows.size() < m_maxRows &&
         m_data.size() + m_names.size() * sizeof(wchar_t) < kMaxBytes) {
    result = query.Step();
    if (result != ERROR_SUCCESS) break;
    Row row{m_names.size(), 0, m_data.size(), 0, query.Integer(2)};
    AppendWide(query.Bytes(1), &m_names);
    m_data += query.Bytes(3);
    row.nameChars = m_names.size() - row.nameBegin;
    row.dataBytes = m_data.size() - row.dataBegin;
    m_rows.push_back(row);
  }
  m_atEnd = result == ERROR_NO_MORE_ITEMS;
  if (result != ERROR_SUCCESS && result != ERROR_NO_MORE_ITEMS) return result;
  if (!m_atEnd) {
    m_next = query.Bytes(0);
    m_next.push_back('\0');  // the first text after it
  }
  if (!m_rows.empty()) return ERROR_SUCCESS;
  const LSTATUS state = CheckNode(database, m_node);
  return state == ERROR_SUCCESS ? LSTATUS{ERROR_NO_MORE_ITEMS} : state;
}

}  // namespace Corvane::Store
