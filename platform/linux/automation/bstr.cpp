// BSTR: [32-bit byte count][characters][NUL]. A BSTR points at the characters.
#include <cstdlib>
#include <cwchar>

#include "corvane/linux/automation.h"

namespace {

using ByteCount = std::uint32_t;

// A BSTR of odd byte length ends inside a wide character: its rest must be zero too.
constexpr std::size_t kTerminatorBytes = 2 * sizeof(wchar_t) - 1;
// The whole block stays addressable by the 32-bit sizes that callers compute from it.
constexpr std::size_t kMaxTextBytes = UINT32_MAX - sizeof(ByteCount) - kTerminatorBytes;

// `bytes` of `text`, or zeros when it is NULL.
BSTR AllocateBstr(const void* text, std::size_t bytes) {
  if (bytes > kMaxTextBytes) return nullptr;
  char* block = static_cast<char*>(std::malloc(sizeof(ByteCount) + bytes + kTerminatorBytes));
  if (block == nullptr) return nullptr;
  const ByteCount count = static_cast<ByteCount>(bytes);
  std::memcpy(block, &count, sizeof(count));
  char* chars = block + sizeof(count);
  if (text != nullptr) {
    std::memcpy(chars, text, bytes);
  } else {
    std::memset(chars, 0, bytes);
  }
  std::memset(chars + bytes, 0, kTerminatorBytes);
  return reinterpret_cast<BSTR>(chars);
}

}  // namespace

extern "C" {

BSTR WINAPI SysAllocString(const OLECHAR* text) {
  return text == nullptr ? nullptr : AllocateBstr(text, std::wcslen(text) * sizeof(OLECHAR));
}

BSTR WINAPI SysAllocStringLen(const OLECHAR* text, UINT chars) {
  return AllocateBstr(text, std::size_t{chars} * sizeof(OLECHAR));
}

BSTR WINAPI SysAllocStringByteLen(const char* text, UINT bytes) {
  return AllocateBstr(text, bytes);
}

void WINAPI SysFreeString(BSTR text) {
  if (text != nullptr) std::free(reinterpret_cast<char*>(text) - sizeof(ByteCount));
}

UINT WINAPI SysStringByteLen(BSTR text) {
  if (text == nullptr) return 0;
  ByteCount count;
  std::memcpy(&count, reinterpret_cast<const char*>(text) - sizeof(count), sizeof(count));
  return count;
}

UINT WINAPI SysStringLen(BSTR text) {
  return SysStringByteLen(text) / static_cast<UINT>(sizeof(OLECHAR));
}

}  // extern "C"
