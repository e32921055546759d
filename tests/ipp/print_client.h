// A client that prints on a scripted printer, and what must be left when it has gone: nothing.
#ifndef CORVANE_TESTS_IPP_PRINT_CLIENT_H_
#define CORVANE_TESTS_IPP_PRINT_CLIENT_H_

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <future>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "corvane/handles.h"
#include "ipp/provider/ipp_provider_impl.h"
#include "tests/support/cases.h"
#include "tests/support/peers/scripted_printer.h"
#include "tests/support/process_counts.h"

namespace Corvane::Test {

using Printer = ScriptedPrinter;
using State = ScriptedPrinter::State;

inline constexpr wchar_t kPlain[] = L"ipp://h/ipp/print";
inline constexpr wchar_t kSecure[] = L"ipps://h/ipp/print";

class PrinterUnderTest {
 public:
  PrinterUnderTest() : m_printer(RefPtr<Printer>::Share(new Printer)) {}
  // As a case says: "printer" are its settings, "states" those, "jobs" what it has from before:
  // "user name state seconds", one behind the other.
  explicit PrinterUnderTest(const Case& c) : PrinterUnderTest() {
    m_printer->Locked([&](State& state) {
      state.Set(c.Text("printer"));
      state.states = c.Find("states").value_or(state.states);
      std::istringstream jobs(c.Text("jobs"));
      Printer::Job job;
      for (int age; jobs >> job.user >> job.name >> job.state >> age;) {
        job.createdAt = Printer::kUpTime - age;
        state.jobs[static_cast<int>(state.jobs.size()) + 1] = job;
      }
    });
  }
  PrinterUnderTest(const PrinterUnderTest&) = delete;
  PrinterUnderTest& operator=(const PrinterUnderTest&) = delete;
  ~PrinterUnderTest() {
    EXPECT_EQ(1u, m_printer->References());
    EXPECT_EQ(0, m_printer->Locked([](State& state) { return state.openRequests; }));
    EXPECT_EQ("", m_printer->faults);
  }
  Printer* operator->() const { return m_printer.Get(); }
  Printer* Get() const { return m_printer.Get(); }
  std::string LatestDocument() const {
    return m_printer->Locked(
        [](State& state) { return state.jobs.empty() ? "no job" : state.Latest().document; });
  }
  int Count(int operation) const {
    return m_printer->Locked([=](const State& state) { return state.Count(operation); });
  }
  // "1:9 2:7": each job and its state.
  std::string Jobs() const {
    return m_printer->Locked([](const State& state) {
      std::string jobs;
      for (const auto& [id, job] : state.jobs) {
        jobs += (jobs.empty() ? "" : " ") + std::to_string(id) + ':' + std::to_string(job.state);
      }
      return jobs;
    });
  }

 private:
  const RefPtr<Printer> m_printer;
};

// Outcomes are texts: "ok", "cancelled", "none" for 1, "failed" with the last error.
class PrintClient {
 public:
  explicit PrintClient(const PrinterUnderTest& printer, const char* job = "report",
                       const wchar_t* uri = kPlain)
      : m_provider(
            RefPtr<IPPProviderImpl>::Adopt(IPPProviderImpl::Create2(printer.Get(), uri, 0))) {
    if (!m_provider) throw std::runtime_error("no provider");
    m_request->SetRequestingUserName("anna");
    m_request->SetJobName(job);
  }

  IPPProviderImpl* operator->() const { return m_provider.Get(); }
  IPPRequestBase* Request() const { return m_request.Get(); }
  IPPResponseBase* Response() const { return m_response.Get(); }
  // As the printer told it.
  std::string Status() const {
    const char* const told = m_response->GetSuccessStatus();
    return told ? told : "none";
  }
  void Close() { m_provider.Reset(); }

