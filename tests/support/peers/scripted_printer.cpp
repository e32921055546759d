#include "tests/support/peers/scripted_printer.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "corvane/handles.h"
#include "ipp/wire/codes.h"
#include "ipp/wire/message.h"
#include "ipp/wire/writer.h"

namespace Corvane::Test {
namespace {

using namespace std::string_literals;
using State = ScriptedPrinter::State;
using Job = ScriptedPrinter::Job;

constexpr int kNotFound = 0x0406;  // client-error-not-found
constexpr char kJobUri[] = "ipp://printer/jobs/";

std::string Answer(int status, std::string_view groups) {
  const auto header = MakeIPPHeader(status);
  std::string answer(header.begin(), header.end());
  return answer.append(groups) + static_cast<char>(IPPTag::kEndOfAttributes);
}

std::string JobGroup(int id, const Job& job, int upTime) {
  using namespace IPPTag;
  std::string group(1, kJobAttributes);
  AppendIPPValue(&group, kInteger, "job-id", BigEndian({id}));
  AppendIPPValue(&group, kUri, "job-uri", kJobUri + std::to_string(id));
  AppendIPPValue(&group, kName, "job-name", job.name);
  AppendIPPValue(&group, kName, "job-originating-user-name", job.user);
  AppendIPPValue(&group, kEnum, "job-state", BigEndian({job.state}));
  AppendIPPValue(&group, kKeyword, "job-state-reasons",
                 job.state == ScriptedPrinter::kCancelled ? "job-canceled-at-device" : "none");
  AppendIPPValue(&group, kInteger, "time-at-creation", BigEndian({job.createdAt}));
  AppendIPPValue(&group, kInteger, "job-printer-up-time", BigEndian({upTime}));
  return group;
}

// A request without its document, whose bytes stay in *rest.
std::optional<ScriptedPrinter::Asked> Decode(std::string_view* rest) {
  IPPMessage message;
  if (ReadIPPMessage(*rest, &message) != IPPReading::kWhole) return std::nullopt;
  ScriptedPrinter::Asked asked{message.Header().code, 0, false, {}};
  for (const IPPAttribute& attribute : message.Attributes()) {
    for (const IPPValue& value : message.ValuesOf(attribute)) {
      asked.attributes.emplace(message.NameOf(attribute), message.BytesOf(value));
    }
  }
  rest->remove_prefix(message.End());
  return asked;
}

// The content of a chunk whose framing is right (RFC 9112, 7.1); of the last one none.
std::optional<std::string_view> Unframed(std::string_view chunk) {
  const std::size_t digits =
      std::min(chunk.find_first_not_of("0123456789ABCDEFabcdef"), chunk.size());
  if (digits == 0 || digits > 8) return std::nullopt;
  const std::size_t size = std::stoul(std::string(chunk.substr(0, digits)), nullptr, 16);
  chunk.remove_prefix(digits);
  if (chunk.size() != size + 4 || !chunk.starts_with("\r\n") || !chunk.ends_with("\r\n")) {
    return std::nullopt;
  }
  return chunk.substr(2, size);
}

class ScriptedResponse final : public HTTPResponse {
 public:
  std::uint32_t status = kHttpOk;
  std::string body;

  std::uint32_t GetStatusCode() override { return status; }
  const wchar_t* GetHeader(const wchar_t*) override { return nullptr; }
  const wchar_t* GetContentType() override { return L"application/ipp"; }
  std::uint32_t GetContentLength() override { return static_cast<std::uint32_t>(body.size()); }
  const char* GetContent() override { return body.c_str(); }
};

}  // namespace

class ScriptedRequest final : public Counted<HTTPRequest>, public TqHTTPRequestEx {
 public:
  ScriptedRequest(ScriptedPrinter* printer, std::uint32_t port)
      : m_printer(RefPtr<ScriptedPrinter>::Share(printer)), m_port(port) {
    m_printer->Locked([](State& state) { ++state.openRequests; });
  }
  ~ScriptedRequest() override {
    m_printer->Locked([this](State& state) {
      --state.openRequests;
      if (m_job && m_phase == Phase::kSending) Abort();
    });
  }

