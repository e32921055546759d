#include "tests/support/cases.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "base/utf8.h"
#include "tests/support/wine.h"

namespace Corvane::Test {
namespace {

[[noreturn]] void Refuse(const std::string& where, const std::string& what) {
  throw std::runtime_error(where + ": " + what);
}

std::string Unescaped(const std::string& where, const std::string& text) {
  if (text == "\"\"") return "";
  std::string bytes;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] != '\\') {
      bytes += text[at];
      continue;
    }
    const char kind = ++at < text.size() ? text[at] : '\0';
    if (kind == 'x') {
      bytes += static_cast<char>(std::stoi(text.substr(at + 1, 2), nullptr, 16));
      at += 2;
    } else if (const auto known = std::string("nrt\\").find(kind); known != std::string::npos) {
      bytes += "\n\r\t\\"[known];
    } else {
      Refuse(where, "an escape that is not known");
    }
  }
  return bytes;
}

std::vector<std::string> Columns(const std::string& line) {
  std::vector<std::string> columns;
  std::string column;
  for (std::istringstream text(line); std::getline(text, column, '\t');) {
    if (!column.empty()) columns.push_back(column);
  }
  return columns;
}

}  // namespace

std::wstring Case::Wide(const std::string& field) const { return ToWide(Text(field)); }

long long Case::Number(const std::string& field) const {
  return std::strtoll(Text(field).c_str(), nullptr, 0);
}

std::optional<std::string> Case::Find(const std::string& field) const {
  const auto found = m_fields.find(field);
  return found == m_fields.end() ? std::nullopt : std::optional(found->second);
}

std::vector<std::string> Case::Parts(const std::string& field) const {
  std::vector<std::string> parts;
  std::istringstream text(Text(field));
  for (std::string part; std::getline(text, part, '|');) parts.push_back(part);
  return parts;
}

std::string Expanded(std::string text) {
  for (std::size_t begin; (begin = text.find('@')) != text.npos;) {
    const std::size_t end = text.find('@', begin + 1);
    const std::size_t blank = text.find(' ', begin);
    const std::string part = text.substr(blank + 1, end - blank - 1);
    std::string many;
    for (const std::size_t size = std::stoul(text.substr(begin + 1)); many.size() < size;) {
      many += part;
    }
    text.replace(begin, end - begin + 1, many);
  }
  return text;
}

std::string ReadData(const std::string& file) {
  std::ifstream stream(std::string(CORVANE_TEST_DATA "/") + file, std::ios::binary);
  if (!stream) Refuse(file, "cannot be opened");
  return {std::istreambuf_iterator(stream), {}};
}

std::vector<Case> ReadCases(const std::string& file) {
  std::vector<Case> cases;
  std::vector<std::string> head;
  std::map<std::string, std::string> record;
  std::string where, line;
  const auto end_record = [&] {
    if (!record.empty()) cases.emplace_back(where, std::exchange(record, {}));
  };
  std::istringstream lines(ReadData(file));
  for (int number = 1; std::getline(lines, line); ++number) {
    if (line.starts_with('#')) continue;
    const std::string here = file + ":" + std::to_string(number);
    if (line.empty()) {
      end_record();
    } else if (head.empty() && line.find('\t') == std::string::npos) {
      const std::size_t colon = line.find(':');
      if (colon == std::string::npos) Refuse(here, "neither a table's row nor \"name: value\"");
      if (record.empty()) where = here;
      const std::size_t value = std::min(line.find_first_not_of(' ', colon + 1), line.size());
      if (!record.emplace(line.substr(0, colon), Unescaped(here, line.substr(value))).second) {
        Refuse(here, "a name that the record has already");
      }
    } else if (head.empty()) {
      head = Columns(line);
    } else {
      const std::vector<std::string> columns = Columns(line);
      if (columns.size() > head.size()) Refuse(here, "more fields than names");
      std::map<std::string, std::string> row;
      for (std::size_t i = 0; i < columns.size(); ++i) row[head[i]] = Unescaped(here, columns[i]);
      cases.emplace_back(here, std::move(row));
    }
  }
  end_record();
  if (cases.empty()) Refuse(file, "no cases");
  return cases;
}

std::vector<Case> CasesHere(const std::string& file) {
  std::vector<Case> cases = ReadCases(file);
  const auto left_out = std::erase_if(cases, [](const Case& c) {
    return (UnderWine() && c.Find("wine")) || (!OnLayer() && c.Find("layer"));
  });
  if (left_out > 0) std::cout << "[  SKIPPED ] " << left_out << " cases of " << file << '\n';
  return cases;
}

}  // namespace Corvane::Test
