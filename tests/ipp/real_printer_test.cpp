// A real printer on port 631, as clients read it: its attributes against another client's, its
// jobs, and a data map of it (Linux).
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <optional>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "collection/data_collection_impl.h"
#include "corvane/handles.h"
#include "host/network_address.h"
#include "ipp/provider/ipp_provider_impl.h"
#include "ipp/wire/codes.h"
#include "tests/ipp/callers_attribute.h"
#include "tests/ipp/decoded.h"
#include "tests/support/hr.h"
#include "tests/support/peers/ippeveprinter.h"
#include "tests/support/peers/private_network.h"
#include "tests/support/process.h"

namespace Corvane::Test {
namespace {

constexpr wchar_t kUri[] = L"ipp://127.0.0.1/ipp/print";
constexpr int kTimeoutMs = 20'000;

// A named pipe, which both ends may open in any order.
class Pipe {
 public:
  explicit Pipe(const std::filesystem::path& path) {
    EXPECT_EQ(0, mkfifo(path.c_str(), 0600));
    m_file = open(path.c_str(), O_RDWR | O_CLOEXEC);
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;
  ~Pipe() { close(m_file); }

  bool Put() const { return write(m_file, "\n", 1) == 1; }
  // Waits for a line; false when none comes.
  bool Take() const {
    pollfd polled{m_file, POLLIN, 0};
    char line[64];
    return poll(&polled, 1, kTimeoutMs) > 0 && read(m_file, line, sizeof(line)) > 0;
  }

 private:
  int m_file;
};

class RealPrinter : public ::testing::Test {
 protected:
  void SetUp() override {
    if (const std::string failure = PrivateNetworkFailure(); !failure.empty()) {
      GTEST_SKIP() << failure;
    }
    // A job is processed from the line that it writes to the line that it reads.
    const std::filesystem::path folder = m_printer.Folder().Path();
    m_began.emplace(folder / "began");
    m_end.emplace(folder / "end");
    const std::filesystem::path command = m_printer.Folder().Write(
        "print", "#!/bin/sh\ncd '" + folder.string() + "' && echo >began && read line <end\n");
    std::filesystem::permissions(command, std::filesystem::perms::owner_all);
    ASSERT_TRUE(m_printer.Start("-f text/plain -c " + command.string(), 631))
        << m_printer.Failure();
    Host::NetworkOptions options;
    options.host = L"127.0.0.1";
    m_address = RefPtr<Address>::Adopt(Host::CreateNetworkAddress(options));
    m_provider = RefPtr<IPPProviderImpl>::Adopt(IPPProviderImpl::Create2(m_address.Get(), kUri, 0));
    ASSERT_TRUE(m_provider) << GetLastError();
    m_user->SetRequestingUserName("anna");
  }

  // The job's URI, while it is processed.
  std::string Print() {
    IPPOperations operations(m_address.Get());
    operations.SetResourceURI("/ipp/print");
    operations.SetPrinterFileBufferContent("text\n", 5);
    m_user->SetJobName("letter");
    m_user->AddIPPRequest(
        CallersText(kIPPOperationGroup, IPPTag::kMimeMediaType, "document-format", "text/plain"));
    HTTPResponse* response = nullptr;
    EXPECT_HR(operations.SendIPPRequest(IPPOperation::kPrintJob, &response, m_user.Get(), false),
              S_OK);
    EXPECT_HR(operations.ParseIPPResponse(response, nullptr), S_OK);
    const std::vector<std::string> uris = operations.ValuesOf("job-uri");
    EXPECT_EQ(1u, uris.size()) << Held(operations, "status-message");
    EXPECT_TRUE(m_began->Take());
    return uris.empty() ? std::string() : uris.front();
  }
  std::string OfJob(const std::string& uri, const char* attribute) {
    _variant_t value(7L, VT_I4);
    EXPECT_HR(m_provider->GetIPPValue(attribute, true, &value, uri.c_str(), nullptr, 0), S_OK)
        << attribute;
    return Shown(value);
  }
  // Lets the job go, and waits until the printer tells so.
  bool End(const std::string& uri) {
    if (!m_end->Put()) return false;
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(kTimeoutMs);
    while (OfJob(uri, "job-state") != "9") {
      if (std::chrono::steady_clock::now() > end) return false;
      poll(nullptr, 0, 10);
    }
    return true;
  }

