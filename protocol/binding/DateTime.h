// "xsd:dateTime" (XML Schema Part 2 section 3.2.7) in the service's reading of it. Any thread.
#pragma once

#include <ctime>
#include <string_view>

namespace tarnwell {

/// Reads a time to seconds since 1970 UTC. Six numbers as "Y-M-DTh:m:s", "YYYYMMDDTh:m:s" or "YYYYMMDDThhmmss", then
/// a fraction, which is dropped, then "Z", "+hh:mm" or "+hhmm", or nothing, which means the local time of the
/// machine. The year 1 is taken as 1970. All of this is the reading of the gSOAP runtime, which the service was built
/// against. False: the text has another form, or a number of more than nine characters.
bool parseDateTime(std::string_view text, std::time_t& seconds);

} // namespace tarnwell
