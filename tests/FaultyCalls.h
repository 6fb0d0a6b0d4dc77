// Puts this program's own functions before those of the C library that get memory or talk to the system, so that a
// chosen call of one thread fails. Included by one file of a test program.
#pragma once

#include <bitset>
#include <cerrno>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <netdb.h>
#include <new>
#include <sys/socket.h>
#include <unistd.h>

/// What the calls of a thread meet while `meets` points here.
struct Faults {
  enum Kind { None, Memory, System } kind = None;
  long position = 0;     ///< of the first call that fails, from 0
  bool andAll = false;   ///< so do all after it
  int error = ENOMEM;    ///< what the system says of it
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

/// The function behind the one of this program, which `name` and the type of `own` tell.
template <class Function> Function* behind(const char* name, Function&) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}
bool fails(Faults::Kind kind) { return Faults::meets && Faults::meets->fails(kind); }
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

void* malloc(std::size_t size) noexcept {
  static auto* const real = behind("malloc", malloc);
  return fails(Faults::Memory) ? nullptr : real(size);
}
void* calloc(std::size_t count, std::size_t size) noexcept {
  static auto* const real = behind("calloc", calloc);
  return fails(Faults::Memory) ? nullptr : real(count, size);
}
void* realloc(void* bytes, std::size_t size) noexcept {
  static auto* const real = behind("realloc", realloc);
  return fails(Faults::Memory) ? nullptr : real(bytes, size);
}

int socket(int domain, int type, int protocol) noexcept {
  static auto* const real = behind("socket", socket);
  return fails(Faults::System) ? -1 : opened(real(domain, type, protocol));
}
int open64(const char* path, int flags, ...) {
  static auto* const real = behind("open64", open64);
  return fails(Faults::System) ? -1 : opened(real(path, flags, 0600));
}
int close(int descriptor) {
  static auto* const real = behind("close", close);
  if (Faults::meets)
    Faults::meets->descriptors.reset(static_cast<std::size_t>(descriptor));
  return real(descriptor);
}
int connect(int descriptor, const sockaddr* address, socklen_t size) {
  static auto* const real = behind("connect", connect);
  return fails(Faults::System) ? -1 : real(descriptor, address, size);
}
int setsockopt(int descriptor, int level, int option, const void* value, socklen_t size) noexcept {
  static auto* const real = behind("setsockopt", setsockopt);
  return fails(Faults::System) ? -1 : real(descriptor, level, option, value, size);
}
ssize_t send(int descriptor, const void* bytes, std::size_t size, int flags) {
  static auto* const real = behind("send", send);
  return fails(Faults::System) ? -1 : real(descriptor, bytes, most(size), flags);
}
ssize_t recv(int descriptor, void* bytes, std::size_t size, int flags) {
  static auto* const real = behind("recv", recv);
  return fails(Faults::System) ? -1 : real(descriptor, bytes, most(size), flags);
}
ssize_t read(int descriptor, void* bytes, std::size_t size) {
  static auto* const real = behind("read", read);
  return fails(Faults::System) ? -1 : real(descriptor, bytes, most(size));
}
int getaddrinfo(const char* host, const char* service, const addrinfo* hints, addrinfo** found) {
  static auto* const real = behind("getaddrinfo", getaddrinfo);
  return fails(Faults::System) ? EAI_AGAIN : real(host, service, hints, found);
}
}
