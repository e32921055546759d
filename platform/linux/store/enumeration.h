// The values, or the keys, of a node by number.
#ifndef CORVANE_PLATFORM_LINUX_STORE_ENUMERATION_H_
#define CORVANE_PLATFORM_LINUX_STORE_ENUMERATION_H_

#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/store/connection.h"
#include "platform/linux/store/nodes.h"

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

  // ERROR_NO_MORE_ITEMS, ERROR_KEY_DELETED. The item stays until the next call.
  LSTATUS GetLocked(Connection& connection, std::int64_t node, std::size_t index, Item* item);

  // Of all rows, when they are few enough to be read ahead, for a counting that follows; else
  // ERROR_MORE_DATA. ERROR_KEY_DELETED.
  LSTATUS MeasureLocked(Connection& connection, std::int64_t node, Extent* extent);

 private:
  struct Row {
    std::size_t nameBegin;
    std::size_t nameChars;
    std::size_t dataBegin;
    std::size_t dataBytes;
    std::int64_t number;
  };

  void Forget();
  // The rows from number 0 on are those that MeasureLocked read, and are so still.
  bool IsMeasured(Connection& connection);
  LSTATUS Read(Connection& connection, std::int64_t node, std::size_t index);
  LSTATUS Seek(Database& database, std::int64_t node, std::size_t index);
  LSTATUS ReadRows(Database& database, std::int64_t node);

  const Of m_what;
  // The rows from number m_first on. Their names and data stand one after the other.
  std::size_t m_first = 0;
  std::vector<Row> m_rows;
  std::wstring m_names;
  std::string m_data;
  bool m_atEnd = false;        // they were the last
  std::string m_next;          // otherwise the least folded name that can follow them
  std::size_t m_maxRows = 0;   // of the last reading
  std::uint64_t m_writes = 0;  // of the connection, at the last reading
  // Of the store, when MeasureLocked read it; -1 once a counting has begun over it.
  std::int64_t m_measuredVersion = -1;
};

}  // namespace Corvane::Store

#endif  // CORVANE_PLATFORM_LINUX_STORE_ENUMERATION_H_
