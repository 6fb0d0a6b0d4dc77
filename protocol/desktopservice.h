// Everything of the desktop service's protocol: schema types, messages, their named functions, the call stubs, the
// namespace table. The one header that users of the binding include.
#pragma once

#include "protocol/schema/Envelope.h"
#include "protocol/schema/Namespaces.h"
#include "protocol/schema/SchemaFunctions.h"
#include "protocol/soap/Exchange.h"
#include "protocol/soap/RuntimeCallbacks.h"
