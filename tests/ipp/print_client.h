// A client that prints on a scripted printer, and what must be left when it has gone: nothing.
#ifndef CORVANE_TESTS_IPP_PRINT_CLIENT_H_
#define CORVANE_TESTS_IPP_PRINT_CLIENT_H_

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "corvane/handles.h"
#include "ipp/provider/ipp_provider_impl.h"
#include "tests/support/peers/scripted_printer.h"
#include "tests/support/process_counts.h"

namespace Corvane::Test {

using State = ScriptedPrinter::State;

class PrinterUnderTest {
 public:
  PrinterUnderTest() : m_printer(RefPtr<ScriptedPrinter>::Share(new ScriptedPrinter)) {}
  PrinterUnderTest(const PrinterUnderTest&) = delete;
  PrinterUnderTest& operator=(const PrinterUnderTest&) = delete;
  ~PrinterUnderTest() {
    EXPECT_EQ(1u, m_printer->References());
    m_printer->Locked([](const State& state) {
      EXPECT_EQ(0, state.openRequests);
      EXPECT_EQ("", state.faults);
    });
  }
  ScriptedPrinter* operator->() const { return m_printer.Get(); }
  ScriptedPrinter* Get() const { return m_printer.Get(); }
  std::string LatestDocument() const {
    return m_printer->Locked(
        [](State& state) { return state.jobs.empty() ? "no job" : state.Latest().document; });
  }
  int Count(int operation) const {
    return m_printer->Locked([=](const State& state) { return state.Count(operation); });
  }

 private:
  const RefPtr<ScriptedPrinter> m_printer;
};

// Outcomes are texts: "ok", "cancelled", "none" for 1, "failed" with the last error.
class PrintClient {
 public:
  explicit PrintClient(const PrinterUnderTest& printer, const char* job = "report",
                       const wchar_t* uri = L"ipp://h/ipp/print")
      : m_provider(RefPtr<IPPProviderImpl>::Adopt(IPPProviderImpl::Create2(printer.Get(), uri, 0))),
        m_request(RefPtr<IPPRequestBase>::Adopt(CreateIPPRequest())),
        m_response(RefPtr<IPPResponseBase>::Adopt(CreateIPPResponse())) {
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
  std::string CancelPrinting(IPPResponseBase* told = nullptr, std::uint32_t timeoutMs = 2000) {
    return Outcome(CancelPrintJob(m_provider.Get(), told, timeoutMs));
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
  // Small pieces, one after another, until the job has ended.
  std::string WriteOn() {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    std::string outcome = "ok";
    while (outcome == "ok" && std::chrono::steady_clock::now() < limit) {
      outcome = Write("and so on");
      std::this_thread::sleep_for(std::chrono::milliseconds(2));  // what a driver needs for them
    }
    return outcome;
  }

  static std::string Outcome(HRESULT result) {
    const DWORD error = GetLastError();
    if (result == S_OK) return "ok";
    if (result == S_FALSE) return "none";
    return result == S_DEVICECANCELED ? "cancelled"
           : result == E_FAIL         ? "failed " + std::to_string(error)
                                      : "unknown";
  }

 private:
  RefPtr<IPPProviderImpl> m_provider;
  const RefPtr<IPPRequestBase> m_request;
  const RefPtr<IPPResponseBase> m_response;
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
  // The cases, which have a `name` and the outcome `expected`, run side by side.
  template <typename Cases, typename Run>
  static void ForEachAtOnce(const Cases& cases, Run run) {
    std::vector<std::future<std::string>> outcomes;
    for (const auto& test : cases) {
      outcomes.push_back(std::async(std::launch::async, [&] {
        SCOPED_TRACE(test.name);
        return run(test);
      }));
    }
    auto outcome = outcomes.begin();
    for (const auto& test : cases) EXPECT_EQ(test.expected, (outcome++)->get()) << test.name;
  }

 private:
  const int m_threads = CountThreads();
};

}  // namespace Corvane::Test

#endif  // CORVANE_TESTS_IPP_PRINT_CLIENT_H_
