// What a printer URI and a device's host text say. tests/platform has the parsers beneath them,
// tests/ipp/printer_probe_test.cpp devices that answer.
#include <gtest/gtest.h>

#include "ipp/provider/ipp_provider_impl.h"
#include "ipp/provider/printer_uri.h"
#include "platform/system.h"
#include "tests/support/cases.h"

namespace Corvane::Test {
namespace {

TEST(PrinterUri, HasAKindByItsBeginning) {
  using Kind = PrinterUriKind;
  const std::pair<const wchar_t*, Kind> kinds[] = {
      {nullptr, Kind::kOther},        {L"", Kind::kOther},
      {L"ipp://host/", Kind::kIpp},   {L"ippx", Kind::kIpp},
      {L"ipps://host/", Kind::kIpps}, {L"IPP://host/", Kind::kOther},
      {L"http://host/", Kind::kHttp}, {L"https://host/", Kind::kHttp},
      {L" ipp://host/", Kind::kOther}};
  for (const auto& [uri, kind] : kinds) EXPECT_EQ(kind, KindOfPrinterUri(uri));
}

TEST(PrinterUri, SplitsIntoPathAndWhole) {
  for (const Case& c : ReadCases("ipp/printer_uris.txt")) {
    SCOPED_TRACE(c.Where());
    std::wstring path = L"left alone";
    std::wstring whole = L"left alone";
    SetLastError(0);
    EXPECT_EQ(c.Number("error") == 0, SplitPrinterUri(c.Wide("uri").c_str(), &path, &whole));
    EXPECT_EQ(c.Number("error"), GetLastError());
    EXPECT_TRUE(path == (c.Find("path") ? c.Wide("path") : L"left alone"));
    EXPECT_TRUE(whole == (c.Find("path") ? c.Wide("uri") : L"left alone"));
  }
}

TEST(Device, IsAUsbPortByItsName) {
  for (const Case& c : ReadCases("ipp/usb_ports.txt")) {
    EXPECT_EQ(c.Number("usb"), IPPProviderImpl::IsUsbPort(c.Wide("text").c_str())) << c.Where();
  }
  EXPECT_FALSE(IPPProviderImpl::IsUsbPort(nullptr));
}

// What looks like one literal to one system call and none to the next is changed, too.
TEST(Device, IsProbedByALiteralAlone) {
  for (const Case& c : ReadCases("ipp/unreachable_hosts.txt")) {
    std::wstring host = c.Wide("host");
    std::wstring port = L"631";
    EXPECT_FALSE(IPPProviderImpl::DeviceExists(host, port)) << c.Where();
    EXPECT_TRUE(host == c.Wide("changed")) << c.Where();
  }
}

}  // namespace
}  // namespace Corvane::Test
