// Text to numbers.
#include <algorithm>
#include <charconv>
#include <climits>

#include "platform/linux/automation/number_text.h"

namespace {

// Exponents beyond this are as good as infinite; it keeps the sums below far from overflow.
constexpr int kMaxExponent = 100'000;

bool IsBlank(wchar_t c) {
  return (c >= 0x09 && c <= 0x0D) || c == 0x20 || c == 0x85 || c == 0xA0 || c == 0x1680 ||
         (c >= 0x2000 && c <= 0x200A) || c == 0x2028 || c == 0x2029 || c == 0x202F || c == 0x205F ||
         c == 0x3000;
}

bool IsDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }

// Value of a hexadecimal digit, or 16.
unsigned DigitValue(wchar_t c) {
  if (IsDigit(c)) return static_cast<unsigned>(c - L'0');
  if (c >= L'a' && c <= L'f') return static_cast<unsigned>(c - L'a') + 10;
  if (c >= L'A' && c <= L'F') return static_cast<unsigned>(c - L'A') + 10;
  return 16;
}

class Parser {
 public:
  Parser(const wchar_t* text, NumberText* number) : m_next(text), m_number(*number) {}

  HRESULT Run() {
    ReadLeading();
    if (*m_next == L'&') {
      const HRESULT result = ReadBits();
      if (FAILED(result)) return result;
    } else if (!ReadMantissa() || !ReadExponent()) {
      return DISP_E_TYPEMISMATCH;
    }
    ReadTrailing();
    if (*m_next != L'\0' || m_parenthesis != m_closed) return DISP_E_TYPEMISMATCH;
    return S_OK;
  }

 private:
  bool Take(wchar_t c) {
    if (*m_next != c) return false;
    ++m_next;
    return true;
  }

  bool TakeOnce(wchar_t c, bool* taken) {
    if (*taken) return false;
    *taken = Take(c);
    return *taken;
  }

  bool TakeBlankOrSign() {
    if (IsBlank(*m_next)) return ++m_next, true;
    if (TakeOnce(L'-', &m_minus)) return m_number.negative = true;
    return TakeOnce(L'+', &m_plus);
  }

  // Blanks, and one each of the signs, "(" and "$", in any order.
  void ReadLeading() {
    while (TakeBlankOrSign() || TakeOnce(L'$', &m_currency) || TakeOnce(L'(', &m_parenthesis)) {
    }
    m_number.negative = m_number.negative || m_parenthesis;
  }

  void ReadTrailing() {
    bool currency = false;
    while (TakeBlankOrSign() || TakeOnce(L'$', &currency) ||
           (m_parenthesis && TakeOnce(L')', &m_closed))) {
    }
  }

  // &H1F or &O17.
  HRESULT ReadBits() {
    ++m_next;
    unsigned base = 0;
    if (Take(L'H') || Take(L'h')) base = 16;
    if (base == 0 && (Take(L'O') || Take(L'o'))) base = 8;
    if (base == 0 || DigitValue(*m_next) >= base) return DISP_E_TYPEMISMATCH;
    m_number.isBits = true;
    for (; DigitValue(*m_next) < base; ++m_next) {
      if (m_number.bits > (ULLONG_MAX >> (base == 16 ? 4 : 3))) return DISP_E_OVERFLOW;
      m_number.bits = m_number.bits * base + DigitValue(*m_next);
    }
    return S_OK;
  }

  void AddDigit(char digit, bool fraction) {
    if (m_number.digitCount == 0 && digit == '0') {
      if (fraction) ExtendExponent(-1);
      return;
    }
    if (m_number.digitCount < NumberText::kMaxDigits) {
      m_number.digits[m_number.digitCount++] = digit;
      if (fraction) ExtendExponent(-1);
      return;
    }
    m_droppedNonZero = m_droppedNonZero || digit != '0';
    if (!fraction) ExtendExponent(1);
  }

