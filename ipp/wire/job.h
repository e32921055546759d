// What an answer tells of one job.
#ifndef CORVANE_IPP_WIRE_JOB_H_
#define CORVANE_IPP_WIRE_JOB_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "ipp/wire/message.h"

namespace Corvane {

// Texts in UTF-8, empty for what the printer did not tell; numbers in decimal as it told them.
struct IPPJob {
  std::string uri;
  std::string name;
  std::string user;     // whose it is
  std::string state;    // RFC 8011, 5.3.7
  std::string reasons;  // keywords, joined by ","
  std::optional<std::int32_t> id;
  // Seconds of the printer's own clock: when the job was made, and when it answered.
  std::optional<std::int32_t> createdAt;
  std::optional<std::int32_t> answeredAt;
};

// Of a job group each.
std::vector<IPPJob> JobsOf(const IPPMessage& answer);

}  // namespace Corvane

#endif  // CORVANE_IPP_WIRE_JOB_H_
