// Otherwise the C library's headers define recv() inline.
#undef _FORTIFY_SOURCE

#include "host/CallTrace.h"

#include <algorithm>
#include <cerrno>
#include <dlfcn.h>
#include <netdb.h>
#include <sys/socket.h>

namespace tarnwell {

namespace {

constexpr int mostOfResponse = 65536;

thread_local CallTrace* current = nullptr;

/// The C library's function called `name`.
template <auto function> auto* original(const char* name) {
  static auto* const found = reinterpret_cast<decltype(function)>(dlsym(RTLD_NEXT, name));
  return found;
}

void noteError(ssize_t count) {
  if (count < 0 && errno != EINTR && current->transferError == 0)
    current->transferError = errno;
}

void noteResponse(const void* bytes, ssize_t count) {
  QByteArray& response = current->response;
  if (count > 0)
    response.append(static_cast<const char*>(bytes),
                    static_cast<int>(std::min<qint64>(count, mostOfResponse - response.size())));
}

/// Notes a response that the peer has sent before it closed the connection: the plug-in reads nothing after a request
/// that it could not send whole.
void noteEarlyResponse(int descriptor) {
  const int error = errno;
  char bytes[4096];
  for (ssize_t count = 0; (count = original<recv>("recv")(descriptor, bytes, sizeof bytes, MSG_DONTWAIT)) > 0;)
    noteResponse(bytes, count);
  errno = error;
}

} // namespace

CallTracer::CallTracer(CallTrace& trace) { current = &trace; }
CallTracer::~CallTracer() { current = nullptr; }

} // namespace tarnwell

using namespace tarnwell;

// Visible to the plug-in, which the rest of this program is not.
#pragma GCC visibility push(default)
extern "C" {

int getaddrinfo(const char* host, const char* service, const addrinfo* hints, addrinfo** found) {
  const int error = original<getaddrinfo>("getaddrinfo")(host, service, hints, found);
  if (current != nullptr)
    current->lookUpError = error;
  return error;
}

int connect(int descriptor, const sockaddr* address, socklen_t size) {
  const int result = original<connect>("connect")(descriptor, address, size);
  if (current != nullptr && !current->response.isEmpty())
    current = nullptr; // the next exchange, for example to undo a save, is not what has failed
  if (current != nullptr) {
    *current = {};
    current->isConnected = result == 0;
    current->connectError = result == 0 ? 0 : errno;
  }
  return result;
}

ssize_t send(int descriptor, const void* bytes, size_t size, int flags) {
  const ssize_t count = original<send>("send")(descriptor, bytes, size, flags);
  if (current == nullptr)
    return count;
  noteError(count);
  if (current->transferError != 0)
    noteEarlyResponse(descriptor);
  return count;
}

ssize_t recv(int descriptor, void* bytes, size_t size, int flags) {
  const ssize_t count = original<recv>("recv")(descriptor, bytes, size, flags);
  if (current == nullptr)
    return count;
  current->isSent = true;
  noteError(count);
  noteResponse(bytes, count);
  return count;
}

} // extern "C"
#pragma GCC visibility pop
