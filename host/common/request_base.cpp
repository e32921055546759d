#include "host/common/request_base.h"

#include <limits>

#include "base/exception_wall.h"
#include "base/letter_case.h"
#include "base/utf8.h"

namespace Corvane::Host {
namespace {}  // namespace

RequestBase::RequestBase(std::shared_ptr<LastFailure> lastFailure)
    : m_lastFailure(std::move(lastFailure)) {}

void RequestBase::SetURI(const wchar_t* path) { Set(&m_settings.uri, path); }
void RequestBase::SetUserName(const wchar_t* userName) { Set(&m_settings.userName, userName); }
void RequestBase::SetPassword(const wchar_t* password) { Set(&m_settings.password, password); }
void RequestBase::SetMethod(const wchar_t* verb) { Set(&m_settings.verb, verb); }
void RequestBase::SetContentType(const wchar_t* type) { Set(&m_settings.contentType, type); }

void RequestBase::Set(std::wstring* setting, const wchar_t* text) noexcept {
  m_settingsError = BehindWall(kErrorOutOfMemory, [&] {
    *setting = OrEmpty(text);
    return m_settingsError;
  });
}

void RequestBase::AddHeader(const wchar_t* name, const wchar_t* value) {
  if (EqualsIgnoreAsciiCase(OrEmpty(name), L"content-type")) return SetContentType(value);
  m_settingsError = BehindWall(kErrorOutOfMemory, [&] {
    m_settings.headers.emplace_back(OrEmpty(name), OrEmpty(value));
    return m_settingsError;
  });
}

void RequestBase::ReplaceHeader(const wchar_t* name, const wchar_t* value) {
  std::erase_if(m_settings.headers, [name](const auto& header) {
    return EqualsIgnoreAsciiCase(header.first, OrEmpty(name));
  });
  AddHeader(name, value);
}

void RequestBase::SetTimeoutOrHost(std::uintptr_t option, const std::wstring& hostText) {
  const bool isHost = option == reinterpret_cast<std::uintptr_t>(hostText.c_str());
  if (isHost || option > std::numeric_limits<std::uint32_t>::max()) return;
  m_settings.timeoutMs = static_cast<std::uint32_t>(option);
}

void RequestBase::SetRequestData(const void* data, std::uint32_t size) {
  m_body.clear();
  m_settings.body = {};
  if (size == 0) return;
  if (!data) {
    m_settingsError = kErrorInvalidParameter;
    return;
  }
  m_settingsError = BehindWall(kErrorOutOfMemory, [&] {
    m_settings.body = m_body.assign(static_cast<const char*>(data), size);
    return m_settingsError;
  });
}

HRESULT RequestBase::GetResponse(HTTPResponse** response) {
  if (!response) return E_POINTER;
  *response = nullptr;
  if (!m_outcome) Conclude(PerformOnce());
  Outcome outcome = *std::exchange(m_outcome, std::nullopt);
  m_error = outcome.error;
  if (m_error != 0) return ResultFromError(m_error);
  m_response = std::move(outcome.response);
  *response = m_response.get();
  return S_OK;
}

Outcome RequestBase::Begin() {
  // The response of the first exchange lives as long as the request, so there is no second.
  if (m_performed) return {nullptr, kErrorOutOfOrder, L"a request serves one exchange"};
  m_performed = true;
  if (m_settingsError != 0) return {nullptr, m_settingsError, L"a setting cannot be used"};
  if (m_cancelled.load()) return {nullptr, kErrorCancelled, L"cancelled"};
  return {};
}

Outcome RequestBase::PerformOnce() noexcept {
  return Guarded([this] {
    Outcome outcome = Begin();
    if (outcome.error == 0) outcome = Perform(m_settings);
    if (!outcome.response && outcome.error == 0) outcome.error = kErrorInternal;
    return outcome;
  });
}

void RequestBase::Conclude(Outcome outcome) noexcept {
  m_error = outcome.error;
  // Without memory for words the code that GetResponse returns has to do.
  BehindWall(false, [&] {
    m_lastFailure->Set(Sentence(outcome));
    return true;
  });
  m_outcome = std::move(outcome);
}

std::wstring RequestBase::Sentence(const Outcome& outcome) const {
  const std::uint32_t status = outcome.response ? outcome.response->GetStatusCode() : 0;
  std::wstring sentence;
  if (status != kHttpOk) {
    sentence = m_settings.verb + L' ' + Describe(m_settings) + L": ";
    if (status != 0) {
      sentence += L"HTTP status " + std::to_wstring(status);
      if (!outcome.remark.empty()) sentence += L" (" + outcome.remark + L')';
    } else if (outcome.remark.empty()) {
      sentence += L"error " + std::to_wstring(outcome.error);
    } else {
      sentence += outcome.remark;
    }
  }
  return sentence;
}

}  // namespace Corvane::Host
