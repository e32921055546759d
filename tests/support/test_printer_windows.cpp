// A queue with a driver of its own, the one that Wine brings; where it is missing there is no
// printer to test with.
#include "tests/support/test_printer.h"

namespace Corvane::Test {
namespace {

bool AddDriver(wchar_t* name) {
  wchar_t folder[MAX_PATH] = {};
  GetSystemDirectoryW(folder, MAX_PATH);
  std::wstring file = std::wstring(folder) + L"\\wineps.drv";
  DRIVER_INFO_3W driver = {};
  driver.cVersion = 3;
  driver.pName = name;
  driver.pDriverPath = file.data();
  driver.pDataFile = file.data();
  driver.pConfigFile = file.data();
  return AddPrinterDriverExW(nullptr, 3, reinterpret_cast<BYTE*>(&driver),
                             APD_COPY_NEW_FILES | APD_COPY_FROM_DIRECTORY) != FALSE;
}

HANDLE AddQueue(wchar_t* name) {
  wchar_t port[] = L"FILE:";
  wchar_t processor[] = L"winprint";
  wchar_t type[] = L"RAW";
  PRINTER_INFO_2W queue = {};
  queue.pPrinterName = name;
  queue.pDriverName = name;
  queue.pPortName = port;
  queue.pPrintProcessor = processor;
  queue.pDatatype = type;
  return AddPrinterW(nullptr, 2, reinterpret_cast<BYTE*>(&queue));
}

}  // namespace

TestPrinter::TestPrinter() {
  const HANDLE added = AddDriver(m_name.data()) ? AddQueue(m_name.data()) : nullptr;
  if (added != nullptr) {
    ClosePrinter(added);
    m_printer = Open(PRINTER_ALL_ACCESS);
  }
  if (m_printer == nullptr) m_problem = "no printer: error " + std::to_string(GetLastError());
}

TestPrinter::~TestPrinter() {
  if (m_printer != nullptr) {
    DeletePrinter(m_printer);
    ClosePrinter(m_printer);
  }
  DeletePrinterDriverExW(nullptr, nullptr, m_name.data(), 0, 0);
}

}  // namespace Corvane::Test
