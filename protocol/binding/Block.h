// Blocks of bytes, "xsd:base64Binary": how they are held, read and written. The memory that they are read into is in
// BlockMemory.h. One thread, as the context.
#pragma once

#include "protocol/binding/SchemaObject.h"

/// "xsd:base64Binary": a block of bytes. Inline unless `id` or `type` is set, which makes it an attachment.
class xsd__base64Binary : public tarnwell::SchemaClass<xsd__base64Binary, SOAP_TYPE_xsd__base64Binary> {
public:
  unsigned char* __ptr = nullptr;
  int __size = 0;
  char* id = nullptr;
  char* type = nullptr;
  char* options = nullptr;
  struct soap* soap = nullptr;
};

namespace tarnwell {

extern const Codec blockCodec;

} // namespace tarnwell
