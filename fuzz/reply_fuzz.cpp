// Feeds arbitrary bytes to the reader as the answer of an exchange. The first byte picks the operation and, by its
// highest bit, whose memory blocks are read into; the second the size of the pieces in which the rest "arrives". A finding
// is a crash, a leak or an endless loop.
//   reply_fuzz -max_len=20000 -dict=fuzz/reply.dict CORPUS fuzz/corpus
#include "protocol/desktopservice.h"
#include "service/DownloadedBlocks.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace {

struct Reply {
  const std::uint8_t* bytes;
  std::size_t size;
  std::size_t piece;
};

std::size_t receive(struct soap* soap, char* buffer, std::size_t room) {
  Reply& reply = *static_cast<Reply*>(soap->user);
  const std::size_t size = std::min({reply.size, reply.piece, room});
  std::memcpy(buffer, reply.bytes, size);
  reply.bytes += size;
  reply.size -= size;
  return size;
}

/// Puts `reply` in the place of a connection.
void connectTo(struct soap* soap, Reply& reply) {
  soap->user = &reply;
  soap->fopen = [](struct soap*, const char*, const char*, int) -> SOAP_SOCKET { return 1000000; };
  soap->fsend = [](struct soap*, const char*, std::size_t) { return SOAP_OK; };
  soap->frecv = receive;
  soap->fclosesocket = [](struct soap*, SOAP_SOCKET) { return SOAP_OK; };
  soap->fshutdownsocket = [](struct soap*, SOAP_SOCKET, int) { return SOAP_OK; };
  soap->fpoll = [](struct soap*) { return SOAP_OK; };
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  if (size < 2)
    return 0;
  Reply reply{bytes + 2, size - 2, bytes[1] == 0 ? size : bytes[1]};
  struct soap* const soap = soap_new();
  connectTo(soap, reply);
  tarnwell::DownloadedBlocks downloads;
  tarnwell::setBlockMemory(soap, bytes[0] & 0x80 ? &downloads : nullptr);
  const std::size_t index = bytes[0] % static_cast<std::size_t>(tarnwell::OperationIndex::count);
  const tarnwell::Operation& operation = tarnwell::operations[index];
  auto* const request = tarnwell::instantiate(soap, -1, tarnwell::typeOf(operation.request), nullptr);
  auto* const response = tarnwell::instantiate(soap, -1, tarnwell::typeOf(operation.response), nullptr);
  static_cast<void>(tarnwell::exchange(soap, "http://fuzz/", nullptr, static_cast<tarnwell::OperationIndex>(index),
                                       static_cast<tarnwell::SchemaObject*>(request), static_cast<tarnwell::SchemaObject*>(response)));
  soap_destroy(soap);
  soap_end(soap);
  soap_free(soap);
  return 0;
}
