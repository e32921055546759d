// Numbers to text.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>

#include "platform/linux/automation/number_text.h"

namespace {

// Far more digits than are shown, so that a half is told from what only looks like one.
constexpr int kExactDigits = 41;

// A finite value's decimal digits, d.ddd × 10^exponent, without trailing zeros.
struct DecimalDigits {
  char digits[kExactDigits];
  int count;
  int exponent;
};

DecimalDigits RoundToDigits(double magnitude, int wanted) {
  char text[kExactDigits + 16];
  const std::to_chars_result end = std::to_chars(text, text + sizeof(text), magnitude,
                                                 std::chars_format::scientific, kExactDigits - 1);
  DecimalDigits result;
  result.digits[0] = text[0];
  std::copy_n(text + 2, kExactDigits - 1, result.digits + 1);  // behind the point
  const char* exponent = text + 2 + kExactDigits;              // behind the 'e'
  std::from_chars(*exponent == '+' ? exponent + 1 : exponent, end.ptr, result.exponent);
  const bool up = result.digits[wanted] >= '5';
  result.count = wanted;
  if (up) {
    int i = wanted - 1;
    while (i >= 0 && result.digits[i] == '9') result.digits[i--] = '0';
    if (i >= 0) {
      ++result.digits[i];
    } else {
      result.digits[0] = '1';
      ++result.exponent;
    }
  }
  while (result.count > 1 && result.digits[result.count - 1] == '0') --result.count;
  return result;
}

char* AppendFixed(const DecimalDigits& number, char* out) {
  const int integerDigits = number.exponent + 1;
  if (integerDigits <= 0) {
    *out++ = '0';
    *out++ = '.';
    out = std::fill_n(out, -integerDigits, '0');
    return std::copy_n(number.digits, number.count, out);
  }
  for (int i = 0; i < integerDigits; ++i) *out++ = i < number.count ? number.digits[i] : '0';
  if (number.count > integerDigits) {
    *out++ = '.';
    out = std::copy_n(number.digits + integerDigits, number.count - integerDigits, out);
  }
  return out;
}

char* AppendScientific(const DecimalDigits& number, char* out, char* end) {
  *out++ = number.digits[0];
  if (number.count > 1) {
    *out++ = '.';
    out = std::copy_n(number.digits + 1, number.count - 1, out);
  }
  *out++ = 'E';
  *out++ = number.exponent < 0 ? '-' : '+';
  const int exponent = std::abs(number.exponent);
  if (exponent < 10) *out++ = '0';
  return std::to_chars(out, end, exponent).ptr;
}

}  // namespace

std::string_view NumberFormatter::Signed(LONGLONG value) {
  return {m_text, std::to_chars(m_text, m_text + sizeof(m_text), value).ptr};
}

std::string_view NumberFormatter::Unsigned(ULONGLONG value) {
  return {m_text, std::to_chars(m_text, m_text + sizeof(m_text), value).ptr};
}

std::string_view NumberFormatter::Real(double value, int digits) {
  if (std::isnan(value)) return std::signbit(value) ? "-1.#IND" : "1.#QNAN";
  if (std::isinf(value)) return value < 0 ? "-1.#INF" : "1.#INF";
  if (value == 0) return "0";
  char* out = m_text;
  if (value < 0) *out++ = '-';
  const DecimalDigits number = RoundToDigits(std::fabs(value), digits);
  if (number.exponent < -4 || number.exponent >= digits) {
    out = AppendScientific(number, out, m_text + sizeof(m_text));
  } else {
    out = AppendFixed(number, out);
  }
  return {m_text, out};
}

std::string_view NumberFormatter::Currency(CY value) {
  constexpr ULONGLONG kUnit = 10'000;
  const ULONGLONG bits = static_cast<ULONGLONG>(value.int64);
  const ULONGLONG magnitude = value.int64 < 0 ? 0 - bits : bits;
  char* out = m_text;
  if (value.int64 < 0) *out++ = '-';
  out = std::to_chars(out, m_text + sizeof(m_text), magnitude / kUnit).ptr;
  ULONGLONG rest = magnitude % kUnit;
  if (rest != 0) *out++ = '.';
  for (ULONGLONG unit = kUnit / 10; rest != 0; unit /= 10) {
    *out++ = static_cast<char>('0' + rest / unit);
    rest %= unit;
  }
  return {m_text, out};
}
