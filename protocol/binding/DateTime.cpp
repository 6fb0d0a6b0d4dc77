#include "protocol/binding/DateTime.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace tarnwell {
namespace {

/// Days from 1970-01-01 to the first of a month of the Gregorian calendar, continued to the year 0.
std::int64_t daysToMonth(int year, int month) {
  year += month <= 2 ? 399 : 400; // years that begin in March put the leap day last; 400 more: no negative year
  const int dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5;
  return 365 * year + year / 4 - year / 100 + year / 400 + dayOfYear - 719468 - 146097;
}

/// The form "2012-03-04T05:06:07Z", which every service sends: without scanf, which takes longer.
bool parseUsual(std::string_view text, std::time_t& seconds) {
  constexpr std::string_view form = "0000-00-00T00:00:00Z";
  if (text.size() != form.size())
    return false;
  for (std::size_t i = 0; i < form.size(); ++i)
    if (form[i] == '0' ? text[i] < '0' || text[i] > '9' : text[i] != form[i])
      return false;
  const auto number = [text](std::size_t at) { return (text[at] - '0') * 10 + text[at + 1] - '0'; };
  const int year = number(0) * 100 + number(2), month = number(5);
  if (year == 1 || month < 1 || month > 12)
    return false;
  const std::int64_t days = daysToMonth(year, month) + number(8) - 1;
  seconds = ((days * 24 + number(11)) * 60 + number(14)) * 60 + number(17);
  return true;
}

/// Subtracts the zone's offset from the time or finds that it is local time. False: no zone.
bool applyZone(const char* zone, std::tm& time, bool& local) {
  if (*zone == '.')
    zone += 1 + std::strspn(zone + 1, "0123456789");
  local = !*zone;
  if (local || std::strcmp(zone, "Z") == 0)
    return true;
  if (*zone != '+' && *zone != '-')
    return false;
  int hours = 0, minutes = 0, used = 0;
  if (std::sscanf(zone, "%5d:%5d%n", &hours, &minutes, &used) == 2) {
    minutes = *zone == '-' ? -minutes : minutes;
  } else if (std::sscanf(zone, "%7d%n", &minutes, &used) == 1) {
    hours = minutes / 100;
    minutes %= 100;
  }
  if (used == 0 || zone[used] || std::abs(hours) > 9999 || std::abs(minutes) > 9999)
    return false;
  time.tm_hour -= hours;
  time.tm_min -= minutes;
  return true;
}

} // namespace

bool parseDateTime(std::string_view text, std::time_t& seconds) {
  if (parseUsual(text, seconds))
    return true;
  const std::string value(text);
  // At most nine characters a number, so that none of the sums below leaves an int.
  const char* const pattern = value.find('-') != value.npos   ? "%9d-%9d-%9dT%9d:%9d:%9d%31s"
                              : value.find(':') != value.npos ? "%4d%2d%2dT%9d:%9d:%9d%31s"
                                                              : "%4d%2d%2dT%2d%2d%2d%31s";
  std::tm time{};
  char zone[32] = "";
  if (std::sscanf(value.c_str(), pattern, &time.tm_year, &time.tm_mon, &time.tm_mday, &time.tm_hour, &time.tm_min,
                  &time.tm_sec, zone) < 6)
    return false;
  bool local = false;
  if (!applyZone(zone, time, local))
    return false;
  time.tm_year = time.tm_year == 1 ? 70 : time.tm_year - 1900;
  --time.tm_mon;
  time.tm_isdst = -1;
  seconds = local ? std::mktime(&time) : timegm(&time);
  return true;
}

} // namespace tarnwell
