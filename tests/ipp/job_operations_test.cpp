// Jobs that are made and cancelled by one exchange, and whether the printer is ready for one.
#include <gtest/gtest.h>

#include "tests/ipp/print_client.h"
#include "tests/support/hr.h"
#include "tests/support/trace_recorder.h"

namespace Corvane::Test {
namespace {

using Operation = HRESULT (IPPProviderImpl::*)(IPPRequestBase*, IPPResponseBase*);
using Printer = ScriptedPrinter;

constexpr wchar_t kPlain[] = L"ipp://h/ipp/print";
constexpr wchar_t kSecure[] = L"ipps://h/ipp/print";

TEST_F(PrintFlowTest, AnOperationIsOneExchangeAboutItsText) {
  const struct {
    const char* name;
    Operation operation;
    int code;
    const char* attribute;
    HRESULT (IPPRequestBase::*set)(const char*);
  } cases[] = {
      {"PrintUri", &IPPProviderImpl::PrintUri, 3, "document-uri", &IPPRequestBase::SetDocumentUri},
      {"SendURI", &IPPProviderImpl::SendURI, 7, "document-uri", &IPPRequestBase::SetDocumentUri},
      {"CreateJob", &IPPProviderImpl::CreateJob, 5, "job-name", &IPPRequestBase::SetJobName},
  };
  for (const auto& test : cases) {
    for (const wchar_t* const uri : {kPlain, kSecure}) {
      SCOPED_TRACE(test.name + (uri == kPlain ? std::string() : ", secure"));
      PrinterUnderTest printer;
      PrintClient client(printer, nullptr, uri);
      const auto run = [&] {
        SetLastError(7);
        return PrintClient::Outcome(
            (client.operator->()->*test.operation)(client.Request(), client.Response()));
      };
      for (const char* const text : {static_cast<const char*>(nullptr), ""}) {
        (client.Request()->*test.set)(text);
        EXPECT_EQ("failed 7", run());
      }
      EXPECT_EQ(0, printer.Count(test.code));
      (client.Request()->*test.set)("http://files/a.pdf");
      EXPECT_EQ("ok", run());
      EXPECT_EQ("0", client.Status());
      printer->Locked([&](State& state) {
        EXPECT_EQ(test.code, state.asked.back().operation);
        EXPECT_EQ(uri == kPlain ? 631u : 443u, state.asked.back().port);
        EXPECT_EQ("http://files/a.pdf", state.asked.back().attributes[test.attribute]);
        state.status = Printer::kRefusal;
      });
      EXPECT_EQ("ok", run()) << "a refusal is the caller's to read";
      EXPECT_EQ(std::to_string(Printer::kRefusal), client.Status());
      printer->Locked([](State& state) { state.http = 401; });
      EXPECT_EQ("failed " + std::to_string(kIPPNotAuthorized), run());
    }
  }
}

TEST_F(PrintFlowTest, CancelsTheJobThatIsMeant) {
  const auto own = [](const char* name, int age) {
    return Printer::Job{"anna", name, Printer::kProcessing, Printer::kUpTime - age};
  };
  const struct {
    const char* name;
    std::map<int, Printer::Job> jobs;
    const char* jobUri;
    bool half;      // a document is on its way, as the job behind those
    int cancelled;  // 0: none
  } cases[] = {
      {"none", {}, nullptr, false, 0},
      {"only ended ones",
       {{1, {"anna", "a", Printer::kCompleted, Printer::kUpTime}}},
       nullptr,
       false,
       0},
      {"the first", {{1, own("a", 9)}, {2, own("b", 8)}}, nullptr, false, 1},
      {"the one named", {{1, own("a", 9)}, {2, own("b", 8)}}, "ipp://printer/jobs/2", false, 2},
      {"the first for one that is not listed",
       {{1, own("a", 9)}},
       "ipp://printer/jobs/7",
       false,
       1},
      {"the half-sent one",
       {{1, own("report", 60)}, {2, {"bob", "report", Printer::kProcessing, Printer::kUpTime}}},
       nullptr,
       true,
       3},
      {"another than the half-sent one", {{1, own("a", 60)}}, "ipp://printer/jobs/1", true, 1},
  };
  for (const auto& test : cases) {
    for (const wchar_t* const uri : {kPlain, kSecure}) {
      SCOPED_TRACE(test.name + (uri == kPlain ? std::string() : ", secure"));
      PrinterUnderTest printer;
      PrintClient client(printer, "report", uri);
      client.Request()->SetJobURI(test.jobUri);
      client.Request()->AddExtraHTTPHeader(L"Authorization", L"Basic eA==");
      printer->Locked([&](State& state) { state.jobs = test.jobs; });
      if (test.half) {
        ASSERT_EQ("ok", client.Begin("half"));
      }
      EXPECT_EQ(test.cancelled ? "ok" : "none", client.Cancel());
      EXPECT_EQ("failed " + std::to_string(kIPPInvalidArgument), client.End());
      printer->Locked([&](State& state) {
        for (auto& [id, job] : state.jobs) {
          EXPECT_EQ(id == test.cancelled, job.state == Printer::kCancelled) << id;
        }
        EXPECT_EQ(test.cancelled ? 1 : 0, state.Count(8));
        if (!test.cancelled) return;
        EXPECT_EQ(631u, state.asked.back().port);
        EXPECT_FALSE(uri == kSecure && state.asked.back().authorized);
        EXPECT_EQ(client.Request()->GetJobURI(), state.asked.back().attributes["job-uri"]);
      });
      EXPECT_EQ(1u, client.Request()->GetExtraHTTPHeader().count(L"Authorization"));
    }
  }
}

TEST_F(PrintFlowTest, CancelsOnceAndTellsWhyItDoesNot) {
  PrinterUnderTest printer;
  PrintClient client(printer);
  ASSERT_EQ("ok", client.Begin("half"));
  EXPECT_EQ("ok", client.Cancel());
  EXPECT_EQ("none", client.Cancel());
  printer->Locked([](State& state) { state.listsJobs = false; });
  constexpr wchar_t kCancelJob[] = L"Corvane::IPPProviderImpl::CancelJob";
  const TraceRecorder recorder(kTraceSevere);
  EXPECT_EQ("failed " + std::to_string(Printer::kUnreachable), client.Cancel());
  EXPECT_TRUE(recorder.HasMessage(128, kCancelJob, L"GetJobs failed"));
  client.Request()->SetRequestingUserName(nullptr);
  EXPECT_HR(client->CancelJob(client.Request(), client.Response()), E_FAIL);
  EXPECT_TRUE(recorder.HasMessage(128, kCancelJob, L"RequestingUserName is not present"));
  EXPECT_EQ(1, printer.Count(8));
}

TEST_F(PrintFlowTest, KnowsWhetherThePrinterIsReady) {
  const struct {
    const char* name;
    int state;
    const char* reasons;
    int expected;
  } cases[] = {{"idle", 3, "none", 1},
               {"idle without toner", 3, "toner-low-warning", 1},
               {"idle and full", 3, "spool-area-full", 0},
               {"at work", 4, "none", 0},
               {"stopped", 5, "media-jam", 0}};
  constexpr wchar_t kCheck[] = L"Corvane::IPPProviderImpl::CheckForPrinterReadyState";
  PrinterUnderTest printer;
  PrintClient client(printer);
  const TraceRecorder recorder(kTraceInfo);
  for (const auto& test : cases) {
    SCOPED_TRACE(test.name);
    printer->Locked([&](State& state) { state.printer = {{test.state, test.reasons}}; });
    EXPECT_EQ(test.expected, client->CheckForPrinterReadyState());
  }
  EXPECT_TRUE(recorder.HasMessage(16, kCheck, L"Printer State: 5"));
  printer->Locked([&](State& state) { state.tellsState = false; });
  SetLastError(7);
  EXPECT_EQ(2, client->CheckForPrinterReadyState());
  EXPECT_TRUE(recorder.HasMessage(16, kCheck, L"RetrievePrinterState fails with 7"));
}

}  // namespace
}  // namespace Corvane::Test
