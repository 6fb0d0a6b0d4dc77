#include "localservice/Listener.h"

#include <cerrno>
#include <cstring>
#include <memory>
#include <netdb.h>
#include <netinet/in.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace localservice {

namespace {
using Addresses = std::unique_ptr<addrinfo, decltype(&freeaddrinfo)>;

Addresses resolve(const std::string& host, const std::string& port) {
  addrinfo hints{};
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = AI_PASSIVE | AI_NUMERICSERV;
  addrinfo* found = nullptr;
  const int code = getaddrinfo(host.c_str(), port.c_str(), &hints, &found);
  if (code != 0)
    throw std::runtime_error(host + ":" + port + ": " + gai_strerror(code));
  return {found, freeaddrinfo};
}
} // namespace

Listener::Listener(const std::string& host, const std::string& port) {
  const Addresses address = resolve(host, port);
  socket = ::socket(address->ai_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const int on = 1; // a port whose last connections linger is free
  if (socket < 0 || setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) != 0 ||
      bind(socket, address->ai_addr, address->ai_addrlen) != 0 || listen(socket, SOMAXCONN) != 0) {
    const std::string reason = std::strerror(errno);
    ::close(socket);
    throw std::runtime_error(host + ":" + port + ": " + reason);
  }
}

Listener::~Listener() { ::close(socket); }

int Listener::port() const {
  sockaddr_storage address{};
  socklen_t size = sizeof address;
  if (getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size) != 0)
    throw std::runtime_error(std::strerror(errno));
  // The port has the same place in both families' addresses.
  return ntohs(reinterpret_cast<const sockaddr_in*>(&address)->sin_port);
}

int Listener::accept() const { return accept4(socket, nullptr, nullptr, SOCK_CLOEXEC); }

void Listener::close() { shutdown(socket, SHUT_RDWR); }

} // namespace localservice
