// Everything of the desktop service's protocol: schema types, messages, their named functions, the call stubs, the
// namespace table. The one header that users of the binding include.
#pragma once

#include "protocol/Callbacks.h"
#include "protocol/Envelope.h"
#include "protocol/Exchange.h"
#include "protocol/Names.h"
#include "protocol/Namespaces.h"
