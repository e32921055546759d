// A request to a recorded device.
#ifndef CORVANE_HOST_RECORDED_RECORDED_REQUEST_H_
#define CORVANE_HOST_RECORDED_RECORDED_REQUEST_H_

#include <cstdint>
#include <memory>
#include <string>

#include "host/common/request_base.h"
#include "host/recorded/recording.h"

namespace Corvane::Host {

class RecordedRequest final : public RequestBase {
 public:
  RecordedRequest(std::shared_ptr<const Recording> recording,
                  std::shared_ptr<LastFailure> lastFailure, std::uint32_t port);
  const char* GetTypeName() override { return "Corvane::Host::RecordedRequest"; }

 protected:
  std::wstring Describe(const RequestSettings& settings) const override;
  Outcome Perform(const RequestSettings& settings) override;

 private:
  const std::shared_ptr<const Recording> m_recording;
  const std::uint32_t m_port;
};

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_RECORDED_RECORDED_REQUEST_H_