  void ExtendExponent(int by) {
    m_number.exponent = std::clamp(m_number.exponent + by, -kMaxExponent, kMaxExponent);
  }

  bool ReadMantissa() {
    bool any = false;
    bool fraction = false;
    for (;; ++m_next) {
      if (IsDigit(*m_next)) {
        any = true;
        AddDigit(static_cast<char>('0' + DigitValue(*m_next)), fraction);
      } else if (*m_next == L'.' && !fraction) {
        fraction = true;
      } else if (*m_next != L',' || !any) {
        break;
      }
    }
    if (m_droppedNonZero) {
      m_number.digits[m_number.digitCount++] = '1';
      ExtendExponent(-1);
    }
    return any;
  }

  bool ReadExponent() {
    if (!Take(L'e') && !Take(L'E')) return true;
    const bool negative = Take(L'-');
    if (!negative) Take(L'+');
    if (!IsDigit(*m_next)) return false;
    int exponent = 0;
    for (; IsDigit(*m_next); ++m_next) {
      exponent = std::min(exponent * 10 + static_cast<int>(DigitValue(*m_next)), kMaxExponent);
    }
    ExtendExponent(negative ? -exponent : exponent);
    return true;
  }

  const wchar_t* m_next;
  NumberText& m_number;
  bool m_plus = false;
  bool m_minus = false;
  bool m_currency = false;
  bool m_parenthesis = false;
  bool m_closed = false;
  bool m_droppedNonZero = false;
};

}  // namespace

HRESULT ParseNumber(const wchar_t* text, NumberText* number) {
  *number = {};
  return text == nullptr ? DISP_E_TYPEMISMATCH : Parser(text, number).Run();
}

HRESULT RoundMagnitude(const NumberText& number, int scale, ULONGLONG* magnitude) {
  constexpr int kMaxIntegerDigits = 20;  // of 64 bits
  ULONGLONG value = number.bits;
  if (number.isBits) {
    for (; scale > 0; --scale) {
      if (__builtin_mul_overflow(value, 10U, &value)) return DISP_E_OVERFLOW;
    }
    *magnitude = value;
    return S_OK;
  }
  const int point = number.digitCount + number.exponent + scale;  // digits before the point
  if (number.digitCount != 0 && point > kMaxIntegerDigits) return DISP_E_OVERFLOW;
  if (number.digitCount != 0 && point >= 0) {
    for (int i = 0; i < point; ++i) {
      const unsigned digit = i < number.digitCount ? DigitValue(number.digits[i]) : 0;
      if (__builtin_mul_overflow(value, 10U, &value) ||
          __builtin_add_overflow(value, digit, &value)) {
        return DISP_E_OVERFLOW;
      }
    }
    if (point < number.digitCount) {
      const char* rest = number.digits + point + 1;
      const char* end = number.digits + number.digitCount;
      const bool more = std::any_of(rest, end, [](char digit) { return digit != '0'; });
      const char first = number.digits[point];
      const bool up = first > '5' || (first == '5' && (more || value % 2 != 0));
      if (up && __builtin_add_overflow(value, 1U, &value)) return DISP_E_OVERFLOW;
    }
  }
  *magnitude = value;
  return S_OK;
}

HRESULT ToDouble(const NumberText& number, double* value) {
  if (number.isBits) {
    *value = static_cast<double>(number.bits);
  } else if (number.digitCount == 0) {
    *value = 0;
  } else {
    char text[NumberText::kMaxDigits + 16];
    char* end = std::copy_n(number.digits, number.digitCount, text);
    *end++ = 'e';
    end = std::to_chars(end, text + sizeof(text), number.exponent).ptr;
    if (std::from_chars(text, end, *value).ec != std::errc{}) {
      if (number.exponent + number.digitCount > 0) return DISP_E_OVERFLOW;
      *value = 0;
    }
  }
  if (number.negative) *value = -*value;
  return S_OK;
}
