#include "platform/linux/misc/text.h"

#include <climits>
#include <cwchar>

namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kMaxCodePoint = 0x10FFFF;

// ASCII runs are checked and copied a block at a time, in loops that the compiler vectorises.
constexpr std::size_t kBlock = 16;

bool IsAsciiBlock(const char* text) {
  std::uint64_t words[kBlock / sizeof(std::uint64_t)];
  std::memcpy(words, text, sizeof(words));
  return ((words[0] | words[1]) & 0x8080808080808080u) == 0;
}

bool IsAsciiBlock(const wchar_t* text) {
  std::uint32_t all = 0;
  for (std::size_t i = 0; i < kBlock; ++i) all |= static_cast<std::uint32_t>(text[i]);
  return all < 0x80;
}

std::size_t EncodedBytes(char32_t c) { return c < 0x80 ? 1 : c < 0x800 ? 2 : c < 0x10000 ? 3 : 4; }

// Where a conversion's output goes: nowhere but into a count, or into a buffer with an end. Each
// operation says whether there was room.
class WideCounter {
 public:
  bool Put(char32_t) { return ++m_size, true; }
  bool PutAsciiBlock(const char*) { return m_size += kBlock, true; }
  std::size_t Size() const { return m_size; }

 private:
  std::size_t m_size = 0;
};

class WideWriter {
 public:
  WideWriter(wchar_t* output, std::size_t size)
      : m_begin(output), m_next(output), m_end(output + size) {}

  bool Put(char32_t c) {
    if (m_next == m_end) return false;
    *m_next++ = static_cast<wchar_t>(c);
    return true;
  }

  bool PutAsciiBlock(const char* text) {
    if (static_cast<std::size_t>(m_end - m_next) < kBlock) return false;
    for (std::size_t i = 0; i < kBlock; ++i) m_next[i] = text[i];
    m_next += kBlock;
    return true;
  }

  std::size_t Size() const { return static_cast<std::size_t>(m_next - m_begin); }

 private:
  wchar_t* m_begin;
  wchar_t* m_next;
  wchar_t* m_end;
};

class ByteCounter {
 public:
  bool Put(char32_t c) { return m_size += EncodedBytes(c), true; }
  bool PutAsciiBlock(const wchar_t*) { return m_size += kBlock, true; }
  std::size_t Size() const { return m_size; }

 private:
  std::size_t m_size = 0;
};

class ByteWriter {
 public:
  ByteWriter(char* output, std::size_t size)
      : m_begin(output), m_next(output), m_end(output + size) {}

  bool Put(char32_t c) {
    const std::size_t bytes = EncodedBytes(c);
    if (static_cast<std::size_t>(m_end - m_next) < bytes) return false;
    if (bytes == 1) {
      *m_next++ = static_cast<char>(c);
      return true;
    }
    constexpr unsigned kLead[] = {0, 0, 0xC0, 0xE0, 0xF0};
    for (std::size_t i = bytes - 1; i > 0; --i, c >>= 6) {
      m_next[i] = static_cast<char>(0x80 | (c & 0x3F));
    }
    *m_next = static_cast<char>(kLead[bytes] | c);
    m_next += bytes;
    return true;
  }

  bool PutAsciiBlock(const wchar_t* text) {
    if (static_cast<std::size_t>(m_end - m_next) < kBlock) return false;
    for (std::size_t i = 0; i < kBlock; ++i) m_next[i] = static_cast<char>(text[i]);
    m_next += kBlock;
    return true;
  }

  std::size_t Size() const { return static_cast<std::size_t>(m_next - m_begin); }

 private:
  char* m_begin;
  char* m_next;
  char* m_end;
};

constexpr char32_t kIllFormed = 0xFFFFFFFF;

// Takes the character at `*next`, which is not ASCII. Of an ill-formed one it takes the lead byte
// and the continuation bytes up to where it went wrong, a second byte out of the lead's range
// included.
char32_t TakeMultiByte(const unsigned char** next, const unsigned char* end) {
  const unsigned lead = *(*next)++;
  if (lead < 0xC2 || lead > 0xF4) return kIllFormed;
  const int more = lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
  char32_t value = lead & (0x3Fu >> more);
  for (int i = 0; i < more; ++i) {
    if (*next == end || (**next & 0xC0) != 0x80) return kIllFormed;
    const unsigned byte = *(*next)++;
    if (i == 0) {
      // RFC 3629, section 4: no overlong forms, no surrogates, nothing above U+10FFFF.
      if ((lead == 0xE0 && byte < 0xA0) || (lead == 0xED && byte > 0x9F) ||
          (lead == 0xF0 && byte < 0x90) || (lead == 0xF4 && byte > 0x8F)) {
        return kIllFormed;
      }
    }
    value = (value << 6) | (byte & 0x3F);
  }
  return value;
}

