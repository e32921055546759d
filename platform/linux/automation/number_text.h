// Numbers as text and back, as in US English whatever the process's locale.
#ifndef CORVANE_PLATFORM_LINUX_AUTOMATION_NUMBER_TEXT_H_
#define CORVANE_PLATFORM_LINUX_AUTOMATION_NUMBER_TEXT_H_

#include <string_view>

#include "corvane/linux/automation.h"

// A number as it was written: digits × 10^exponent, or the bits of a hexadecimal or octal one.
struct NumberText {
  // Digits kept. Any number of digits may be written: what follows is folded into one last digit,
  // which keeps "more than half" true.
  static constexpr int kMaxDigits = 64;

  bool negative = false;
  bool isBits = false;
  ULONGLONG bits = 0;
  char digits[kMaxDigits + 1] = {};  // '1' to '9' first; none for zero
  int digitCount = 0;
  int exponent = 0;
};

// DISP_E_TYPEMISMATCH when the NUL-terminated `text` is no number, DISP_E_OVERFLOW when more than
// 64 bits are written. NULL is no number.
HRESULT ParseNumber(const wchar_t* text, NumberText* number);

// |number × 10^scale|, halves rounded to even. DISP_E_OVERFLOW above 64 bits.
HRESULT RoundMagnitude(const NumberText& number, int scale, ULONGLONG* magnitude);

// The nearest double; too small is 0, too large DISP_E_OVERFLOW.
HRESULT ToDouble(const NumberText& number, double* value);

// Text of a number, without terminator.
class NumberFormatter {
 public:
  std::string_view Signed(LONGLONG value);
  std::string_view Unsigned(ULONGLONG value);
  // At most `digits` (up to 15) significant digits, halves away from zero; an exponent of at least
  // two digits from 1E+<digits> on and below 1E-04: "1E+15", "1E-05".
  std::string_view Real(double value, int digits);
  std::string_view Currency(CY value);  // up to four decimals: "-1.5"

 private:
  char m_text[48];
};

#endif  // CORVANE_PLATFORM_LINUX_AUTOMATION_NUMBER_TEXT_H_
