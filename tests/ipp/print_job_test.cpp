// Documents on their way to a scripted printer.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <random>

#include "core/text.h"
#include "ipp/wire/codes.h"
#include "tests/ipp/print_client.h"
#include "tests/support/trace_recorder.h"

namespace Corvane::Test {
namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;
using Printer = ScriptedPrinter;
using Script = void (*)(State&);

std::string Failed(std::uint32_t error) { return "failed " + std::to_string(error); }

std::string Document(std::size_t size) {
  std::minstd_rand random;
  std::string bytes(size, '\0');
  std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random() >> 8); });
  return bytes;
}

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
  enum Way { kWhole, kChunked };
  const struct {
    const char* name;
    Way way;
    Script script;
    std::string expected;
    int sent = 1;  // Print-Job requests
  } cases[] = {
      {"whole", kWhole, [](State&) {}, "ok"},
      {"successful-ok-ignored-or-substituted", kWhole, [](State& s) { s.status = 1; }, "ok"},
      {"successful-ok-conflicting", kWhole, [](State& s) { s.status = 2; }, "ok"},
      {"busy, then not", kWhole, [](State& s) { s.busy = 1; }, "ok", 2},
      {"cancelled", kWhole, [](State& s) { s.endAt = 1; }, "cancelled"},
      {"cancelled when taken", kWhole, [](State& s) { s.whenWhole = Printer::kCancelled; },
       "cancelled"},
      {"aborted when taken", kWhole, [](State& s) { s.whenWhole = Printer::kAborted; },
       Failed(kIPPJobAborted)},
      {"not listed", kWhole, [](State& s) { s.showsNewJobs = false; }, "ok"},
      {"lists refused", kWhole, [](State& s) { s.listsJobs = false; }, "ok"},
      {"refused", kWhole, [](State& s) { s.status = Printer::kRefusal; },
       Failed(Printer::kRefusal)},
      {"unauthenticated", kWhole, [](State& s) { s.http = 401; }, Failed(kIPPNotAuthenticated)},
      {"too large", kWhole, [](State& s) { s.http = 413; }, Failed(413)},
      {"dropped", kWhole, [](State& s) { s.dropAt = 1; }, Failed(Printer::kDropped)},
      {"silent", kWhole, [](State& s) { s.silentAt = 1; }, Failed(Printer::kTimeout)},
      {"in pieces", kChunked, [](State&) {}, "ok"},
      {"in pieces, substituted", kChunked, [](State& s) { s.status = 1; }, "ok"},
      {"in pieces, busy", kChunked, [](State& s) { s.busy = 1; }, Failed(kIPPPrinterBusy)},
      {"in pieces, refused", kChunked, [](State& s) { s.status = Printer::kRefusal; },
       Failed(Printer::kRefusal)},
      {"in pieces, unauthenticated", kChunked, [](State& s) { s.http = 401; },
       Failed(kIPPNotAuthenticated)},
      {"in pieces, silent", kChunked, [](State& s) { s.silentAt = 5; }, Failed(Printer::kTimeout)},
      {"printer busy at first", kChunked,
       [](State& s) {
         s.printer = {{4, "none"}, {3, "none"}};
       },
       "ok"},
      {"spool full at first", kChunked,
       [](State& s) {
         s.printer = {{3, "spool-area-full"}, {3, "none"}};
       },
       "ok"},
      {"state unknown", kChunked, [](State& s) { s.tellsState = false; },
       Failed(kIPPPrinterStateUnknown), 0},
      {"aborted meanwhile", kChunked,
       [](State& s) {
         s.endAt = 5;
         s.endState = Printer::kAborted;
       },
       Failed(kIPPJobAborted)},
  };
  ForEachAtOnce(cases, [](const auto& test) {
    PrinterUnderTest printer;
    PrintClient client(printer);
    printer->Locked(test.script);
    std::string outcome;
    if (test.name == std::string_view("aborted meanwhile")) {
      outcome = client.Begin("%PDF-1.7");
      if (outcome == "ok") outcome = client.WriteOn();
    } else {
      outcome = test.way == kWhole ? client.Print("%PDF-1.7") : client.Send("%PDF-1.7", 4);
    }
    EXPECT_EQ(test.sent, printer.Count(2));
    if (outcome == "ok") {
      const int status = printer->Locked([](const State& state) { return state.status; });
      EXPECT_EQ(std::to_string(status), client.Status());
      EXPECT_EQ("%PDF-1.7", printer.LatestDocument());
      EXPECT_EQ(test.sent, client.Response()->GetJobID());
    }
    EXPECT_EQ(Failed(kIPPInvalidArgument), client.Write("more")) << "the job has ended";
    return outcome;
  });
}

