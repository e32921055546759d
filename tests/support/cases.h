// Cases that stand in a data file below tests/data: inputs and what must come of them.
#ifndef CORVANE_TESTS_SUPPORT_CASES_H_
#define CORVANE_TESTS_SUPPORT_CASES_H_

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace Corvane::Test {

class Case {
 public:
  Case(std::string where, std::map<std::string, std::string> fields)
      : m_where(std::move(where)), m_fields(std::move(fields)) {}

  // "patterns.txt:12", for SCOPED_TRACE.
  const std::string& Where() const { return m_where; }
  // "" for a field that the case does not have.
  std::string Text(const std::string& field) const { return Find(field).value_or(""); }
  std::wstring Wide(const std::string& field) const;
  // In any base that strtoll knows by its prefix; 0 without the field.
  long long Number(const std::string& field) const;
  std::optional<std::string> Find(const std::string& field) const;
  // The texts of a field, apart by '|'.
  std::vector<std::string> Parts(const std::string& field) const;

 private:
  std::string m_where;
  std::map<std::string, std::string> m_fields;
};

// The cases of a file, which is UTF-8; lines that begin with '#' are remarks. Either a table: a
// head of names, then one case a line, fields apart by one tab or more; or one record a case: lines
// "name: value", a blank line behind each record. "" (two quotation marks) is an empty field;
// \n \r \t \\ and \xHH (a byte) are understood in each. Throws std::runtime_error, naming file and
// line, for what it cannot read and for a file without cases.
std::vector<Case> ReadCases(const std::string& file);

// Those of ReadCases that hold where the tests run. Under Wine the others have a field "wine", the
// reason why it answers otherwise; what only the platform's own layer does has a field "layer".
// Prints how many were left out.
std::vector<Case> CasesHere(const std::string& file);

// Of a text in which "@70000 xy@" stands for 70000 bytes of that text, over and over.
std::string Expanded(std::string text);

// The bytes of a file below tests/data.
std::string ReadData(const std::string& file);

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_SUPPORT_CASES_H_
