// How a request's limits of time are told to people; milliseconds.
#ifndef CORVANE_HOST_HTTP_TIME_REMARKS_H_
#define CORVANE_HOST_HTTP_TIME_REMARKS_H_

#include <cstdint>
#include <string>

namespace Corvane::Host {

inline std::wstring NothingTaken(std::int64_t limit) {
  return L"the device took nothing for " + std::to_wstring(limit) + L" ms";
}
inline std::wstring Silent(std::int64_t limit) {
  return L"the device was silent for " + std::to_wstring(limit) + L" ms";
}
inline std::wstring NoWholeResponse(std::int64_t limit) {
  return L"no whole response within " + std::to_wstring(limit) + L" ms";
}

}  // namespace Corvane::Host

#endif  // CORVANE_HOST_HTTP_TIME_REMARKS_H_