TEST_F(PrintFlowTest, TheJobIsLookedUpWhenItsAnswerIsLost) {
  const struct {
    const char* name;
    Script script;
    std::string expected;
  } cases[] = {
      {"going on", [](State& s) { s.whenWhole = Printer::kProcessing; }, "ok"},
      {"completed", [](State&) {}, "ok"},
      {"cancelled", [](State& s) { s.whenWhole = Printer::kCancelled; }, "cancelled"},
      {"aborted", [](State& s) { s.whenWhole = Printer::kAborted; }, Failed(Printer::kNoAnswer)},
      {"not listed", [](State& s) { s.showsNewJobs = false; }, Failed(Printer::kNoAnswer)},
      {"not to be asked", [](State& s) { s.listsJobs = false; }, Failed(kIPPPerhapsPrinted)},
      {"only others and an old one",
       [](State& s) {
         s.showsNewJobs = false;
         s.jobs[1] = {"bob", "report", Printer::kCompleted, Printer::kUpTime};
         s.jobs[2] = {"anna", "report", Printer::kCompleted, Printer::kUpTime - 60};
       },
       Failed(Printer::kNoAnswer)},
      {"among others and old ones",
       [](State& s) {
         s.jobs[1] = {"bob", "report", Printer::kCancelled, Printer::kUpTime};
         s.jobs[2] = {"anna", "report", Printer::kCancelled, Printer::kUpTime - 60};
       },
       "ok"},
  };
  for (const bool chunked : {false, true}) {
    SCOPED_TRACE(chunked ? "chunked" : "whole");
    ForEachAtOnce(cases, [chunked](const auto& test) {
      PrinterUnderTest printer;
      PrintClient client(printer);
      printer->Locked([&](State& state) {
        state.losesAnswers = true;
        test.script(state);
      });
      client.Request()->SetJobURI("ipp://printer/jobs/2");  // as a cancelled job has left it
      const std::string outcome = chunked ? client.Send("%PDF-1.7", 4) : client.Print("%PDF-1.7");
      EXPECT_EQ(1, printer.Count(2)) << "it is sent once";
      return outcome;
    });
  }
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
    EXPECT_EQ(Failed(kIPPDocumentEmpty), print(request, response, "x", 0));
    EXPECT_EQ(Failed(kIPPInvalidArgument), print(request, response, "x", -1));
    EXPECT_EQ(Failed(kIPPInvalidArgument), print(request, response, nullptr, 1));
    EXPECT_EQ(Failed(kIPPInvalidArgument), print(nullptr, response, "x", 1));
    EXPECT_EQ(Failed(kIPPInvalidArgument), print(request, nullptr, "x", 1));
    const auto byPath = RefPtr<IPPProvider>::Adopt(CreateIPPProvider(printer.Get(), "/ipp/print"));
    EXPECT_EQ(Failed(kIPPNoPrinterUri),
              PrintClient::Outcome(byPath->PrintJob(request, response, "x", 1, chunked)));
  }
  EXPECT_EQ(Failed(kIPPInvalidArgument), client.Write("no job"));
  EXPECT_EQ(Failed(kIPPInvalidArgument), client.End());
  EXPECT_EQ(0, printer.Count(2));
}

TEST_F(PrintFlowTest, PiecesOfAnySizeArriveAsTheyWere) {
  const std::string document = Document(3 << 20);
  PrinterUnderTest printer;
  PrintClient client(printer, "report", L"ipps://h/ipp/print");
  client.Request()->SetAuthorizationHeader(L"Basic eA==");
  for (int job = 1; job <= 2; ++job) {
    ASSERT_EQ("ok", client.Begin(document.substr(0, 1)));
    client->SetTimeouts(1000, 2000, 3000);  // while the first polls are made
    std::size_t at = 1;
    for (int i = 0; at < document.size(); ++i) {
      const std::size_t sizes[] = {1, 4096, 1 << 20, 4096, 1};
      const std::string piece = document.substr(at, sizes[i % 5]);
      ASSERT_EQ("ok", client.Write(piece));
      at += piece.size();
      _variant_t value;  // a client may ask meanwhile
      EXPECT_EQ(S_OK, client->GetIPPValue("printer-name", false, &value, nullptr, nullptr, 0));
    }
    EXPECT_EQ("ok", client.End());
    EXPECT_TRUE(document == printer.LatestDocument());
    EXPECT_EQ(job, client.Response()->GetJobID());
    EXPECT_EQ(Failed(kIPPInvalidArgument), client.End());
  }
  printer->Locked([](const State& state) {
    for (const auto& asked : state.asked) {
      EXPECT_EQ(443u, asked.port);
      EXPECT_TRUE(asked.operation != 2 || asked.authorized);
    }
  });
}