// ERROR_SUCCESS, ERROR_INSUFFICIENT_BUFFER or ERROR_NO_UNICODE_TRANSLATION.
template <typename Sink>
DWORD Decode(const char* input, std::size_t bytes, bool strict, Sink* sink) {
  const char* next = input;
  const char* end = input + bytes;
  while (next != end) {
    if (static_cast<std::size_t>(end - next) >= kBlock && IsAsciiBlock(next) &&
        sink->PutAsciiBlock(next)) {
      next += kBlock;
      continue;
    }
    // One by one up to the next block, so that text of other scripts is not tested for ASCII at
    // every character.
    const char* stop = static_cast<std::size_t>(end - next) < kBlock ? end : next + kBlock;
    while (next < stop) {
      char32_t c = static_cast<unsigned char>(*next);
      if (c < 0x80) {
        ++next;
      } else {
        const unsigned char* raw = reinterpret_cast<const unsigned char*>(next);
        c = TakeMultiByte(&raw, reinterpret_cast<const unsigned char*>(end));
        next = reinterpret_cast<const char*>(raw);
        if (c == kIllFormed) {
          if (strict) return ERROR_NO_UNICODE_TRANSLATION;
          c = kReplacement;
        }
      }
      if (!sink->Put(c)) return ERROR_INSUFFICIENT_BUFFER;
    }
  }
  return ERROR_SUCCESS;
}

template <typename Sink>
DWORD Encode(const wchar_t* input, std::size_t chars, bool strict, Sink* sink) {
  const wchar_t* next = input;
  const wchar_t* end = input + chars;
  while (next != end) {
    if (static_cast<std::size_t>(end - next) >= kBlock && IsAsciiBlock(next) &&
        sink->PutAsciiBlock(next)) {
      next += kBlock;
      continue;
    }
    const wchar_t* stop = static_cast<std::size_t>(end - next) < kBlock ? end : next + kBlock;
    for (; next < stop; ++next) {
      char32_t c = static_cast<char32_t>(*next);
      if (c > kMaxCodePoint || (c >= 0xD800 && c <= 0xDFFF)) {
        if (strict) return ERROR_NO_UNICODE_TRANSLATION;
        c = kReplacement;
      }
      if (!sink->Put(c)) return ERROR_INSUFFICIENT_BUFFER;
    }
  }
  return ERROR_SUCCESS;
}

int Fail(DWORD code) {
  SetLastError(code);
  return 0;
}

int Finish(DWORD code, std::size_t size) {
  if (code != ERROR_SUCCESS) return Fail(code);
  return size > INT_MAX ? Fail(ERROR_INVALID_PARAMETER) : static_cast<int>(size);
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

}  // namespace

extern "C" {

int WINAPI MultiByteToWideChar(UINT codePage, DWORD flags, const char* input, int inputBytes,
                               wchar_t* output, int outputSize) {
  const DWORD wrong =
      CheckArguments(codePage, flags, MB_ERR_INVALID_CHARS, input, inputBytes, output, outputSize);
  if (wrong != ERROR_SUCCESS) return Fail(wrong);
  const std::size_t bytes =
      inputBytes < 0 ? std::strlen(input) + 1 : static_cast<std::size_t>(inputBytes);
  const bool strict = (flags & MB_ERR_INVALID_CHARS) != 0;
  if (outputSize == 0) {
    WideCounter counter;
    const DWORD code = Decode(input, bytes, strict, &counter);
    return Finish(code, counter.Size());
  }
  WideWriter writer(output, static_cast<std::size_t>(outputSize));
  const DWORD code = Decode(input, bytes, strict, &writer);
  return Finish(code, writer.Size());
}

int WINAPI WideCharToMultiByte(UINT codePage, DWORD flags, const wchar_t* input, int inputChars,
                               char* output, int outputSize, const char* defaultChar,
                               BOOL* usedDefaultChar) {
  const DWORD wrong =
      CheckArguments(codePage, flags, WC_ERR_INVALID_CHARS, input, inputChars, output, outputSize);
  if (wrong != ERROR_SUCCESS) return Fail(wrong);
  if (defaultChar != nullptr || usedDefaultChar != nullptr) return Fail(ERROR_INVALID_PARAMETER);
  const std::size_t chars =
      inputChars < 0 ? std::wcslen(input) + 1 : static_cast<std::size_t>(inputChars);
  const bool strict = (flags & WC_ERR_INVALID_CHARS) != 0;
  if (outputSize == 0) {
    ByteCounter counter;
    const DWORD code = Encode(input, chars, strict, &counter);
    return Finish(code, counter.Size());
  }
  ByteWriter writer(output, static_cast<std::size_t>(outputSize));
  const DWORD code = Encode(input, chars, strict, &writer);
  return Finish(code, writer.Size());
}

}  // extern "C"
