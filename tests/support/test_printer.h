// A printer of one test's own.
#ifndef CORVANE_TESTS_SUPPORT_TEST_PRINTER_H_
#define CORVANE_TESTS_SUPPORT_TEST_PRINTER_H_

#include <random>
#include <string>

#include "corvane/platform.h"

namespace Corvane::Test {

// Made, where the system needs that, and opened with every right; removed with the object. Its name
// is no other's.
class TestPrinter {
 public:
  TestPrinter();
  TestPrinter(const TestPrinter&) = delete;
  TestPrinter& operator=(const TestPrinter&) = delete;
  ~TestPrinter();

  // Null when the printer could not be made; Problem then says why.
  HANDLE Handle() const { return m_printer; }
  const std::string& Problem() const { return m_problem; }
  const std::wstring& Name() const { return m_name; }

  // Another handle, which the caller closes; null on failure.
  HANDLE Open(ACCESS_MASK access) const {
    HANDLE printer = nullptr;
    std::wstring name = m_name;
    PRINTER_DEFAULTSW defaults = {nullptr, nullptr, access};
    return OpenPrinterW(name.data(), &printer, &defaults) ? printer : nullptr;
  }

 private:
  std::wstring m_name = L"Corvane Test " + std::to_wstring(std::random_device()());
  HANDLE m_printer = nullptr;
  std::string m_problem;
};

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_SUPPORT_TEST_PRINTER_H_