TEST_F(PrintFlowTest, AnAnswerBeforeTheEndOfTheDocumentEndsIt) {
  const struct {
    const char* name;
    std::uint32_t http;
    int status;
    std::string expected;
  } cases[] = {
      {"unauthenticated", 401, 0, Failed(kIPPNotAuthenticated)},
      {"too large", 413, 0, Failed(413)},
      {"refused", 200, Printer::kRefusal, Failed(Printer::kRefusal)},
      {"busy", 200, IPPStatus::kServerErrorBusy, Failed(kIPPPrinterBusy)},
      {"cancelled", 200, IPPStatus::kServerErrorJobCanceled, "cancelled"},
  };
  for (const std::size_t at : {1u, 5u}) {
    SCOPED_TRACE(at);
    ForEachAtOnce(cases, [at](const auto& test) {
      PrinterUnderTest printer;
      PrintClient client(printer);
      printer->Locked([&](State& state) {
        state.earlyAt = at;
        state.http = test.http;
        state.status = test.status;
      });
      const std::string outcome = client.Send("%PDF-1.7", 4);
      if (test.status != 0) {
        EXPECT_EQ(std::to_string(test.status), client.Status());
      }
      EXPECT_EQ(Failed(kIPPInvalidArgument), client.End());
      return outcome;
    });
  }
}

TEST_F(PrintFlowTest, AConnectionThatBreaksFailsTheJobWhereverItDoes) {
  const std::string document = Document(10000);
  for (std::size_t tenth = 0; tenth <= 10; ++tenth) {
    SCOPED_TRACE(tenth);
    PrinterUnderTest printer;
    PrintClient client(printer);
    printer->Locked([&](State& state) { state.dropAt = tenth * 1000; });
    EXPECT_EQ(Failed(Printer::kDropped), client.Send(document, 300));
    EXPECT_EQ(Failed(kIPPInvalidArgument), client.End());
    printer->Locked([](State& state) {
      EXPECT_EQ(0, state.openRequests);
      state.dropAt = Printer::kNever;
    });
    EXPECT_EQ("ok", client.Send(document, 3000)) << "the next job";
    EXPECT_TRUE(document == printer.LatestDocument());
  }
}

TEST_F(PrintFlowTest, AJobThatIsCancelledAtThePanelEndsWithinTwoSeconds) {
  for (const std::size_t at : {1u, 100u}) {
    PrinterUnderTest printer;
    PrintClient client(printer);
    printer->Locked([=](State& state) {
      state.endAt = at;
      state.jobs[1] = {"bob", "report", Printer::kProcessing, Printer::kUpTime};
      state.jobs[2] = {"anna", "report", Printer::kProcessing, Printer::kUpTime - 60};
    });
    const auto begin = steady_clock::now();
    ASSERT_EQ("ok", client.Begin("%PDF"));
    EXPECT_EQ("cancelled", client.WriteOn());
    EXPECT_LT(steady_clock::now() - begin, 2s);
    EXPECT_EQ(Failed(kIPPInvalidArgument), client.End());
  }
}

