// Jobs that are made and cancelled by one exchange, and whether the printer is ready for one.
#include <gtest/gtest.h>

#include "tests/ipp/print_client.h"
#include "tests/support/hr.h"
#include "tests/support/trace_recorder.h"

namespace Corvane::Test {
namespace {

TEST_F(PrintFlowTest, AnOperationIsOneExchangeAboutItsText) {
  using R = IPPRequestBase;
  const struct {
    HRESULT (IPPProviderImpl::*operation)(IPPRequestBase*, IPPResponseBase*);
    int code;
    const char* attribute;
    HRESULT (R::*set)(const char*);
  } cases[] = {{&IPPProviderImpl::PrintUri, 3, "document-uri", &R::SetDocumentUri},
               {&IPPProviderImpl::SendURI, 7, "document-uri", &R::SetDocumentUri},
               {&IPPProviderImpl::CreateJob, 5, "job-name", &R::SetJobName}};
  for (const auto& test : cases) {
    for (const wchar_t* const uri : {kPlain, kSecure}) {
      SCOPED_TRACE(test.code);
      PrinterUnderTest printer;
      PrintClient client(printer, nullptr, uri);
      const auto run = [&](const char* text) {
        (client.Request()->*test.set)(text);
        SetLastError(7);
        return PrintClient::Outcome(
            (client.operator->()->*test.operation)(client.Request(), client.Response()));
      };
      EXPECT_EQ("failed 7", run(nullptr));
      EXPECT_EQ("failed 7", run(""));
      EXPECT_EQ(0, printer.Count(test.code));
      EXPECT_EQ("ok", run("http://files/a.pdf"));
      EXPECT_EQ("0", client.Status());
      printer->Locked([&](State& state) {
        EXPECT_EQ(test.code, state.asked.back().operation);
        EXPECT_EQ(uri == kPlain ? 631u : 443u, state.asked.back().head.port);
        EXPECT_EQ("http://files/a.pdf", state.asked.back().attributes[test.attribute]);
        state.Set("status=0x500");
      });
      EXPECT_EQ("ok", run("again")) << "a refusal is the caller's to read";
      EXPECT_EQ("1280", client.Status());
      printer->Locked([](State& state) { state.Set("http=401"); });
      EXPECT_EQ("failed 1027", run("again"));
    }
  }
}

TEST_F(PrintFlowTest, CancelsTheJobThatIsMeant) {
  for (const Case& c : ReadCases("ipp/job_cancelling.txt")) {
    for (const wchar_t* const uri : {kPlain, kSecure}) {
      SCOPED_TRACE(c.Where());
      PrinterUnderTest printer(c);
      PrintClient client(printer, "report", uri);
      client.Request()->SetJobURI(c.Text("uri").empty() ? nullptr : c.Text("uri").c_str());
      client.Request()->AddExtraHTTPHeader(L"Authorization", L"Basic eA==");
      if (c.Text("half") != "") {
        EXPECT_EQ("ok", client.Begin("half"));
      }
      EXPECT_EQ(c.Text("outcome"), client.Cancel());
      EXPECT_EQ("failed 87", client.End());
      EXPECT_EQ(c.Text("left"), printer.Jobs());
      printer->Locked([&](State& state) {
        EXPECT_EQ(c.Text("outcome") == "ok" ? 1 : 0, state.Count(8));
        if (state.Count(8) == 0) return;
        EXPECT_EQ(631u, state.asked.back().head.port);
        EXPECT_FALSE(uri == kSecure && state.asked.back().head.isAuthorized);
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
  printer->Locked([](State& state) { state.Set("listsJobs=0"); });
  constexpr wchar_t kCancelJob[] = L"Corvane::IPPProviderImpl::CancelJob";
  const TraceRecorder recorder(kTraceSevere);
  EXPECT_EQ("failed 12029", client.Cancel());
  EXPECT_TRUE(recorder.HasMessage(128, kCancelJob, L"GetJobs failed"));
  client.Request()->SetRequestingUserName(nullptr);
  EXPECT_HR(client->CancelJob(client.Request(), client.Response()), E_FAIL);
  EXPECT_TRUE(recorder.HasMessage(128, kCancelJob, L"RequestingUserName is not present"));
  EXPECT_EQ(1, printer.Count(8));
}

TEST_F(PrintFlowTest, KnowsWhetherThePrinterIsReady) {
  constexpr wchar_t kCheck[] = L"Corvane::IPPProviderImpl::CheckForPrinterReadyState";
  PrinterUnderTest printer;
  PrintClient client(printer);
  const TraceRecorder recorder(kTraceInfo);
  for (const auto& [states, expected] : {std::pair{"3 none", 1},
                                         {"3 toner-low-warning", 1},
                                         {"3 spool-area-full", 0},
                                         {"4 none", 0},
                                         {"5 media-jam", 0},
                                         {"", 2}}) {
    printer->Locked([&](State& state) { state.states = states; });
    SetLastError(7);
    EXPECT_EQ(expected, client->CheckForPrinterReadyState()) << states;
  }
  EXPECT_TRUE(recorder.HasMessage(16, kCheck, L"Printer State: 5"));
  EXPECT_TRUE(recorder.HasMessage(16, kCheck, L"RetrievePrinterState fails with 7"));
}

}  // namespace
}  // namespace Corvane::Test
