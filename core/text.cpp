#include "core/text.h"

#include <algorithm>
#include <limits>

#include "base/utf8.h"
#include "platform/system.h"

namespace Corvane {
namespace {

constexpr std::size_t kMaxConvertible = std::numeric_limits<int>::max();

}  // namespace

UniqueBstr BstrFromNarrow(std::string_view narrow) {
  if (narrow.empty() || narrow.size() > kMaxConvertible) return UniqueBstr::Make(L"");
  const int bytes = static_cast<int>(narrow.size());
  const int chars = MultiByteToWideChar(CP_ACP, 0, narrow.data(), bytes, nullptr, 0);
  UniqueBstr wide = UniqueBstr::MakeLength(static_cast<UINT>(std::max(chars, 0)));
  if (chars > 0) MultiByteToWideChar(CP_ACP, 0, narrow.data(), bytes, wide.Get(), chars);
  return wide;
}

std::string Narrow(std::wstring_view wide) {
  if (wide.empty() || wide.size() > kMaxConvertible) return {};
  const int chars = static_cast<int>(wide.size());
  const int bytes =
      WideCharToMultiByte(CP_ACP, 0, wide.data(), chars, nullptr, 0, nullptr, nullptr);
  std::string narrow(static_cast<std::size_t>(std::max(bytes, 0)), '\0');
  if (bytes > 0) {
    WideCharToMultiByte(CP_ACP, 0, wide.data(), chars, narrow.data(), bytes, nullptr, nullptr);
  }
  return narrow;
}

UniqueBstr BstrFromUtf8(std::string_view utf8) {
  if (utf8.size() > kMaxConvertible) return UniqueBstr::Make(L"");
  // Most texts fit, and are read once.
  wchar_t buffer[256];
  const Conversion done = Convert(utf8, Malformed::kReplace, buffer);
  std::wstring whole;
  if (done.read < utf8.size()) whole = ToWide(utf8);
  const std::wstring_view wide =
      whole.empty() ? std::wstring_view(buffer, done.written) : std::wstring_view(whole);
  UniqueBstr text = UniqueBstr::MakeLength(static_cast<UINT>(wide.size()));
  wide.copy(text.Get(), wide.size());
  return text;
}

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
