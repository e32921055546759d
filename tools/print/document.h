// What is printed, piece by piece.
#ifndef CORVANE_TOOLS_PRINT_DOCUMENT_H_
#define CORVANE_TOOLS_PRINT_DOCUMENT_H_

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <istream>
#include <optional>
#include <string>

namespace Corvane::Tool {

class Document {
 public:
  // A file, or "-" for the input; UTF-8. Throws Failure with kBadUsage for a file that is none or
  // cannot be opened.
  explicit Document(const std::string& file);
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;

  // "report.pdf"; of the input "stdin".
  const std::string& Name() const { return m_name; }
  // None of what is no plain file, such as a pipe.
  std::optional<std::uint64_t> Size() const { return m_size; }
  // The next bytes: fewer than asked for at the end, none behind it. Throws Failure with
  // kNotPrinted when it cannot be read.
  std::string Read(std::size_t maxBytes);

 private:
  std::string m_name;
  std::optional<std::uint64_t> m_size;
  std::ifstream m_file;
  std::istream* m_stream;
};

}  // namespace Corvane::Tool

#endif  // CORVANE_TOOLS_PRINT_DOCUMENT_H_
