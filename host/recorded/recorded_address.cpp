#include "host/recorded/recorded_address.h"

#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "base/exception_wall.h"
#include "host/common/address_base.h"
#include "host/recorded/recorded_request.h"
#include "host/recorded/recording.h"

namespace Corvane::Host {
namespace {

class RecordedAddress final : public AddressBase {
 public:
  RecordedAddress(Recording recording, std::wstring displayName)
      : m_recording(std::make_shared<const Recording>(std::move(recording))),
        m_displayName(std::move(displayName)) {}
  const char* GetTypeName() override { return "Corvane::Host::RecordedAddress"; }

  const wchar_t* GetDisplayName() override { return m_displayName.c_str(); }
  const wchar_t* GetAddress() override { return L"recorded.invalid"; }  // RFC 2606, 2: no host
  std::uint32_t GetMappedPort(std::uint32_t port) override { return port; }
  void SetUserName(const wchar_t*) override {}
  void SetPassword(const wchar_t*) override {}
  HRESULT SetTimeouts(std::uint32_t connectMs, std::uint32_t totalMs) override {
    return connectMs == 0 || totalMs == 0 ? E_INVALIDARG : S_OK;
  }

 protected:
  HTTPRequest* MakeRequest(std::uint32_t port) override {
    return new RecordedRequest(m_recording, Failure(), port);
  }

 private:
  const std::shared_ptr<const Recording> m_recording;
  const std::wstring m_displayName;
};

// A folder's name on Linux may be no text.
std::wstring DisplayName(const std::filesystem::path& folder) {
  return BehindWall<std::wstring>(L"recorded device", [&] { return folder.wstring(); });
}

}  // namespace

Address* CreateRecordedAddress(const std::filesystem::path& folder) {
  return BehindWall<Address*>(nullptr, [&]() -> Address* {
    std::optional<Recording> recording = Recording::Open(folder);
    if (!recording) return nullptr;
    auto* const address = new RecordedAddress(*std::move(recording), DisplayName(folder));
    address->AddRef();
    return address;
  });
}

}  // namespace Corvane::Host