  const wchar_t* GetURI() override { return L""; }
  void SetURI(const wchar_t*) override {}
  void SetUserName(const wchar_t*) override {}
  void SetPassword(const wchar_t*) override {}
  void SetMethod(const wchar_t*) override {}
  void AddHeader(const wchar_t* name, const wchar_t*) override {
    m_authorized = m_authorized || name == L"Authorization"s;
  }
  void SetHeader(const wchar_t* name, const wchar_t* value) override { AddHeader(name, value); }
  void SetContentType(const wchar_t*) override {}
  void SetRequestData(const void* data, std::uint32_t size) override {
    m_body.assign(static_cast<const char*>(data), size);
  }
  void SetOption(std::uint32_t) override {}
  void SetOption(std::uintptr_t) override {}
  void Cancel() override {}
  bool IsSending() override { return m_phase == Phase::kSending; }
  std::uint32_t GetLastError() override { return m_error; }
  std::uint64_t GetSentBytes() override { return 0; }
  void SetContentLength(std::uint32_t) override {}

  HRESULT GetResponse(HTTPResponse** response) override {
    std::unique_lock lock(m_printer->m_mutex);
    if (m_phase == Phase::kNew) {
      std::string_view body = m_body;
      if (Read(&body)) AnswerRequest(&lock);
    } else if (m_phase == Phase::kSending) {
      Fault("an answer to half a document");
    }
    m_phase = Phase::kOver;
    *response = m_result == S_OK ? &m_response : nullptr;
    return m_result;
  }

  void SendBody(const void* data, std::uint32_t size) override {
    std::unique_lock lock(m_printer->m_mutex);
    m_phase = Phase::kSending;
    if (Take({static_cast<const char*>(data), size}, &lock) == S_OK) FinishDocument();
    m_phase = Phase::kOver;
  }
  HRESULT BeginChunkedSend(std::uintptr_t) override {
    m_phase = Phase::kSending;
    return S_OK;
  }
  HRESULT WriteChunk(const void* data, std::uint32_t size, std::uintptr_t) override {
    std::unique_lock lock(m_printer->m_mutex);
    if (m_phase != Phase::kSending) return Fault("a chunk out of turn");
    const auto content = Unframed({static_cast<const char*>(data), size});
    if (!content || m_lastChunk) return Fault("a chunk that is none");
    m_lastChunk = content->empty();
    return m_lastChunk ? S_OK : Take(*content, &lock);
  }
  HRESULT FinishChunkedSend() override {
    const std::lock_guard lock(m_printer->m_mutex);
    if (m_phase != Phase::kSending || !m_lastChunk) return Fault("an end out of turn");
    FinishDocument();
    m_phase = Phase::kOver;
    return S_OK;
  }

 private:
  enum class Phase { kNew, kSending, kOver };

  // All below with the printer's lock held.
  State& Printer() { return m_printer->m_state; }

  HRESULT Fault(const char* what) {
    Printer().faults.append(what).append("\n");
    return Fail(1);
  }
  HRESULT Fail(std::uint32_t error, HRESULT result = E_FAIL) {
    m_error = error;
    m_phase = Phase::kOver;
    return m_result = result;
  }
  void Reply(int status, std::string_view groups) { m_response.body = Answer(status, groups); }
  void Abort() {
    if (m_job->state < ScriptedPrinter::kCancelled) m_job->state = ScriptedPrinter::kAborted;
  }

  bool Read(std::string_view* body) {
    auto asked = Decode(body);
    if (!asked) return Fault("no IPP request") == S_OK;
    asked->port = m_port;
    asked->authorized = m_authorized;
    Printer().asked.push_back(*asked);
    m_asked = std::move(*asked);
    m_printer->m_changed.notify_all();
    return true;
  }

  void AnswerRequest(std::unique_lock<std::mutex>* lock) {
    State& printer = Printer();
    if (m_asked.operation == IPPOperation::kGetPrinterAttributes) {
      const auto [state, reasons] = printer.printer.front();
      if (printer.printer.size() > 1) printer.printer.pop_front();
      std::string group(1, IPPTag::kPrinterAttributes);
      AppendIPPValue(&group, IPPTag::kName, "printer-name", "p");
      if (printer.tellsState) {
        AppendIPPValue(&group, IPPTag::kEnum, "printer-state", BigEndian({state}));
        AppendIPPValue(&group, IPPTag::kKeyword, "printer-state-reasons", reasons);
      }
      Reply(0, group);
    } else if (m_asked.operation == IPPOperation::kGetJobs) {
      m_printer->m_changed.wait(*lock, [&] { return !printer.holdsLists; });
      if (!printer.listsJobs) {
        Fail(ScriptedPrinter::kUnreachable);
        return;
      }
      Reply(0, ListedJobs());
    } else {
      m_response.status = printer.http;
      Reply(printer.status, {});
      if (m_asked.operation == IPPOperation::kCancelJob ||
          m_asked.operation == IPPOperation::kGetJobAttributes)
        AnswerOfJob();
    }
  }
  std::string ListedJobs() {
    const bool ended = m_asked.attributes["which-jobs"] == "completed";
    std::string list;
    for (const auto& [id, job] : Printer().jobs) {
      if (!job.listed || ended != (job.state >= ScriptedPrinter::kCancelled)) continue;
      list += JobGroup(id, job, m_printer->UpTime());
    }
    return list;
  }
  void AnswerOfJob() {
    for (auto& [id, job] : Printer().jobs) {
      if (m_asked.attributes["job-uri"] != kJobUri + std::to_string(id)) continue;
      if (m_asked.operation == IPPOperation::kCancelJob) {
        if (!Printer().cancels) return Reply(ScriptedPrinter::kRefusal, {});
        job.state = ScriptedPrinter::kCancelled;
      }
      Reply(0, JobGroup(id, job, m_printer->UpTime()));
      return;
    }
    Reply(kNotFound, {});
  }

