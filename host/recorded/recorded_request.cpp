#include "host/recorded/recorded_request.h"

#include <utility>

#include "corvane/error_codes.h"
#include "host/common/buffered_response.h"

namespace Corvane::Host {
namespace {

constexpr std::uint32_t kOk = 200;
constexpr std::uint32_t kNotFound = 404;
constexpr std::uint32_t kMethodNotAllowed = 405;

Outcome RecordedStatus(std::uint32_t status, std::string body = {}) {
  return {std::make_unique<BufferedResponse>(status, BufferedResponse::Headers(), std::move(body)),
          0,
          {}};
}

}  // namespace

RecordedRequest::RecordedRequest(std::shared_ptr<const Recording> recording,
                                 std::shared_ptr<LastFailure> lastFailure, std::uint32_t port)
    : RequestBase(std::move(lastFailure)), m_recording(std::move(recording)), m_port(port) {}

std::wstring RecordedRequest::Describe(const RequestSettings& settings) const {
  return L"recorded port " + std::to_wstring(m_port) + L' ' + settings.uri;
}

Outcome RecordedRequest::Perform(const RequestSettings& settings) {
  if (settings.verb != L"GET" && settings.verb != L"POST") return RecordedStatus(kMethodNotAllowed);
  std::string body;
  switch (m_recording->Read(m_port, settings.uri, &body)) {
    case Recording::Result::kFound:
      return RecordedStatus(kOk, std::move(body));
    case Recording::Result::kMissing:
      return RecordedStatus(kNotFound);
    case Recording::Result::kTooLarge:
      return {nullptr, kErrorResponseTooLarge, L"the file is larger than 64 MB"};
    case Recording::Result::kUnreadable:
      break;
  }
  return {nullptr, kErrorReadFault, L"the file cannot be read"};
}

}  // namespace Corvane::Host
