// The gSOAP runtime's header behind one door: the runtime's context, `struct soap`, and its primitives.
#pragma once

#include <cstddef>
#include <stdsoap2.h>
#include <string_view>

// The binding writes members of the context and follows rules of these releases' readers; another series needs a
// look at every place that does.
static_assert(GSOAP_VERSION >= 208124 && GSOAP_VERSION < 208200, "written against gSOAP 2.8.124");

namespace tarnwell {

// What the runtime's soap_get() returns for "</" and for another "<"; its header keeps these to itself.
inline constexpr soap_wchar endTagMark = -3;
inline constexpr soap_wchar startTagMark = -2;

/// What has arrived and was not read. At the end of an answer the runtime may stand before its buffer.
inline std::string_view unread(const struct soap* soap) {
  const bool some = soap->bufidx < soap->buflen;
  return {soap->buf + (some ? soap->bufidx : 0), some ? soap->buflen - soap->bufidx : 0};
}

/// White space as the runtime sees it: all control characters.
constexpr bool isBlank(int character) { return character >= 0 && character <= ' '; }

} // namespace tarnwell
