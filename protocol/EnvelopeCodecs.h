// How the envelope's types are read and written that are not plain records (Envelope.cpp).
#pragma once

#include "protocol/Type.h"

namespace tarnwell {

extern const Codec headerCodec;
extern const Codec reasonCodec;
extern const Codec detailCodec;

} // namespace tarnwell