  std::string Print(std::string_view document, bool chunked = false) {
    return Outcome(m_provider->PrintJob(Request(), Response(), document.data(),
                                        static_cast<std::int32_t>(document.size()), chunked));
  }
  std::string Begin(std::string_view piece) { return Print(piece, true); }
  std::string Write(std::string_view piece) {
    return Outcome(m_provider->PrintJobWrite(Request(), Response(), piece.data(),
                                             static_cast<std::int32_t>(piece.size())));
  }
  std::string End() { return Write({}); }
  std::string Cancel() { return Outcome(m_provider->CancelJob(Request(), Response())); }
  // While another thread prints; the job goes into `told`.
  std::string CancelPrinting(IPPResponseBase* told = nullptr) {
    return Outcome(CancelPrintJob(m_provider.Get(), told, 2000));
  }
  // In pieces, until one does not go.
  std::string Send(std::string_view document, std::size_t pieceSize) {
    std::string outcome = Begin(document.substr(0, pieceSize));
    for (std::size_t at = pieceSize; outcome == "ok"; at += pieceSize) {
      if (at >= document.size()) return End();
      outcome = Write(document.substr(at, pieceSize));
    }
    return outcome;
  }
  // Small pieces behind a first one, until the job has ended.
  std::string SendOn(std::string_view piece) {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    std::string outcome = piece.empty() ? "ok" : Begin(piece);
    while (outcome == "ok" && std::chrono::steady_clock::now() < limit) {
      outcome = Write("and so on");
      std::this_thread::sleep_for(std::chrono::milliseconds(20));  // what a driver needs for them
    }
    return outcome;
  }
  // The way that a case says.
  std::string Send(const Case& c, std::string_view document) {
    const std::string way = c.Text("way");
    return way == "whole"    ? Print(document)
           : way == "pieces" ? Send(document, document.size() / 2)
                             : SendOn(document);
  }

  static std::string Outcome(HRESULT result) {
    const DWORD error = GetLastError();
    if (result == S_OK) return "ok";
    if (result == S_FALSE) return "none";
    if (result == S_DEVICECANCELED) return "cancelled";
    char text[32];
    std::snprintf(text, sizeof(text), error < kIPPNotOnDevice ? "failed %u" : "failed 0x%X",
                  static_cast<unsigned>(error));
    return result == E_FAIL ? text : "unknown";
  }

 private:
  RefPtr<IPPProviderImpl> m_provider;
  const RefPtr<IPPRequestBase> m_request = RefPtr<IPPRequestBase>::Adopt(CreateIPPRequest());
  const RefPtr<IPPResponseBase> m_response = RefPtr<IPPResponseBase>::Adopt(CreateIPPResponse());
};

// Ends with as many threads as it began with.
class PrintFlowTest : public ::testing::Test {
 protected:
  // Threads that a sanitizer, and the test library for a thread that uses it so, keep from then on.
  static void SetUpTestSuite() {
    SCOPED_TRACE("");
    std::thread([] {}).join();
  }
  ~PrintFlowTest() override {
    // One that has been joined is seen a moment longer.
    for (int tries = 0; CountThreads() > m_threads && tries < 500; ++tries) {
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    EXPECT_EQ(m_threads, CountThreads());
  }
  // The cases of a file, side by side; each gives its outcome.
  template <typename Run>
  static void ForEachAtOnce(const std::string& file, Run run) {
    const std::vector<Case> cases = ReadCases(file);
    std::vector<std::future<std::string>> outcomes;
    for (const Case& c : cases) {
      outcomes.push_back(std::async(std::launch::async, [&] {
        SCOPED_TRACE(c.Where());
        try {
          return run(c);
        } catch (const std::exception& failure) {
          return std::string(failure.what());
        }
      }));
    }
    for (std::size_t i = 0; i < cases.size(); ++i) {
      EXPECT_EQ(cases[i].Text("outcome"), outcomes[i].get()) << cases[i].Where();
    }
  }

 private:
  const int m_threads = CountThreads();
};

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_IPP_PRINT_CLIENT_H_