TEST_F(PrintFlowTest, AnyThreadCancelsTheJobBeingPrinted) {
  using Moment = bool (*)(State&);
  const Moment begun = [](State& s) { return s.Count(2) > 0; };
  const std::string notListed = Failed(kIPPJobNotListed);
  const struct {
    const char* name;
    bool chunked;
    Script script;
    Moment moment;          // of the cancellation
    std::string cancelled;  // its outcome
    std::string expected;   // that of the document
    int state;              // of its job, 0: there is none
  } cases[] = {
      {"between pieces", true, [](State&) {}, begun, "ok", "cancelled", Printer::kCancelled},
      {"a whole one that the host holds", false, [](State& s) { s.silentAt = 1; }, begun, "ok",
       "cancelled", Printer::kCancelled},
      {"behind its last byte", false,
       [](State& s) {
         s.whenWhole = Printer::kProcessing;
         s.showsNewJobs = false;  // for two seconds it is looked for
       },
       [](State& s) { return s.Count(10) > 1 && (s.jobs[3].listed = true); }, "ok", "cancelled",
       Printer::kCancelled},
      {"too late", false, [](State& s) { s.showsNewJobs = false; },
       [](State& s) { return s.Count(10) > 1; }, notListed, "ok", Printer::kCompleted},
      {"before the printer is idle", true,
       [](State& s) {
         s.printer = {{4, "none"}};
       },
       [](State& s) { return s.Count(11) > 1; }, notListed, "cancelled", 0},
      {"between two attempts", false, [](State& s) { s.busy = 99; }, begun, notListed, "cancelled",
       Printer::kAborted},
      {"not listed", true, [](State& s) { s.showsNewJobs = false; }, begun, notListed, "cancelled",
       Printer::kAborted},
      {"lists refused", true, [](State& s) { s.listsJobs = false; }, begun,
       Failed(Printer::kUnreachable), "cancelled", Printer::kAborted},
      {"cancellation refused", true, [](State& s) { s.cancels = false; }, begun,
       Failed(Printer::kRefusal), "cancelled", Printer::kAborted},
  };
  ForEachAtOnce(cases, [](const auto& test) {
    PrinterUnderTest printer;
    PrintClient client(printer, "report", L"ipps://h/ipp/print");
    client.Request()->SetAuthorizationHeader(L"Basic eA==");
    EXPECT_EQ("none", client.CancelPrinting());
    printer->Locked([&](State& state) {
      // An older one of its name, and one of another name that comes at the same time.
      state.jobs[1] = {"anna", "report", Printer::kProcessing, Printer::kUpTime - 60};
      state.jobs[2] = {"anna", "letter", Printer::kProcessing, Printer::kUpTime};
      test.script(state);
    });
    auto sending = std::async(std::launch::async, [&] {
      std::string outcome = test.chunked ? client.Begin("%PDF") : client.Print("%PDF");
      return test.chunked && outcome == "ok" ? client.WriteOn() : outcome;
    });
    EXPECT_TRUE(printer->Await(test.moment));
    const auto told = RefPtr<IPPResponseBase>::Adopt(CreateIPPResponse());
    EXPECT_EQ(test.cancelled, client.CancelPrinting(told.Get()));
    if (test.cancelled == "ok") {
      EXPECT_EQ(3, told->GetJobID());
    }
    std::string outcome = sending.get();
    EXPECT_EQ("none", client.CancelPrinting()) << "the job has ended";
    printer->Locked([&](const State& state) {
      EXPECT_EQ(test.state != 0, state.jobs.contains(3));
      for (const auto& [id, job] : state.jobs) {
        EXPECT_EQ(id < 3 ? Printer::kProcessing : test.state, job.state) << id;
      }
      for (const auto& asked : state.asked) EXPECT_EQ(443u, asked.port);
    });
    return outcome;
  });
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
  printer->Locked([](State& state) { state.printer = {{5, "media-empty,spool-area-full"}}; });
  const HANDLE ready = client->GetPrintReadyStatusEventHandle();
  const auto full = steady_clock::now();
  std::atomic<bool> enough = false;
  auto writing = std::async(std::launch::async, [&] {
    std::string outcome = "ok";
    for (; outcome == "ok" && !enough; std::this_thread::sleep_for(2ms))
      outcome = client.Write("x");
    return outcome;
  });
  while (WaitForSingleObject(ready, 0) == WAIT_OBJECT_0 && steady_clock::now() - full < 7s) {
    std::this_thread::sleep_for(10ms);
  }
  EXPECT_LT(steady_clock::now() - full, 5500ms);
  std::this_thread::sleep_for(200ms);  // what was about to go has gone
  const std::size_t size = printer.LatestDocument().size();
  EXPECT_LT(100u, size) << "it was sent until then";
  std::this_thread::sleep_for(500ms);
  EXPECT_EQ(size, printer.LatestDocument().size());
  printer->Locked([](State& state) { state.printer = {{4, "none"}}; });
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
  printer->Locked([](State& state) { state.endAt = 20; });  // whichever gets so far
  EXPECT_EQ("cancelled", first.WriteOn());
  printer->Locked([](State& state) { state.endAt = Printer::kNever; });
  ASSERT_EQ("ok", second.Write("22"));
  PrintClient third(printer, "third");
  EXPECT_EQ("ok", third.Send("333", 1)) << "its beginning and end meet those of the second";
  EXPECT_EQ("ok", second.Write("222"));
  printer->Locked([](State& state) { state.jobs[2].state = Printer::kCancelled; });
  const auto cancelled = steady_clock::now();
  EXPECT_EQ("cancelled", second.WriteOn());
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
  EXPECT_EQ(Failed(kIPPInvalidArgument), client.End());
  ASSERT_EQ("ok", client.Begin("half"));
  client.Close();
  printer->Locked([](const State& state) {
    EXPECT_EQ(0, state.openRequests);
    for (const auto& [id, expected] : {std::pair{1, 8}, {2, 9}, {3, 8}, {4, 9}, {5, 7}, {6, 8}}) {
      EXPECT_EQ(expected, state.jobs.at(id).state) << id;
    }
  });
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
  printer->Locked([](State& state) { state.holdsLists = true; });
  const int lists = printer.Count(10);
  ASSERT_TRUE(printer->Await([=](State& state) { return state.Count(10) > lists; }));
  auto closing = std::async(std::launch::async, [&] { client.Close(); });
  EXPECT_EQ(std::future_status::timeout, closing.wait_for(100ms));
  printer->Locked([](State& state) { state.holdsLists = false; });
  closing.get();
  EXPECT_EQ(1u, printer->References());
}

