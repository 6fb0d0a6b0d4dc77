// Feeds arbitrary bytes to the reader as the answer of an exchange. The first byte picks the operation and, by its
// highest bit, whose memory blocks are read into; the second the size of the pieces in which the rest "arrives". A
// finding is a crash, a leak or an endless loop.
//   reply_fuzz -max_len=20000 -dict=fuzz/reply.dict CORPUS fuzz/corpus
#include "fuzz/Delivery.h"
#include "service/DownloadedBlocks.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  if (size < 2)
    return 0;
  Delivery delivery{bytes + 2, size - 2, bytes[1] == 0 ? size : bytes[1]};
  struct soap* const soap = soap_new();
  connectTo(soap, delivery);
  tarnwell::DownloadedBlocks downloads;
  tarnwell::setBlockMemory(soap, bytes[0] & 0x80 ? &downloads : nullptr);
  const std::size_t index = bytes[0] % static_cast<std::size_t>(tarnwell::OperationIndex::count);
  const tarnwell::Operation& operation = tarnwell::operations[index];
  auto* const request = tarnwell::instantiate(soap, -1, tarnwell::typeOf(operation.request), nullptr);
  auto* const response = tarnwell::instantiate(soap, -1, tarnwell::typeOf(operation.response), nullptr);
  static_cast<void>(tarnwell::exchange(soap, "http://fuzz/", nullptr, static_cast<tarnwell::OperationIndex>(index),
                                       static_cast<SchemaObject*>(request), static_cast<SchemaObject*>(response)));
  soap_destroy(soap);
  soap_end(soap);
  soap_free(soap);
  return 0;
}
