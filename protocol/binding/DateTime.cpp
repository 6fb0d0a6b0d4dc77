#include "protocol/binding/DateTime.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace tarnwell {
namespace {

/// The form "2012-03-04T05:06:07Z", which every service sends: without scanf, which takes longer.
bool parseUsual(std::string_view text, std::time_t& seconds) {
  constexpr std::string_view form = "0000-00-00T00:00:00Z";
  if (text.size() != form.size())
    return false;
  for (std::size_t i = 0; i < form.size(); ++i)
    if (form[i] == '0' ? text[i] < '0' || text[i] > '9' : text[i] != form[i])
      return false;
  const auto number = [text](std::size_t at) { return (text[at] - '0') * 10 + text[at + 1] - '0'; };
  const int year = number(0) * 100 + number(2);
  const std::chrono::month month(static_cast<unsigned>(number(5)));
  if (year == 1 || !month.ok())
    return false;
  // Days, hours, minutes and seconds are not bounded: the rest counts on from the first of the month.
  const std::chrono::sys_days first = std::chrono::year(year) / month / 1;
  const std::chrono::sys_seconds time = first + std::chrono::days(number(8) - 1) + std::chrono::hours(number(11)) +
                                        std::chrono::minutes(number(14)) + std::chrono::seconds(number(17));
  seconds = time.time_since_epoch().count();
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
