// The gSOAP runtime's header behind one door: the runtime's context, `struct soap`, and its primitives. What relies on
// more than these is in RuntimeInternals.h.
#pragma once

#include <stdsoap2.h>

// The binding writes members of the context and follows rules of these releases' readers; another series needs a
// look at RuntimeInternals.cpp.
static_assert(GSOAP_VERSION >= 208124 && GSOAP_VERSION < 208200, "written against gSOAP 2.8.124");
