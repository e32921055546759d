#include "tests/support/peers/scripted_printer.h"

#include <algorithm>
#include <sstream>

#include "corvane/error_codes.h"
#include "ipp/wire/codes.h"
#include "ipp/wire/message.h"
#include "ipp/wire/writer.h"
#include "tests/support/ipp_bytes.h"

namespace Corvane::Test {
namespace {

using State = ScriptedPrinter::State;
using Job = ScriptedPrinter::Job;
using Answer = FakeDevice::Answer;

constexpr int kNever = 0x7FFFFFFF;
constexpr int kRefusal = 0x0500;   // server-error-internal-error
constexpr int kNotFound = 0x0406;  // client-error-not-found
constexpr char kJobUri[] = "ipp://printer/jobs/";

std::string JobGroup(int id, const Job& job, int upTime) {
  using namespace IPPTag;
  const char* const reasons =
      job.state == ScriptedPrinter::kCancelled ? "job-canceled-at-device" : "none";
  return IppGroup(kJobAttributes) + IppNumber(kInteger, "job-id", id) +
         IppValue(kUri, "job-uri", kJobUri + std::to_string(id)) +
         IppValue(kName, "job-name", job.name) +
         IppValue(kName, "job-originating-user-name", job.user) +
         IppNumber(kEnum, "job-state", job.state) +
         IppValue(kKeyword, "job-state-reasons", reasons) +
         IppNumber(kInteger, "time-at-creation", job.createdAt) +
         IppNumber(kInteger, "job-printer-up-time", upTime);
}

Answer Failure(std::uint32_t error, HRESULT result = E_FAIL) {
  return {"", 0, result, true, true, error};
}

}  // namespace

const ScriptedPrinter::Settings ScriptedPrinter::kSettings = {
    {"listsJobs", 1},   // else such a request fails
    {"holdsLists", 0},  // they wait until this ends
    {"showsNewJobs", 1},
    {"cancels", 1},  // else Cancel-Job is refused
    // Of the answers to operations with jobs, but lists.
    {"busy", 0},  // so many documents are refused first
    {"status", 0},
    {"http", 200},
    {"losesAnswers", 0},
    {"whenWhole", kCompleted},  // what becomes of a job whose document is whole
    // How many bytes of a document there are when something happens to it.
    {"dropAt", kNever},
    {"silentAt", kNever},
    {"silenceMs", 300},
    {"endAt", kNever},  // the panel's doing
    {"endState", kCancelled},
    {"earlyAt", kNever}};  // `http` and `status` come before the rest is sent

// All with the printer's lock held.
class ScriptedPrinter::Exchange final : public FakeDevice::Exchange {
 public:
  explicit Exchange(ScriptedPrinter* printer) : m_printer(*printer), m_state(printer->m_state) {
    m_printer.Locked([](State& state) { ++state.openRequests; });
  }
  ~Exchange() override {
    m_printer.Locked([this](State& state) {
      --state.openRequests;
      if (m_job && !m_isAnswered) Abort();
    });
  }

  bool Take(const Head& head, std::string_view bytes) override {
    std::unique_lock lock(m_printer.m_mutex);
    if (m_asked.operation == 0 && !Read(head, &bytes)) return true;
    if (m_asked.operation != IPPOperation::kPrintJob) return true;
    if (!m_job) BeginJob();
    m_job->document += bytes;
    m_printer.m_changed.notify_all();
    const int size = static_cast<int>(m_job->document.size());
    if (size >= Setting("endAt")) m_job->state = Setting("endState");
    if (size >= Setting("dropAt")) {
      Abort();
      return End(Failure(kErrorConnection));
    }
    if (size >= Setting("silentAt")) {
      const std::chrono::milliseconds silence(Setting("silenceMs"));
      m_printer.m_changed.wait_for(lock, silence, [this] { return m_state.isOver; });
      return End(Failure(kErrorTimeout));
    }
    if (size < Setting("earlyAt")) {
      m_isAnswered = head.isWhole;  // nobody sees it taken and not answered
      if (m_isAnswered) FinishDocument();
      return true;
    }
    FinishDocument();
    m_answer.error = m_answer.status;
    return End(m_answer);
  }

  Answer Finish(const Head&) override {
    std::unique_lock lock(m_printer.m_mutex);
    if (m_isAnswered) return m_answer;
    m_isAnswered = true;
    if (!m_job) Note();  // under the lock that its answer is made under
    switch (m_asked.operation) {
      case IPPOperation::kPrintJob:
        FinishDocument();
        break;
      case IPPOperation::kGetPrinterAttributes:
        AnswerOfPrinter();
        break;
      case IPPOperation::kGetJobs:
        m_printer.m_changed.wait(lock, [&] { return !Setting("holdsLists") || m_state.isOver; });
        m_answer = Setting("listsJobs") ? Answer{LibraryAnswer(0, ListedJobs())}
                                        : Failure(kErrorCannotConnect);
        break;
      case IPPOperation::kCancelJob:
      case IPPOperation::kGetJobAttributes:
        AnswerOfJob();
        break;
      case 0:
        m_answer = Failure(kErrorConnection);
        break;
      default:
        Reply(Setting("status"));
    }
    return m_answer;
  }

