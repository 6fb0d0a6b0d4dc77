// The gSOAP runtime's header behind one door: the runtime's context, `struct soap`, and its primitives. What relies on
// more than these is in RuntimeInternals.h.
#pragma once

#include <stdsoap2.h>

// The binding writes members of the context and follows rules of the runtime's reader, which any release may change.
static_assert(GSOAP_VERSION == 208124 || GSOAP_VERSION == 208135 || GSOAP_VERSION == 208142,
              "not tried with this release of gSOAP: compare protocol/runtime/RuntimeInternals.h and .cpp with its "
              "stdsoap2.cpp, run the tests, then add the release here");
