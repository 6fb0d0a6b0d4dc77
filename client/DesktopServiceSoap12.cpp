#include "client/DesktopServiceSoap12.h"

#include "protocol/Deployment.h"
#include "protocol/binding/BlockMemory.h"

#include <cerrno>
#include <sys/socket.h>

DesktopServiceSoap12::DesktopServiceSoap12() : soap(soap_new2(0, 0)), soap_endpoint(TARNWELL_TEST_ENDPOINT) {
  if (!soap)
    return;
  if (!soap->namespaces)
    soap->namespaces = tarnwell::namespaceTable;
  soap->socket_flags = MSG_NOSIGNAL; // a peer that closes early must not end the host by SIGPIPE
  soap->recv_maxlength = 0;          // the reader bounds each block, and a map has four characters for three bytes
  // The system's own socket buffers grow with what arrives; with the runtime's fixed ones a download costs twice the
  // time.
  soap->sndbuf = 0;
  soap->rcvbuf = 0;
  // Where the runtime turns for an endpoint without a host; by default the process's standard streams.
  soap->sendfd = -1;
  soap->recvfd = -1;
  // The runtime's own reader gives up when signals interrupt it eleven times in a row.
  soap->frecv = [](struct soap* context, char* to, std::size_t size) -> std::size_t {
    ssize_t received = 0;
    do
      received = recv(context->socket, to, size, context->socket_flags);
    while (received < 0 && errno == EINTR);
    context->errnum = received < 0 ? errno : 0;
    return received < 0 ? 0 : static_cast<std::size_t>(received);
  };
  // Asked before each attachment in an answer. The runtime reserves what its header claims; so that a false claim costs
  // nothing, none may be longer than the answer.
  soap->fdimewriteopen = [](struct soap* context, const char*, const char*, const char*) -> void* {
    const std::size_t size = context->dime.size;
    if (size > tarnwell::largestBlock || (context->length && size > context->length))
      context->error = SOAP_DIME_ERROR;
    return nullptr; // it is read into memory
  };
}

DesktopServiceSoap12::~DesktopServiceSoap12() {
  if (!soap)
    return;
  soap_destroy(soap);
  soap_end(soap);
  soap_free(soap);
}