  Ippeveprinter m_printer;
  std::optional<Pipe> m_began, m_end;
  RefPtr<Address> m_address;
  RefPtr<IPPProviderImpl> m_provider;
  const RefPtr<IPPRequestBase> m_user = RefPtr<IPPRequestBase>::Adopt(CreateIPPRequest());
};

// What our texts look like in the words of ipptool; empty for what the two say differently.
std::string InItsWords(const std::string& name, const std::string& type, std::string text) {
  std::replace(text.begin(), text.end(), '|', ',');
  if (text.starts_with('[')) text = text.substr(1, text.size() - 2);
  if (type == "boolean") return text == "1" ? "true" : text == "0" ? "false" : text;
  if (type == "rangeOfInteger") return std::regex_replace(text, std::regex(","), "-");
  if (type == "resolution" && text == "600,600,3") return "600dpi";
  if (type != "enum") return text;
  static const struct {
    const char* name;
    const char* number;
    const char* word;
  } kWords[] = {{"printer-state", "3", "idle"},
                {"finishings-default", "3", "none"},
                {"orientation-requested-default", "3", "portrait"},
                {"print-quality-default", "4", "normal"},
                {"print-quality-supported", "3,4,5", "draft,normal,high"}};
  for (const auto& word : kWords) {
    if (name == word.name) return text == word.number ? word.word : text;
  }
  return {};
}

TEST_F(RealPrinter, SaysWhatItSaysToIpptool) {
  const std::string output =
      RunProcess({"ipptool", "-tv", "ipp://127.0.0.1:631/ipp/print", "get-printer-attributes.test"})
          .output;
  const std::size_t answer = output.find("RECEIVED:");
  ASSERT_NE(std::string::npos, answer) << "ipptool (Debian's package cups-ipp-utils): " << output;
  // It calls a loopback address by this name, and the printer its own URIs by what it is called.
  std::istringstream lines(
      std::regex_replace(output.substr(answer), std::regex("//localhost:"), "//127.0.0.1:"));
  const std::regex attribute(" +(\\S+) \\((?:1setOf )?(\\w+)\\) = (.*)");
  int compared = 0;
  std::smatch parts;
  for (std::string line; std::getline(lines, line);) {
    if (!std::regex_match(line, parts, attribute)) continue;
    const std::string name = parts[1];
    const std::string type = parts[2];
    const bool isOwnNotation =
        type == "collection" || type == "octetString" || type == "dateTime" || type == "unknown";
    if (isOwnNotation || name == "printer-up-time") continue;
    _variant_t value(7L, VT_I4);
    EXPECT_HR(m_provider->GetValue(name.c_str(), &value), S_OK) << name;
    const std::string words = InItsWords(name, type, Shown(value));
    if (words.empty() && type == "enum") continue;
    EXPECT_EQ(parts[3], words) << name;
    ++compared;
  }
  EXPECT_GE(compared, 60) << output;

  for (const char* const name : {"printer-name", "media-ready", "printer-resolution-default"}) {
    _variant_t kept(7L, VT_I4);
    _variant_t asked(7L, VT_I4);
    EXPECT_HR(m_provider->GetValue(name, &kept), S_OK);
    EXPECT_HR(m_provider->GetIPPValue(name, false, &asked, nullptr, nullptr, 0), S_OK);
    EXPECT_EQ(Shown(kept), Shown(asked)) << name;
  }
}

TEST_F(RealPrinter, ListsAJobBeforeAndAfterItsEnd) {
  const auto listed = [&](bool ended) {
    const auto record = RefPtr<IPPResponseBase>::Adopt(CreateIPPResponse());
    const HRESULT result = m_provider->GetJobs(m_user.Get(), record.Get(), ended);
    if (result != S_OK) return HrText(result);
    return std::string(record->GetJobState()) + ' ' + record->GetJobURI();
  };
  const std::string nothing = HrText(S_FALSE);
  EXPECT_EQ(nothing, listed(false));
  const std::string uri = Print();
  EXPECT_EQ("Processing " + uri, listed(false));
  EXPECT_EQ(nothing, listed(true));
  m_user->SetRequestingUserName("otto");
  EXPECT_EQ(nothing, listed(false));
  m_user->SetRequestingUserName("anna");
  EXPECT_EQ("5", OfJob(uri, "job-state"));
  EXPECT_EQ("anna", OfJob(uri, "job-originating-user-name"));
  EXPECT_EQ("letter", OfJob(uri, "job-name"));
  ASSERT_TRUE(End(uri));
  EXPECT_EQ(nothing, listed(false));
  EXPECT_EQ("Completed " + uri, listed(true));
  _variant_t value(7L, VT_I4);
  EXPECT_HR(m_provider->GetIPPValue("job-state", true, &value, "ipp://127.0.0.1:631/ipp/print/99",
                                    nullptr, 0),
            E_FAIL);
  EXPECT_EQ("nothing", Shown(value));
}

// Nothing else of the device answers.
TEST_F(RealPrinter, FitsTheIppMapOfASpecification) {
  const std::string job = Print();
  const std::wstring specification =
      L"<DataMaps>"
      L"<XMLDataMap Protocol='QUARN'><DataItem Name='Name' URI='/x' XPath='//x'/></XMLDataMap>"
      L"<XMLDataMap Protocol='WS'><DataItem Name='Name' URI='/x' XPath='//x'/></XMLDataMap>"
      L"<OIDDataMap><DataItem Name='Name' OID='1.3.6.1.2.1.25.3.2.1.3.1'/></OIDDataMap>"
      L"<IPPDataMap><IPPParams Name='printer' ResourceURI='/ipp/print'/>"
      L"<DataItem Name='Name' AttributeID='missing_OR_printer-name'/>"
      L"<DataItem Name='Status' AttributeID='printer-state' Transient='true'>"
      L"<Conversion Contains='3' Value='Ready'/><Conversion Contains='4' Value='Printing'/>"
      L"</DataItem>"
      L"<DataItem Prefix='media' Name='Size' AttributeID='media-ready'/>"
      L"<DataItem Name='Width' AttributeID='media-col-default.media-size.x-dimension'/>"
      L"<DataItem Name='Owner' AttributeID='job-originating-user-name'"
      L" Command='Get-Job-Attributes' JobURI='" +
      std::wstring(job.begin(), job.end()) +
      L"'/>"
      L"<DataItem Name='JobState' AttributeID='job-state' Transient='true'"
      L" Command='Get-Job-Attributes' JobURI='" +
      std::wstring(job.begin(), job.end()) + L"'/></IPPDataMap></DataMaps>";
  DataCollection* made = nullptr;
  ASSERT_HR(CreateDataCollectionFromXML(m_address.Get(), specification.c_str(), &made, nullptr),
            S_OK);
  const auto collection = RefPtr<DataCollection>::Adopt(made);
  auto* const mapper = dynamic_cast<DataCollectionImpl*>(made);
  ASSERT_NE(nullptr, mapper);
  EXPECT_EQ(L"IPPDataMap", mapper->GetDataMapName());
  const auto get = [&](const wchar_t* name) {
    _variant_t value(7L, VT_I4);
    const HRESULT result = made->GetValue(name, &value);
    return result == S_OK ? Shown(value) : HrText(result);
  };
  const std::string sizes = get(L"media:Size");
  EXPECT_EQ("na_letter_8.5x11in,na_number-10_4.125x9.5in", sizes);
  static const struct {
    const wchar_t* name;
    std::string expected;
  } kItems[] = {{L"Name", "Printer"},
                {L"Status", "Printing"},
                {L"media:Size.001", "na_letter_8.5x11in"},
                {L"media:Size.002", "na_number-10_4.125x9.5in"},
                {L"media:Size.003", HrText(S_FALSE)},
                {L"Name.001", "Printer"},
                {L"Width", "21590"},
                {L"Owner", "anna"},
                {L"JobState", "5"}};
  for (const auto& item : kItems) EXPECT_EQ(item.expected, get(item.name)) << Narrow(item.name);
  ASSERT_TRUE(End(job));
  EXPECT_EQ("9", get(L"JobState"));
}

}  // namespace
}  // namespace Corvane::Test
