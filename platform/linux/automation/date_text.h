// DATE (days since 1899-12-30, the time of day as a fraction that counts forward also before it) as
// text in the short US English form, "1/30/2001 1:02:03 PM".
#ifndef CORVANE_PLATFORM_LINUX_AUTOMATION_DATE_TEXT_H_
#define CORVANE_PLATFORM_LINUX_AUTOMATION_DATE_TEXT_H_

#include <string_view>

#include "corvane/linux/automation.h"

// Days of the first and the last date of the calendar: 100-01-01 and 9999-12-31.
constexpr DATE kFirstDate = -657434;
constexpr DATE kLastDate = 2958465;

// A day without a time shows the date only, a time on day 0 the time only.
class DateFormatter {
 public:
  // E_INVALIDARG: outside the calendar.
  HRESULT Format(DATE date, std::string_view* text);

 private:
  char m_text[40];
};

// M/D/YYYY or YYYY-MM-DD, a time H:MM or H:MM:SS with or without AM / PM, or both with a blank
// between. DISP_E_TYPEMISMATCH: anything else, and days or times that do not exist. NULL is no
// date.
HRESULT ParseDate(const wchar_t* text, DATE* date);

#endif  // CORVANE_PLATFORM_LINUX_AUTOMATION_DATE_TEXT_H_