TEST_F(PrintFlowTest, AThousandJobsLeaveNothingBehind) {
  PrinterUnderTest printer;
  { PrintClient(printer).Send("first", 2); }
  const int handles = CountHandles();
  for (int i = 0; i < 1000; ++i) {
    PrintClient client(printer);
    ASSERT_EQ("ok", i % 4 == 0 ? client.Send("%PDF", 2) : client.Print("%PDF")) << i;
    if (i % 10 == 0) {
      ASSERT_EQ("ok", client.Begin("half")) << i;
    }
    if (i % 100 != 0) continue;
    printer->Locked([](State& state) {
      state.jobs.erase(state.jobs.begin(), std::prev(state.jobs.end()));
      state.asked.clear();
    });
  }
  EXPECT_LE(CountHandles(), handles + 20);
}

TEST_F(PrintFlowTest, TracesWhatBecameOfAJob) {
  const auto exits = [](const wchar_t* operation, const wchar_t* code) {
    return std::wstring(operation) + L" exits with result 0x" + code;
  };
  const struct {
    const char* name;
    bool chunked;
    Script script;
    std::vector<std::wstring> expected;
  } cases[] = {
      {"going on",
       false,
       [](State& s) { s.whenWhole = Printer::kProcessing; },
       {exits(L"PrintJob", L"00000000")}},
      {"completed",
       false,
       [](State&) {},
       {L"GetJobs fails - not completed job", exits(L"PrintJob", L"00000000")}},
      {"not listed",
       false,
       [](State& s) { s.showsNewJobs = false; },
       {L"GetJobs fails - not completed job", L"GetJobs fails again - not completed job",
        L"GetJobs fails again - completed job", exits(L"PrintJob", L"00000000")}},
      {"cancelled",
       false,
       [](State& s) { s.endAt = 1; },
       {L"server-error-job-canceled", L"hr is set to S_DEVICECANCELED",
        exits(L"PrintJob", L"902A010A")}},
      {"refused",
       false,
       [](State& s) { s.status = Printer::kRefusal; },
       {L"Failed: some error occured IPP status code=1280", exits(L"PrintJob", L"80004005")}},
      {"busy",
       true,
       [](State& s) { s.busy = 1; },
       {L"server-error-busy..Please restart the job", exits(L"PrintJobWrite", L"80004005")}},
      {"dropped",
       true,
       [](State& s) { s.dropAt = 2; },
       {L"Failed while sending chunk data", L"GetJobs fails - not completed job",
        exits(L"PrintJobWrite", L"80004005")}},
      {"lost",
       true,
       [](State& s) { s.losesAnswers = true; },
       {L"Failed while sending last chunk data", L"httpBase->GetResponse() failed try GetJobs",
        L"GetJobs fails - not completed job"}},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.name);
    PrinterUnderTest printer;
    PrintClient client(printer);
    printer->Locked(test.script);
    const TraceRecorder recorder(kTraceInfo);
    test.chunked ? client.Send("12", 1) : client.Print("12");
    std::vector<std::wstring> messages;
    for (const auto& line : recorder.Lines()) {
      if (line.kind == TraceKind::kMessage &&
          line.function.find(L"::PrintJob") != line.function.npos) {
        messages.push_back(line.message);
      }
    }
    if (test.chunked) {
      ASSERT_FALSE(messages.empty());
      EXPECT_EQ(exits(L"PrintJob", L"00000000"), messages.front());
      messages.erase(messages.begin());
      std::erase(messages, exits(L"PrintJobWrite", L"00000000"));
    }
    EXPECT_EQ(test.expected, messages);
  }
}

}  // namespace
}  // namespace Corvane::Test
