#include "platform/linux/misc/uuid.h"

#include <sys/random.h>

#include <cstdlib>

namespace {

constexpr std::size_t kTextChars = 36;

char* AppendHex(char* out, std::uint32_t value, int digits) {
  for (int shift = (digits - 1) * 4; shift >= 0; shift -= 4) {
    *out++ = "0123456789abcdef"[(value >> shift) & 0xF];
  }
  return out;
}

}  // namespace

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
  char* result = static_cast<char*>(std::malloc(kTextChars + 1));
  if (result == nullptr) return RPC_S_OUT_OF_MEMORY;
  const UUID value = uuid == nullptr ? UUID{} : *uuid;
  char* out = AppendHex(result, value.Data1, 8);
  *out++ = '-';
  out = AppendHex(out, value.Data2, 4);
  *out++ = '-';
  out = AppendHex(out, value.Data3, 4);
  for (int i = 0; i < 8; ++i) {
    if (i == 0 || i == 2) *out++ = '-';
    out = AppendHex(out, value.Data4[i], 2);
  }
  *out = '\0';
  *text = reinterpret_cast<RPC_CSTR>(result);
  return RPC_S_OK;
}

RPC_STATUS WINAPI RpcStringFreeA(RPC_CSTR* text) {
  std::free(*text);
  *text = nullptr;
  return RPC_S_OK;
}

}  // extern "C"
