// An answer in the place of a connection, delivered in pieces: for fuzzers.
#pragma once

#include "protocol/desktopservice.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

struct Delivery {
  const std::uint8_t* bytes; ///< what has not arrived yet
  std::size_t size;
  std::size_t piece; ///< bytes that arrive at once, at most
};

/// Lets the context's exchanges receive `delivery`, which outlives them, and send to nowhere.
inline void connectTo(struct soap* soap, Delivery& delivery) {
  soap->user = &delivery;
  soap->fopen = [](struct soap*, const char*, const char*, int) -> SOAP_SOCKET { return 1000000; };
  soap->fsend = [](struct soap*, const char*, std::size_t) { return SOAP_OK; };
  soap->frecv = [](struct soap* context, char* buffer, std::size_t room) {
    Delivery& rest = *static_cast<Delivery*>(context->user);
    const std::size_t size = std::min({rest.size, rest.piece, room});
    std::memcpy(buffer, rest.bytes, size);
    rest.bytes += size;
    rest.size -= size;
    return size;
  };
  soap->fclosesocket = [](struct soap*, SOAP_SOCKET) { return SOAP_OK; };
  soap->fshutdownsocket = [](struct soap*, SOAP_SOCKET, int) { return SOAP_OK; };
  soap->fpoll = [](struct soap*) { return SOAP_OK; };
}
