// Documents on their way to a scripted printer.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>

#include "core/text.h"
#include "tests/ipp/print_client.h"
#include "tests/support/trace_recorder.h"

namespace Corvane::Test {
namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;

const std::string kNoJob = "failed 87";

// When the program ends, the set of live objects reports those that are left; the test fails then.
class LeakReport : public ::testing::Environment {
 public:
  void TearDown() override {
    SetTraceSink(
        [](void*, const TraceEvent* event) {
          std::fprintf(stderr, "%s\n", Narrow(event->message).c_str());
        },
        nullptr, kTraceSevere);
  }
};
const auto* const g_leakReport = ::testing::AddGlobalTestEnvironment(new LeakReport);

TEST_F(PrintFlowTest, EveryDocumentHasTheOutcomeThatThePrinterGaveIt) {
  ForEachAtOnce("ipp/documents.txt", [](const Case& c) {
    PrinterUnderTest printer(c);
    PrintClient client(printer, "report", kSecure);
    client.Request()->SetAuthorizationHeader(L"Basic eA==");
    client.Request()->SetJobURI("ipp://printer/jobs/2");  // as a cancelled job has left it
    const std::string outcome = client.Send(c, "%PDF-1.7");
    EXPECT_EQ(c.Find("sent").value_or("1"), std::to_string(printer.Count(2)));
    EXPECT_EQ(kNoJob, client.Write("more")) << "the job has ended";
    if (c.Find("status")) {
      EXPECT_EQ(c.Text("status"), client.Status());
    }
    printer->Locked([&](State& state) {
      for (const auto& asked : state.asked) {
        EXPECT_EQ(443u, asked.head.port);
        EXPECT_TRUE(asked.operation != 2 || asked.head.isAuthorized);
      }
      if (outcome == "ok" && state.settings.at("losesAnswers") == 0) {
        EXPECT_EQ(std::to_string(state.settings.at("status")), client.Status());
        EXPECT_EQ(state.jobs.rbegin()->first, client.Response()->GetJobID());
        EXPECT_EQ("%PDF-1.7", state.Latest().document);
      }
      state.settings = Printer::kSettings;
      state.states = "3 none";
    });
    EXPECT_EQ("ok", client.Send("the next job", 5));
    EXPECT_EQ("the next job", printer.LatestDocument());
    return outcome;
  });
}

TEST_F(PrintFlowTest, RefusesWhatIsNoJob) {
  PrinterUnderTest printer;
  PrintClient client(printer);
  auto* const request = client.Request();
  auto* const response = client.Response();
  for (const bool chunked : {false, true}) {
    const auto print = [&](IPPRequestBase* r, IPPResponseBase* a, const void* bytes, int length) {
      return PrintClient::Outcome(client->PrintJob(r, a, bytes, length, chunked));
    };
    EXPECT_EQ("failed 1462", print(request, response, "x", 0));
    EXPECT_EQ(kNoJob, print(request, response, "x", -1));
    EXPECT_EQ(kNoJob, print(request, response, nullptr, 1));
    EXPECT_EQ(kNoJob, print(nullptr, response, "x", 1));
    EXPECT_EQ(kNoJob, print(request, nullptr, "x", 1));
    const auto byPath = RefPtr<IPPProvider>::Adopt(CreateIPPProvider(printer.Get(), "/ipp/print"));
    EXPECT_EQ("failed 1280",
              PrintClient::Outcome(byPath->PrintJob(request, response, "x", 1, chunked)));
  }
  EXPECT_EQ(kNoJob, client.Write("no job"));
  EXPECT_EQ(kNoJob, client.End());
  EXPECT_EQ(0, printer.Count(2));
}

TEST_F(PrintFlowTest, AJobThatIsCancelledAtThePanelEndsWithinTwoSeconds) {
  PrinterUnderTest printer(
      Case("", {{"printer", "endAt=100"}, {"jobs", "bob report 5 0  anna report 5 60"}}));
  PrintClient client(printer);
  const auto begin = steady_clock::now();
  EXPECT_EQ("cancelled", client.SendOn("%PDF"));
  EXPECT_LT(steady_clock::now() - begin, 2s);
  EXPECT_EQ(kNoJob, client.End());
}

// The others are an older job of its name, and one of another name that comes at the same time.
TEST_F(PrintFlowTest, AnyThreadCancelsTheJobBeingPrinted) {
  ForEachAtOnce("ipp/cancellations.txt", [](const Case& c) {
    PrinterUnderTest printer(c);
    PrintClient client(printer, "report", kSecure);
    client.Request()->SetAuthorizationHeader(L"Basic eA==");
    EXPECT_EQ("none", client.CancelPrinting());
    auto sending = std::async(std::launch::async, [&] { return client.Send(c, "%PDF"); });
    int operation = 0;
    int times = 0;
    std::istringstream(c.Text("asked")) >> operation >> times;
    EXPECT_TRUE(printer->Await([&](State& state) {
      if (state.Count(operation) < times) return false;
      for (auto& [id, job] : state.jobs) job.listed = job.listed || c.Number("listed");
      return true;
    }));
    const auto told = RefPtr<IPPResponseBase>::Adopt(CreateIPPResponse());
    EXPECT_EQ(c.Text("cancelled"), client.CancelPrinting(told.Get()));
    if (c.Text("cancelled") == "ok") {
      EXPECT_EQ(3, told->GetJobID());
    }
    std::string outcome = sending.get();
    EXPECT_EQ("none", client.CancelPrinting()) << "the job has ended";
    EXPECT_EQ(c.Text("left"), printer.Jobs());
    printer->Locked([&](const State& state) {
      for (const auto& asked : state.asked) EXPECT_EQ(443u, asked.head.port);
      for (const auto& asked : state.asked) {
        EXPECT_TRUE(asked.operation != 8 || asked.head.isAuthorized);
      }
    });
    return outcome;
  });
}

// The sender gives up at once; whoever cancels goes on until the printer lists the job.
TEST_F(PrintFlowTest, CancellationOutlivesTheSendersPatience) {
  PrinterUnderTest printer;
  PrintClient client(printer);
  ASSERT_EQ("ok", client.Begin("half"));
  printer->Locked([](State& state) { state.Latest().listed = false; });
  auto cancelling = std::async(std::launch::async, [&] { return client.CancelPrinting(); });
  const auto askedAgain = [&](int times) {
    return printer->Await(
        [=, asked = printer.Count(10)](State& state) { return state.Count(10) >= asked + times; });
  };
  EXPECT_TRUE(askedAgain(1));
  auto writing = std::async(std::launch::async, [&] { return client.Write("more"); });
  EXPECT_TRUE(askedAgain(3));
  printer->Locked([](State& state) { state.Latest().listed = true; });
  EXPECT_EQ("ok", cancelling.get());
  EXPECT_EQ("cancelled", writing.get());
}

TEST_F(PrintFlowTest, CancelsTwiceAndForNobody) {
  EXPECT_EQ(E_FAIL, CancelPrintJob(nullptr, nullptr, 0));
  PrinterUnderTest printer;
  PrintClient client(printer);
  ASSERT_EQ("ok", client.Begin("half"));
  EXPECT_EQ("ok", client.CancelPrinting());
  EXPECT_EQ("ok", client.CancelPrinting()) << "it is known";
  EXPECT_EQ(1, printer.Count(8));
  EXPECT_EQ("cancelled", client.Write("more"));
  EXPECT_EQ("half", printer.LatestDocument());
  EXPECT_EQ("ok", client.Send("another", 3));
}

TEST_F(PrintFlowTest, TheSenderPausesWhileTheSpoolIsFull) {
  PrinterUnderTest printer;
  PrintClient client(printer);
  EXPECT_EQ("ok", client.Print("%PDF"));  // which nobody watches, and so ends no watch
  ASSERT_EQ("ok", client.Begin("%PDF"));
  const int polled = 3;  // the provider's creation, before the job began, at once
  ASSERT_TRUE(printer->Await([](State& state) { return state.Count(11) == polled; }));
  printer->Locked([](State& state) { state.states = "5 media-empty,spool-area-full"; });
  const HANDLE ready = client->GetPrintReadyStatusEventHandle();
  std::atomic<bool> enough = false;
  auto writing = std::async(std::launch::async, [&] {
    std::string outcome = "ok";
    for (; outcome == "ok" && !enough; std::this_thread::sleep_for(2ms)) {
      outcome = client.Write("x");
    }
    return outcome;
  });
  EXPECT_TRUE(printer->Await([](State& state) { return state.Count(11) == polled + 1; }, 5500ms));
  for (int i = 0; i < 500 && WaitForSingleObject(ready, 0) == WAIT_OBJECT_0; ++i) {
    std::this_thread::sleep_for(2ms);
  }
  std::this_thread::sleep_for(200ms);  // what was about to go has gone
  const std::size_t size = printer.LatestDocument().size();
  EXPECT_LT(100u, size) << "it was sent until then";
  std::this_thread::sleep_for(500ms);
  EXPECT_EQ(size, printer.LatestDocument().size());
  printer->Locked([](State& state) { state.states = "4 none"; });
  EXPECT_TRUE(
      printer->Await([=](State& state) { return state.Latest().document.size() > size; }, 5500ms));
  enough = true;
  EXPECT_EQ("ok", writing.get());
  EXPECT_EQ(polled + 2, printer.Count(11));
  EXPECT_EQ("ok", client.End());
}

TEST_F(PrintFlowTest, TwoJobsOfOneProcessDoNotEndEachOther) {
  PrinterUnderTest printer;
  PrintClient first(printer, "first");
  PrintClient second(printer, "second");
  ASSERT_EQ("ok", first.Begin("1"));
  ASSERT_EQ("ok", second.Begin("2"));
  first->SetTimeouts(1000, 2000, 3000);  // while its first polls are made
  _variant_t value;                      // a client may ask meanwhile
  EXPECT_EQ(S_OK, first->GetIPPValue("printer-name", false, &value, nullptr, nullptr, 0));
  printer->Locked([](State& state) { state.Set("endAt=20"); });  // whichever gets so far
  EXPECT_EQ("cancelled", first.SendOn({}));
  printer->Locked([](State& state) { state.settings = Printer::kSettings; });
  ASSERT_EQ("ok", second.Write("22"));
  PrintClient third(printer, "third");
  EXPECT_EQ("ok", third.Send("333", 1)) << "its beginning and end meet those of the second";
  EXPECT_EQ("ok", second.Write("222"));
  printer->Locked([](State& state) { state.jobs[2].state = Printer::kCancelled; });
  const auto cancelled = steady_clock::now();
  EXPECT_EQ("cancelled", second.SendOn({}));
  EXPECT_LT(steady_clock::now() - cancelled, 2s);
  printer->Locked([](State& state) {
    EXPECT_EQ("222222", state.jobs[2].document.substr(0, 6));
    EXPECT_EQ("333", state.jobs[3].document);
  });
}

TEST_F(PrintFlowTest, AnUnfinishedDocumentIsDroppedByWhatComesAfterIt) {
  PrinterUnderTest printer;
  PrintClient client(printer);
  ASSERT_EQ("ok", client.Begin("half"));
  EXPECT_EQ("ok", client.Send("another", 3));
  EXPECT_EQ("another", printer.LatestDocument());
  ASSERT_EQ("ok", client.Begin("half"));
  EXPECT_EQ("ok", client.Print("whole"));
  ASSERT_EQ("ok", client.Begin("half"));
  EXPECT_EQ("ok", client.Cancel());
  EXPECT_EQ(kNoJob, client.End());
  ASSERT_EQ("ok", client.Begin("half"));
  client.Close();
  EXPECT_EQ("1:8 2:9 3:8 4:9 5:7 6:8", printer.Jobs());
}

TEST_F(PrintFlowTest, TheThreadsStopInEveryState) {
  PrinterUnderTest printer;
  PrintClient client(printer);
  const int threads = CountThreads();
  const auto stopTwice = [&] {
    client->StopAllThreadsRunning();
    client->StopAllThreadsRunning();
    EXPECT_FALSE(client->GetPrintStatusEventHandle());
    EXPECT_FALSE(client->GetPrintReadyStatusEventHandle());
    EXPECT_EQ(1u, client->GetPrintStatus());
    EXPECT_EQ(0u, client->GetbPrinteStatusThreadPoll());
  };
  stopTwice();  // before the first job
  ASSERT_EQ("ok", client.Begin("1"));
  stopTwice();
  EXPECT_EQ("ok", client.Write("2"));
  EXPECT_EQ("ok", client.End());
  EXPECT_EQ("12", printer.LatestDocument());
  stopTwice();                             // after a job
  EXPECT_LE(CountThreads(), threads + 1);  // one that was joined may still be seen
  // During an exchange, which the provider's end waits for.
  ASSERT_EQ("ok", client.Begin("3"));
  printer->Locked([](State& state) { state.Set("holdsLists=1"); });
  const int lists = printer.Count(10);
  ASSERT_TRUE(printer->Await([=](State& state) { return state.Count(10) > lists; }));
  auto closing = std::async(std::launch::async, [&] { client.Close(); });
  EXPECT_EQ(std::future_status::timeout, closing.wait_for(100ms));
  printer->Locked([](State& state) { state.Set("holdsLists=0"); });
}

TEST_F(PrintFlowTest, AThousandJobsLeaveNothingBehind) {
  PrinterUnderTest printer;
  { PrintClient(printer).Send("first", 2); }
  const int handles = CountHandles();
  for (int i = 0; i < 1000; ++i) {
    PrintClient client(printer);
    ASSERT_EQ("ok", i % 4 == 0 ? client.Send("%PDF", 2) : client.Print("%PDF")) << i;
    ASSERT_EQ("ok", i % 10 == 0 ? client.Begin("half") : "ok") << i;
    printer->Locked([](State& state) { state.asked.clear(); });
  }
  EXPECT_LE(CountHandles(), handles + 20);
}

TEST_F(PrintFlowTest, TracesWhatBecameOfAJob) {
  for (const Case& c : ReadCases("ipp/print_traces.txt")) {
    SCOPED_TRACE(c.Where());
    PrinterUnderTest printer(c);
    PrintClient client(printer);
    const TraceRecorder recorder(kTraceInfo);
    client.Send(c, "12");
    std::string traces;
    for (const auto& line : recorder.Lines()) {
      const bool isOfJob = line.function.find(L"::PrintJob") != line.function.npos;
      if (line.kind != TraceKind::kMessage || !isOfJob) continue;
      traces += (traces.empty() ? "" : "\n") + Narrow(line.message);
    }
    EXPECT_EQ(c.Text("traces"), traces);
  }
}

}  // namespace
}  // namespace Corvane::Test
