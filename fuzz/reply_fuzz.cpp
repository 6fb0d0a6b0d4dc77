// Feeds arbitrary bytes to the reader as the answer of an exchange. The first byte picks the operation and, by its
// highest bit, whose memory blocks are read into; the second the size of the pieces in which the rest "arrives". A
// finding is a crash, a leak or an endless loop.
//   reply_fuzz -max_len=20000 -dict=fuzz/reply.dict CORPUS fuzz/corpus
#include "service/DownloadedBlocks.h"
#include "tests/WireClient.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  if (size < 2)
    return 0;
  tarnwell::DownloadedBlocks downloads;
  WireClient client;
  client.reply.assign(bytes + 2, bytes + size);
  client.piece = bytes[1];
  tarnwell::setBlockMemory(client.soap, bytes[0] & 0x80 ? &downloads : nullptr);
  const std::size_t index = bytes[0] % static_cast<std::size_t>(tarnwell::OperationIndex::count);
  const tarnwell::Operation& operation = tarnwell::operations[index];
  auto* const request = tarnwell::instantiate(client.soap, -1, tarnwell::typeOf(operation.request), nullptr);
  auto* const response = tarnwell::instantiate(client.soap, -1, tarnwell::typeOf(operation.response), nullptr);
  static_cast<void>(tarnwell::exchange(
      client.soap, "http://fuzz/", nullptr, static_cast<tarnwell::OperationIndex>(index),
      static_cast<tarnwell::SchemaObject*>(request), static_cast<tarnwell::SchemaObject*>(response)));
  return 0;
}
