#include "core/text.h"

#include <algorithm>
#include <limits>

#include "platform/system.h"

namespace Corvane {
namespace {

constexpr std::size_t kMaxConvertible = std::numeric_limits<int>::max();

UniqueBstr Widen(UINT codePage, std::string_view narrow) {
  if (narrow.empty() || narrow.size() > kMaxConvertible) return UniqueBstr::Make(L"");
  const int bytes = static_cast<int>(narrow.size());
  const int chars = MultiByteToWideChar(codePage, 0, narrow.data(), bytes, nullptr, 0);
  UniqueBstr wide = UniqueBstr::MakeLength(static_cast<UINT>(std::max(chars, 0)));
  if (chars > 0) MultiByteToWideChar(codePage, 0, narrow.data(), bytes, wide.Get(), chars);
  return wide;
}

std::string Narrowed(UINT codePage, std::wstring_view wide) {
  if (wide.empty() || wide.size() > kMaxConvertible) return {};
  const int chars = static_cast<int>(wide.size());
  const int bytes =
      WideCharToMultiByte(codePage, 0, wide.data(), chars, nullptr, 0, nullptr, nullptr);
  std::string narrow(static_cast<std::size_t>(std::max(bytes, 0)), '\0');
  if (bytes > 0) {
    WideCharToMultiByte(codePage, 0, wide.data(), chars, narrow.data(), bytes, nullptr, nullptr);
  }
  return narrow;
}

}  // namespace

UniqueBstr BstrFromNarrow(std::string_view narrow) { return Widen(CP_ACP, narrow); }

UniqueBstr BstrFromUtf8(std::string_view utf8) { return Widen(CP_UTF8, utf8); }

std::string Narrow(std::wstring_view wide) { return Narrowed(CP_ACP, wide); }

std::string Utf8(std::wstring_view wide) { return Narrowed(CP_UTF8, wide); }

HRESULT CopyToBuffer(std::wstring_view text, wchar_t* buffer, std::uint32_t bufferSize,
                     std::uint32_t* requiredLength) {
  const std::size_t needed = text.size() + 1;
  *requiredLength = static_cast<std::uint32_t>(needed);
  if (!buffer || needed > bufferSize) return E_OUTOFMEMORY;
  std::copy(text.begin(), text.end(), buffer);
  buffer[text.size()] = L'\0';
  return S_OK;
}

}  // namespace Corvane
