#include "tests/support/test_printer.h"

namespace Corvane::Test {

TestPrinter::TestPrinter() {
  m_printer = Open(PRINTER_ALL_ACCESS);
  if (m_printer == nullptr) m_problem = "OpenPrinterW: " + std::to_string(GetLastError());
}

TestPrinter::~TestPrinter() { ClosePrinter(m_printer); }

}  // namespace Corvane::Test
