#include <random>

#include "tests/support/test_printer.h"

namespace Corvane::Test {

TestPrinter::TestPrinter() : m_name(L"Corvane Test " + std::to_wstring(std::random_device()())) {
  m_printer = Open(PRINTER_ALL_ACCESS);
  if (m_printer == nullptr) m_problem = "OpenPrinterW: " + std::to_string(GetLastError());
}

TestPrinter::~TestPrinter() { ClosePrinter(m_printer); }

HANDLE TestPrinter::Open(ACCESS_MASK access) const {
  HANDLE printer = nullptr;
  std::wstring name = m_name;
  PRINTER_DEFAULTSW defaults = {nullptr, nullptr, access};
  return OpenPrinterW(name.data(), &printer, &defaults) ? printer : nullptr;
}

}  // namespace Corvane::Test
