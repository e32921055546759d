// The values, or the keys, of a node by number.
#ifndef CORVANE_PLATFORM_LINUX_STORE_ENUMERATION_H_
#define CORVANE_PLATFORM_LINUX_STORE_ENUMERATION_H_

#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/store/connection.h"

namespace Corvane::Store {

// Reads ahead, so that counting upwards costs about what one pass over the table costs, and is of
// one state of the store unless the rows are very many; any other number is looked for from the
// beginning. What others write meanwhile shows when the rows read ahead are used up or at number 0.
// Under the connection's lock.
class Enumeration {
 public:
  enum class Of { kValues, kSubkeys };

  explicit Enumeration(Of what) : m_what(what) {}

  struct Item {
    std::wstring_view name;
    std::int64_t number;    // a value's type, the time at which a key was written
    std::string_view data;  // of a value

    // As the Win32 calls have it: *chars counts the room with a terminator, then the name without.
    // False when it does not fit.
    bool CopyName(wchar_t* to, DWORD* chars) const;
  };

  // ERROR_NO_MORE_ITEMS, ERROR_KEY_DELETED. The item stays until the next call. `all`: the others
  // will be wanted, too.
  LSTATUS GetLocked(Connection& connection, std::int64_t node, std::size_t index, Item* item,
                    bool all = false);

  // Calls `visit(item)` with all of them, until it or the reading fails.
  template <typename Visit>
  LSTATUS VisitLocked(Connection& connection, std::int64_t node, Visit&& visit) {
    LSTATUS result = ERROR_SUCCESS;
    for (std::size_t index = 0; result == ERROR_SUCCESS; ++index) {
      Item item;
      result = GetLocked(connection, node, index, &item, true);
      if (result == ERROR_SUCCESS) result = visit(item);
    }
    return result == ERROR_NO_MORE_ITEMS ? LSTATUS{ERROR_SUCCESS} : result;
  }

 private:
  struct Row {
    std::size_t nameBegin;
    std::size_t nameChars;
    std::size_t dataBegin;
    std::size_t dataBytes;
    std::int64_t number;
  };

  void Forget();
  // No other process has written since the last reading.
  bool IsFresh(Connection& connection) const;
  LSTATUS Read(Connection& connection, std::size_t index, bool goesOn, bool all);
  LSTATUS Seek(Database& database, std::size_t index);
  LSTATUS ReadRows(Database& database);

  const Of m_what;
  std::int64_t m_node = 0;
  // The rows from number m_first on. Their names and data stand one after the other.
  std::size_t m_first = 0;
  std::vector<Row> m_rows;
  std::wstring m_names;
  std::string m_data;
  bool m_atEnd = false;       // they were the last
  std::string m_next;         // otherwise the least folded name that can follow them
  std::size_t m_maxRows = 0;  // of the last reading
  // The state of the store at the last reading: of the connection's writes, and of the others'.
  std::uint64_t m_writes = 0;
  std::int64_t m_version = -1;
};

}  // namespace Corvane::Store

#endif  // CORVANE_PLATFORM_LINUX_STORE_ENUMERATION_H_
