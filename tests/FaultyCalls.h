// Replaces functions of the C library that allocate memory or call the system, so that a chosen call of one thread
// fails. Included by one file of a test program.
#pragma once

#include <bitset>
#include <cerrno>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <netdb.h>
#include <new>
#include <pthread.h>
#include <sys/socket.h>
#include <unistd.h>

/// The faults of a thread's calls while `meets` points here.
struct Faults {
  /// Waiting: calls that a signal interrupts. Cancelled: the thread, as it sends or receives.
  enum Kind { None, Memory, System, Waiting, Cancelled } kind = None;
  long position = 0;     ///< of the first call that fails, from 0
  bool andAll = false;   ///< so do all after it
  int error = ENOMEM;    ///< errno after it
  std::size_t piece = 0; ///< bytes that one send, receive or read moves at most; 0: any number

  long calls = 0;                  ///< of this kind
  std::bitset<1024> descriptors{}; ///< opened and not closed
  static thread_local Faults* meets;

  bool fails(Kind what) {
    if (what != kind)
      return false;
    errno = error;
    const long call = calls++;
    return call == position || (andAll && call > position);
  }
};
thread_local Faults* Faults::meets = nullptr;

namespace {

/// The C library's function called `name`.
template <auto function> auto behind(const char* name) {
  static const auto real = reinterpret_cast<decltype(function)>(dlsym(RTLD_NEXT, name));
  return real;
}
bool fails(Faults::Kind kind) { return Faults::meets && Faults::meets->fails(kind); }
bool failsMoving() { return fails(Faults::System) || fails(Faults::Waiting); }
void cancel() {
  if (fails(Faults::Cancelled))
    pthread_cancel(pthread_self());
}
std::size_t most(std::size_t size) {
  return Faults::meets && Faults::meets->piece > 0 && Faults::meets->piece < size ? Faults::meets->piece : size;
}
int opened(int descriptor) {
  if (Faults::meets && descriptor >= 0)
    Faults::meets->descriptors.set(static_cast<std::size_t>(descriptor));
  return descriptor;
}

} // namespace

void* operator new(std::size_t size) {
  static auto* const real = reinterpret_cast<void* (*)(std::size_t)>(dlsym(RTLD_NEXT, "_Znwm"));
  if (fails(Faults::Memory))
    throw std::bad_alloc();
  return real(size);
}

extern "C" {

void* malloc(std::size_t size) noexcept { return fails(Faults::Memory) ? nullptr : behind<malloc>("malloc")(size); }
void* calloc(std::size_t count, std::size_t size) noexcept {
  return fails(Faults::Memory) ? nullptr : behind<calloc>("calloc")(count, size);
}
void* realloc(void* bytes, std::size_t size) noexcept {
  return fails(Faults::Memory) ? nullptr : behind<realloc>("realloc")(bytes, size);
}

int socket(int domain, int type, int protocol) noexcept {
  return fails(Faults::System) ? -1 : opened(behind<socket>("socket")(domain, type, protocol));
}
int open(const char* path, int flags, ...) {
  return fails(Faults::System) ? -1 : opened(behind<open>("open")(path, flags, 0600));
}
int __open_2(const char* path, int flags) { return open(path, flags); } // open() of code with _FORTIFY_SOURCE
int close(int descriptor) {
  if (Faults::meets)
    Faults::meets->descriptors.reset(static_cast<std::size_t>(descriptor));
  return behind<close>("close")(descriptor);
}
int connect(int descriptor, const sockaddr* address, socklen_t size) {
  return fails(Faults::System) ? -1 : behind<connect>("connect")(descriptor, address, size);
}
int setsockopt(int descriptor, int level, int option, const void* value, socklen_t size) noexcept {
  return fails(Faults::System) ? -1 : behind<setsockopt>("setsockopt")(descriptor, level, option, value, size);
}
ssize_t send(int descriptor, const void* bytes, std::size_t size, int flags) {
  cancel();
  return failsMoving() ? -1 : behind<send>("send")(descriptor, bytes, most(size), flags);
}
ssize_t recv(int descriptor, void* bytes, std::size_t size, int flags) {
  cancel();
  return failsMoving() ? -1 : behind<recv>("recv")(descriptor, bytes, most(size), flags);
}
ssize_t read(int descriptor, void* bytes, std::size_t size) {
  return failsMoving() ? -1 : behind<read>("read")(descriptor, bytes, most(size));
}
ssize_t write(int descriptor, const void* bytes, std::size_t size) {
  return failsMoving() ? -1 : behind<write>("write")(descriptor, bytes, most(size));
}
int getaddrinfo(const char* host, const char* service, const addrinfo* hints, addrinfo** found) {
  return fails(Faults::System) ? EAI_AGAIN : behind<getaddrinfo>("getaddrinfo")(host, service, hints, found);
}
}