  // The next bytes of a Print-Job request.
  HRESULT Take(std::string_view bytes, std::unique_lock<std::mutex>* lock) {
    State& printer = Printer();
    if (!m_job) {
      if (!Read(&bytes)) return E_FAIL;
      if (m_asked.operation != IPPOperation::kPrintJob)
        return Fault("a document with another operation");
      m_id = printer.jobs.empty() ? 1 : printer.jobs.rbegin()->first + 1;
      m_job = &printer.jobs[m_id];
      *m_job = {m_asked.attributes["requesting-user-name"], m_asked.attributes["job-name"],
                ScriptedPrinter::kProcessing, m_printer->UpTime(), printer.showsNewJobs};
    }
    m_job->document += bytes;
    m_printer->m_changed.notify_all();
    const std::size_t size = m_job->document.size();
    if (size >= printer.endAt) m_job->state = printer.endState;
    if (size >= printer.dropAt) {
      Abort();
      return Fail(ScriptedPrinter::kDropped);
    }
    if (size >= printer.silentAt) {
      m_printer->m_changed.wait_for(*lock, printer.silence, [] { return false; });
      return Fail(ScriptedPrinter::kTimeout);
    }
    if (size >= printer.earlyAt) {
      FinishDocument();
      m_error = printer.http;
      m_phase = Phase::kOver;
      return E_FAIL;
    }
    return S_OK;
  }
  void FinishDocument() {
    State& printer = Printer();
    m_response.status = printer.http;
    int status = printer.status;
    if (printer.busy > 0) {
      --printer.busy;
      status = IPPStatus::kServerErrorBusy;
    } else if (m_job->state == ScriptedPrinter::kCancelled) {
      status = IPPStatus::kServerErrorJobCanceled;
    }
    if (printer.http != kHttpOk || status > 0xFF) {
      Abort();
      Reply(status, {});
    } else {
      if (m_job->state < ScriptedPrinter::kCancelled) m_job->state = printer.whenWhole;
      Reply(status, JobGroup(m_id, *m_job, m_printer->UpTime()));
    }
    if (printer.losesAnswers) Fail(ScriptedPrinter::kNoAnswer, kAnswerLost);
    m_printer->m_changed.notify_all();
  }

  const RefPtr<ScriptedPrinter> m_printer;
  const std::uint32_t m_port;
  bool m_authorized = false;
  std::string m_body;
  ScriptedPrinter::Asked m_asked{};
  Phase m_phase = Phase::kNew;
  bool m_lastChunk = false;
  int m_id = 0;
  Job* m_job = nullptr;  // the printer's, once the document has begun
  HRESULT m_result = S_OK;
  std::uint32_t m_error = 0;
  ScriptedResponse m_response;
};

int ScriptedPrinter::State::Count(int operation) const {
  return static_cast<int>(std::count_if(
      asked.begin(), asked.end(), [=](const Asked& each) { return each.operation == operation; }));
}

HRESULT ScriptedPrinter::CreateIPPHTTPRequest(HTTPRequest** request, std::uint32_t port) {
  *request = RefPtr<HTTPRequest>::Share(new ScriptedRequest(this, port)).Release();
  return S_OK;
}

int ScriptedPrinter::UpTime() const {
  return kUpTime + static_cast<int>(std::chrono::duration_cast<std::chrono::seconds>(
                                        std::chrono::steady_clock::now() - m_switchedOn)
                                        .count());
}

}  // namespace Corvane::Test
