#include <array>
#include <charconv>
#include <cstdio>
#include <ctime>
#include <stdexcept>
#include <string_view>

#include "sql/TableStore.hpp"
#include "sql/TimeText.hpp"

namespace ZARN::SQL {
namespace {

constexpr int kMicroseconds = 1'000'000;  // of a second

/// Reads the parts of a time, one after the other.
class TimeParts {
 public:
  explicit TimeParts(std::string_view text) : text_(text) {}

  bool IsAtEnd() const { return text_.empty(); }

  bool Skip(char wanted) {
    if (text_.empty() || text_.front() != wanted) return false;
    text_.remove_prefix(1);
    return true;
  }

  void Expect(char wanted) { isGood_ = Skip(wanted) && isGood_; }

  /// A number of so many digits, from @p lowest to @p highest.
  int Number(std::size_t digits, int lowest, int highest) {
    const std::string_view part = text_.substr(0, digits);
    text_.remove_prefix(part.size());
    int number = 0;
    const char* const end = part.data() + part.size();
    // from_chars takes a sign, which is none of the digits.
    const bool isNumber = part.size() == digits && part.front() >= '0' &&
                          part.front() <= '9' &&
                          std::from_chars(part.data(), end, number).ptr == end;
    isGood_ = isGood_ && isNumber && number >= lowest && number <= highest;
    return number;
  }

  /// The digits after the point, as microseconds; further digits are dropped.
  int Fraction() {
    const std::size_t digits = text_.find_first_not_of("0123456789");
    std::string part(text_.substr(0, digits));
    text_.remove_prefix(part.size());
    isGood_ = isGood_ && !part.empty();
    part.resize(6, '0');
    return TimeParts(part).Number(6, 0, kMicroseconds);
  }

  bool IsGood() const { return isGood_; }

 private:
  std::string_view text_;
  bool isGood_ = true;
};

/// Seconds since 1970 of a day and time in UTC; none if there is no such day.
bool ToSeconds(std::tm fields, std::time_t& seconds) {
  const int day = fields.tm_mday;
  seconds = timegm(&fields);  // turns 31 February into a day of March
  return fields.tm_mday == day;
}

/// Seconds by which the time is ahead of UTC: Z, +01:00 or -0530.
int ReadOffset(TimeParts& text) {
  if (text.Skip('Z')) return 0;
  const bool isBehind = text.Skip('-');
  if (!isBehind) text.Expect('+');
  const int hours = text.Number(2, 0, 23);
  text.Skip(':');
  const int seconds = (hours * 60 + text.Number(2, 0, 59)) * 60;
  return isBehind ? -seconds : seconds;
}

}  // namespace

long long ToMicroseconds(const std::string& text) {
  TimeParts rest(text);
  std::tm fields{};
  fields.tm_year = rest.Number(4, 1000, 9998) - 1900;
  rest.Expect('-');
  fields.tm_mon = rest.Number(2, 1, 12) - 1;
  rest.Expect('-');
  fields.tm_mday = rest.Number(2, 1, 31);
  int offset = 0;
  int microseconds = 0;
  if (rest.IsAtEnd()) {
    fields.tm_hour = 23;
    fields.tm_min = 59;
    fields.tm_sec = 59;
    microseconds = kMicroseconds - 1;
  } else {
    if (!rest.Skip(' ')) rest.Expect('T');
    fields.tm_hour = rest.Number(2, 0, 23);
    rest.Expect(':');
    fields.tm_min = rest.Number(2, 0, 59);
    if (rest.Skip(':')) {
      fields.tm_sec = rest.Number(2, 0, 59);
      if (rest.Skip('.')) microseconds = rest.Fraction();
    }
    offset = ReadOffset(rest);
  }
  std::time_t seconds = 0;
  if (!rest.IsGood() || !rest.IsAtEnd() || !ToSeconds(fields, seconds)) {
    throw std::invalid_argument(
        "\"" + text +
        "\" is not a time; expected a date (2026-01-31), or a time with Z for "
        "UTC or an offset (2026-01-31T12:00:00Z, 2026-01-31T13:00:00+01:00)");
  }
  return (seconds - offset) * static_cast<long long>(kMicroseconds) +
         microseconds;
}

std::string TimeText(long long microseconds) {
  // Times before 1970 are asked for, too: round down.
  long long fraction = microseconds % kMicroseconds;
  if (fraction < 0) fraction += kMicroseconds;
  const std::time_t seconds = (microseconds - fraction) / kMicroseconds;
  std::tm fields{};
  gmtime_r(&seconds, &fields);
  std::array<char, 80> text{};
  const int size = std::snprintf(
      text.data(), text.size(), "%04d-%02d-%02dT%02d:%02d:%02d.%06lldZ",
      fields.tm_year + 1900, fields.tm_mon + 1, fields.tm_mday, fields.tm_hour,
      fields.tm_min, fields.tm_sec, fraction);
  return {text.data(), static_cast<std::size_t>(size)};
}

std::string ParseTime(const std::string& text) {
  return TimeText(ToMicroseconds(text));
}

}  // namespace ZARN::SQL
