#include "platform/linux/misc/uuid.h"

#include <sys/random.h>

#include <cstdio>
#include <cstdlib>

extern "C" {

RPC_STATUS WINAPI UuidCreate(UUID* uuid) {
  // The kernel gives up to 256 bytes at once and without interruption.
  UUID random;
  if (getrandom(&random, sizeof(random), 0) != static_cast<ssize_t>(sizeof(random))) {
    return RPC_S_UUID_NO_ADDRESS;
  }
  // RFC 4122, section 4.4: version 4, variant 10x.
  random.Data3 = static_cast<std::uint16_t>((random.Data3 & 0x0FFF) | 0x4000);
  random.Data4[0] = static_cast<std::uint8_t>((random.Data4[0] & 0x3F) | 0x80);
  *uuid = random;
  return RPC_S_OK;
}

RPC_STATUS WINAPI UuidToStringA(const UUID* uuid, RPC_CSTR* text) {
  constexpr std::size_t kTextBytes = 36 + 1;
  char* result = static_cast<char*>(std::malloc(kTextBytes));
  if (result == nullptr) return RPC_S_OUT_OF_MEMORY;
  const UUID value = uuid == nullptr ? UUID{} : *uuid;
  const std::uint8_t* const end = value.Data4;
  std::snprintf(result, kTextBytes, "%08x-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x", value.Data1,
                value.Data2, value.Data3, end[0], end[1], end[2], end[3], end[4], end[5], end[6],
                end[7]);
  *text = reinterpret_cast<RPC_CSTR>(result);
  return RPC_S_OK;
}

RPC_STATUS WINAPI RpcStringFreeA(RPC_CSTR* text) {
  std::free(*text);
  *text = nullptr;
  return RPC_S_OK;
}

}  // extern "C"