 private:
  int& Setting(const char* name) { return m_state.settings.at(name); }
  bool End(const Answer& answer) {
    m_answer = answer;
    m_isAnswered = true;
    return false;
  }
  void Reply(int status, std::string_view groups = {}) {
    m_answer = {LibraryAnswer(status, groups), static_cast<std::uint32_t>(Setting("http"))};
  }
  void Abort() {
    if (m_job->state < kCancelled) m_job->state = kAborted;
  }

  // The request without its document, whose bytes stay in *rest; false while it is not whole.
  bool Read(const Head& head, std::string_view* rest) {
    IPPMessage message;
    m_begin += *rest;
    if (ReadIPPMessage(m_begin, &message) != IPPReading::kWhole) return false;
    m_asked = {message.Header().code, head, {}};
    for (const IPPAttribute& attribute : message.Attributes()) {
      for (const IPPValue& value : message.ValuesOf(attribute)) {
        m_asked.attributes.emplace(message.NameOf(attribute), message.BytesOf(value));
      }
    }
    *rest = std::string_view(m_begin).substr(message.End());
    return true;
  }

  void Note() {
    m_state.asked.push_back(m_asked);
    m_printer.m_changed.notify_all();
  }

  void AnswerOfPrinter() {
    std::string group =
        IppGroup(IPPTag::kPrinterAttributes) + IppValue(IPPTag::kName, "printer-name", "p");
    if (std::string& states = m_state.states; !states.empty()) {
      const std::string reasons = states.substr(2, states.find(';') - 2);
      group += IppNumber(IPPTag::kEnum, "printer-state", states[0] - '0') +
               IppValue(IPPTag::kKeyword, "printer-state-reasons", reasons);
      if (states.size() > reasons.size() + 2) states.erase(0, reasons.size() + 3);
    }
    m_answer = {LibraryAnswer(0, group)};
  }
  std::string ListedJobs() {
    const bool ended = m_asked.attributes["which-jobs"] == "completed";
    std::string list;
    for (const auto& [id, job] : m_state.jobs) {
      if (job.listed && ended == (job.state >= kCancelled)) list += Group(id);
    }
    return list;
  }
  std::string Group(int id) { return JobGroup(id, m_state.jobs[id], m_printer.UpTime()); }
  void AnswerOfJob() {
    for (auto& [id, job] : m_state.jobs) {
      const bool isMeant = m_asked.attributes["job-uri"] == kJobUri + std::to_string(id) ||
                           m_asked.attributes["job-id"] == BigEndian({id});
      if (!isMeant) continue;
      if (m_asked.operation == IPPOperation::kCancelJob) {
        if (!Setting("cancels")) return Reply(kRefusal);
        job.state = kCancelled;
      }
      return Reply(0, Group(id));
    }
    Reply(kNotFound);
  }

  void BeginJob() {
    Note();
    m_id = m_state.jobs.empty() ? 1 : m_state.jobs.rbegin()->first + 1;
    m_job = &m_state.jobs[m_id];
    *m_job = {m_asked.attributes["requesting-user-name"], m_asked.attributes["job-name"],
              kProcessing, m_printer.UpTime(), Setting("showsNewJobs") != 0};
  }
  void FinishDocument() {
    int status = Setting("status");
    if (Setting("busy") > 0) {
      --Setting("busy");
      status = IPPStatus::kServerErrorBusy;
    } else if (m_job->state == kCancelled) {
      status = IPPStatus::kServerErrorJobCanceled;
    }
    const bool isTaken = Setting("http") == 200 && status <= IPPStatus::kLastSuccess;
    if (!isTaken) Abort();
    if (m_job->state < kCancelled) m_job->state = Setting("whenWhole");
    Reply(status, isTaken ? Group(m_id) : "");
    if (Setting("losesAnswers")) m_answer = Failure(kErrorInvalidResponse, kAnswerLost);
    m_printer.m_changed.notify_all();
  }

  ScriptedPrinter& m_printer;
  State& m_state;
  std::string m_begin;  // of the body, as far as the request goes
  Asked m_asked{};
  int m_id = 0;
  Job* m_job = nullptr;  // the printer's, once the document has begun
  bool m_isAnswered = false;
  Answer m_answer;
};

void State::Set(const std::string& numbers) {
  std::istringstream each(numbers);
  for (std::string setting; each >> setting;) {
    const std::size_t equals = setting.find('=');
    settings.at(setting.substr(0, equals)) = std::stoi(setting.substr(equals + 1), nullptr, 0);
  }
}

int State::Count(int operation) const {
  return static_cast<int>(std::count_if(
      asked.begin(), asked.end(), [=](const Asked& each) { return each.operation == operation; }));
}

std::unique_ptr<FakeDevice::Exchange> ScriptedPrinter::Begin() {
  return std::make_unique<Exchange>(this);
}

int ScriptedPrinter::UpTime() const {
  return kUpTime + static_cast<int>(std::chrono::duration_cast<std::chrono::seconds>(
                                        std::chrono::steady_clock::now() - m_switchedOn)
                                        .count());
}

}  // namespace Corvane::Test
