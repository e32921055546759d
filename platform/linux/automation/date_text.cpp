#include "platform/linux/automation/date_text.h"

#include <charconv>
#include <chrono>
#include <cmath>

namespace {

using std::chrono::year_month_day;

constexpr std::chrono::sys_days kDayZero{std::chrono::year{1899} / 12 / 30};
constexpr long kSecondsPerDay = 86'400;

char* AppendNumber(char* out, unsigned value, bool twoDigits) {
  if (twoDigits && value < 10) *out++ = '0';
  return std::to_chars(out, out + 8, value).ptr;
}

char* AppendDate(char* out, long day) {
  const year_month_day date{kDayZero + std::chrono::days{day}};
  out = AppendNumber(out, unsigned{date.month()}, false);
  *out++ = '/';
  out = AppendNumber(out, unsigned{date.day()}, false);
  *out++ = '/';
  return AppendNumber(out, static_cast<unsigned>(int{date.year()}), false);
}

char* AppendTime(char* out, long seconds) {
  const unsigned hour = static_cast<unsigned>(seconds / 3600);
  out = AppendNumber(out, hour % 12 == 0 ? 12 : hour % 12, false);
  *out++ = ':';
  out = AppendNumber(out, static_cast<unsigned>(seconds / 60 % 60), true);
  *out++ = ':';
  out = AppendNumber(out, static_cast<unsigned>(seconds % 60), true);
  *out++ = ' ';
  *out++ = hour < 12 ? 'A' : 'P';
  *out++ = 'M';
  return out;
}

class Reader {
 public:
  explicit Reader(const wchar_t* text) : m_next(text) {}

  bool AtEnd() const { return *m_next == L'\0'; }

  bool Take(wchar_t c) {
    if (*m_next != c) return false;
    ++m_next;
    return true;
  }

  // Between one and `maxDigits` digits.
  bool TakeNumber(int maxDigits, unsigned* value) {
    *value = 0;
    int count = 0;
    for (; count < maxDigits && *m_next >= L'0' && *m_next <= L'9'; ++count) {
      *value = *value * 10 + static_cast<unsigned>(*m_next++ - L'0');
    }
    return count != 0;
  }

  bool TakeLetter(wchar_t upper) { return Take(upper) || Take(static_cast<wchar_t>(upper + 32)); }

  void SkipBlanks() {
    while (Take(L' ')) {
    }
  }

 private:
  const wchar_t* m_next;
};

bool ReadDate(Reader* reader, long* day) {
  unsigned parts[3];
  if (!reader->TakeNumber(4, &parts[0])) return false;
  const bool isIso = reader->Take(L'-');
  if (!isIso && !reader->Take(L'/')) return false;
  if (!reader->TakeNumber(2, &parts[1]) || !reader->Take(isIso ? L'-' : L'/') ||
      !reader->TakeNumber(4, &parts[2])) {
    return false;
  }
  const unsigned year = isIso ? parts[0] : parts[2];
  const year_month_day date{std::chrono::year{static_cast<int>(year)},
                            std::chrono::month{isIso ? parts[1] : parts[0]},
                            std::chrono::day{isIso ? parts[2] : parts[1]}};
  constexpr unsigned kFirstYear = 100;
  if (year < kFirstYear || !date.ok()) return false;
  *day = static_cast<long>((std::chrono::sys_days{date} - kDayZero).count());
  return true;
}

bool ReadTime(Reader* reader, long* seconds) {
  unsigned hour = 0;
  unsigned minute = 0;
  unsigned second = 0;
  if (!reader->TakeNumber(2, &hour) || !reader->Take(L':') || !reader->TakeNumber(2, &minute)) {
    return false;
  }
  if (reader->Take(L':') && !reader->TakeNumber(2, &second)) return false;
  reader->SkipBlanks();
  const bool isPm = reader->TakeLetter(L'P');
  if (isPm || reader->TakeLetter(L'A')) {
    if (!reader->TakeLetter(L'M') || hour == 0 || hour > 12) return false;
    hour = hour % 12 + (isPm ? 12 : 0);
  }
  if (hour > 23 || minute > 59 || second > 59) return false;
  const unsigned ofDay = hour * 3600 + minute * 60 + second;
  *seconds = static_cast<long>(ofDay);
  return true;
}

}  // namespace

HRESULT DateFormatter::Format(DATE date, std::string_view* text) {
  if (!(date > kFirstDate - 1 && date < kLastDate + 1)) return E_INVALIDARG;
  long day = static_cast<long>(date);
  long seconds = std::lround(std::fabs(date - static_cast<double>(day)) * kSecondsPerDay);
  if (seconds == kSecondsPerDay) {
    seconds = 0;
    ++day;
  }
  if (static_cast<double>(day) > kLastDate) return E_INVALIDARG;
  char* out = m_text;
  if (day != 0) out = AppendDate(out, day);
  if (day != 0 && seconds != 0) *out++ = ' ';
  if (day == 0 || seconds != 0) out = AppendTime(out, seconds);
  *text = {m_text, out};
  return S_OK;
}

HRESULT ParseDate(const wchar_t* text, DATE* date) {
  if (text == nullptr) return DISP_E_TYPEMISMATCH;
  Reader reader(text);
  reader.SkipBlanks();
  long day = 0;
  long seconds = 0;
  Reader dateReader = reader;
  const bool hasDate = ReadDate(&dateReader, &day);
  if (hasDate) {
    reader = dateReader;
    reader.SkipBlanks();
  }
  if ((!hasDate || !reader.AtEnd()) && !ReadTime(&reader, &seconds)) return DISP_E_TYPEMISMATCH;
  reader.SkipBlanks();
  if (!reader.AtEnd()) return DISP_E_TYPEMISMATCH;
  const double fraction = static_cast<double>(seconds) / kSecondsPerDay;
  *date = day < 0 ? static_cast<double>(day) - fraction : static_cast<double>(day) + fraction;
  return S_OK;
}
