#include "platform/linux/misc/text.h"

#include <climits>
#include <cstring>
#include <cwchar>

#include "base/utf8.h"

namespace {

using Corvane::Conversion;
using Corvane::Malformed;

int RefuseText(DWORD code) {
  SetLastError(code);
  return 0;
}

// ERROR_SUCCESS, or what is wrong with the arguments that both directions have.
DWORD CheckArguments(UINT codePage, DWORD flags, DWORD strictFlag, const void* input, int length,
                     const void* output, int outputSize) {
  if (input == nullptr || length == 0 || outputSize < 0 || input == output ||
      (output == nullptr && outputSize != 0) || (codePage != CP_ACP && codePage != CP_UTF8)) {
    return ERROR_INVALID_PARAMETER;
  }
  return (flags & ~strictFlag) != 0 ? ERROR_INVALID_FLAGS : ERROR_SUCCESS;
}

template <typename From, typename To>
int TranslateText(std::basic_string_view<From> input, bool strict, To* output, int outputSize) {
  const Malformed policy = strict ? Malformed::kRefuse : Malformed::kReplace;
  const Conversion done =
      outputSize == 0
          ? Corvane::Measure(input, policy)
          : Corvane::Convert(input, policy, {output, static_cast<std::size_t>(outputSize)});
  if (done.malformed) return RefuseText(ERROR_NO_UNICODE_TRANSLATION);
  if (done.read < input.size()) return RefuseText(ERROR_INSUFFICIENT_BUFFER);
  return done.written > INT_MAX ? RefuseText(ERROR_INVALID_PARAMETER)
                                : static_cast<int>(done.written);
}

}  // namespace

extern "C" {

int WINAPI MultiByteToWideChar(UINT codePage, DWORD flags, const char* input, int inputBytes,
                               wchar_t* output, int outputSize) {
  const DWORD wrong =
      CheckArguments(codePage, flags, MB_ERR_INVALID_CHARS, input, inputBytes, output, outputSize);
  if (wrong != ERROR_SUCCESS) return RefuseText(wrong);
  const std::size_t bytes =
      inputBytes < 0 ? std::strlen(input) + 1 : static_cast<std::size_t>(inputBytes);
  return TranslateText(std::string_view(input, bytes), flags != 0, output, outputSize);
}

int WINAPI WideCharToMultiByte(UINT codePage, DWORD flags, const wchar_t* input, int inputChars,
                               char* output, int outputSize, const char* defaultChar,
                               BOOL* usedDefaultChar) {
  const DWORD wrong =
      CheckArguments(codePage, flags, WC_ERR_INVALID_CHARS, input, inputChars, output, outputSize);
  if (wrong != ERROR_SUCCESS) return RefuseText(wrong);
  if (defaultChar != nullptr || usedDefaultChar != nullptr)
    return RefuseText(ERROR_INVALID_PARAMETER);
  const std::size_t chars =
      inputChars < 0 ? std::wcslen(input) + 1 : static_cast<std::size_t>(inputChars);
  return TranslateText(std::wstring_view(input, chars), flags != 0, output, outputSize);
}

}  // extern "C"
