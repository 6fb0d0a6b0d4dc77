#include "localservice/Server.h"

#include "protocol/desktopservice.h"

#include <algorithm>
#include <chrono>
#include <netinet/in.h>
#include <new>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <system_error>

namespace localservice {

namespace {

constexpr std::size_t mostConnections = 256;
constexpr int retryMilliseconds = 50; // until the next attempt to accept, when there are too many
constexpr std::chrono::seconds finishLimit{5};

Context listen(const Options& options) {
  Context context(soap_new());
  if (!context)
    throw std::bad_alloc();
  context->socket_flags = MSG_NOSIGNAL;
  context->bind_flags = SO_REUSEADDR; // can use a port whose last connections are in TIME_WAIT
  context->accept_timeout = 1;        // second; the client may have closed the connection since poll()
  if (!soap_valid_socket(soap_bind(context.get(), options.host.c_str(), options.port, SOMAXCONN)))
    throw std::runtime_error(options.hostInUrl() + ":" + std::to_string(options.port) + ": " +
                             *soap_faultstring(context.get()));
  return context;
}

sockaddr_storage addressOf(int socket) {
  sockaddr_storage address{};
  socklen_t size = sizeof address;
  if (getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size) != 0)
    throw std::system_error(errno, std::generic_category());
  return address;
}

std::string urlOf(const Options& options, const sockaddr_storage& address) {
  // The port is at the same place in IPv4 and IPv6 addresses.
  const int port = ntohs(reinterpret_cast<const sockaddr_in&>(address).sin_port);
  return "http://" + options.hostInUrl() + ":" + std::to_string(port) + servicePath;
}

} // namespace

void ContextDeleter::operator()(struct soap* context) const {
  soap_destroy(context);
  soap_end(context);
  soap_free(context);
}

Server::Server(const Options& options, const DatabaseFile& file)
    : listener(listen(options)), url(urlOf(options, addressOf(listener->master))), handler(options, file, url) {}

bool Server::isReachableFromOutside() const {
  const sockaddr_storage address = addressOf(listener->master);
  if (address.ss_family == AF_INET6)
    return !IN6_IS_ADDR_LOOPBACK(&reinterpret_cast<const sockaddr_in6&>(address).sin6_addr);
  return ntohl(reinterpret_cast<const sockaddr_in&>(address).sin_addr.s_addr) >> 24 != IN_LOOPBACKNET;
}

void Server::serve(int stop) {
  pollfd waiting[] = {{stop, POLLIN, 0}, {listener->master, POLLIN, 0}};
  while (!(waiting[0].revents & POLLIN)) {
    const bool isFull = joinFinished() >= mostConnections;
    waiting[1].revents = 0;
    poll(waiting, isFull ? 1 : 2, isFull ? retryMilliseconds : -1);
    if (waiting[1].revents)
      accept();
  }
}

void Server::accept() {
  if (!soap_valid_socket(soap_accept(listener.get()))) {
    std::this_thread::sleep_for(
        std::chrono::milliseconds(retryMilliseconds)); // for example, there are no descriptors left
    return;
  }
  Context context(soap_copy(listener.get()));
  if (context)
    context->master = SOAP_INVALID_SOCKET;
  else
    soap_force_closesock(listener.get());
  listener->socket = SOAP_INVALID_SOCKET; // the context owns the socket now
  if (!context)
    return;
  Connection& connection = connections.emplace_back();
  connection.context = std::move(context);
  try {
    connection.thread = std::thread([this, &connection] { run(connection); });
  } catch (const std::system_error&) { // no more threads: the client is refused
    connections.pop_back();
  }
}

void Server::run(Connection& connection) {
  handler.handle(connection.context.get());
  const std::lock_guard<std::mutex> lock(mutex);
  connection.context = nullptr;
  connection.isDone = true;
  someIsDone.notify_one();
}

std::size_t Server::joinFinished() {
  const std::lock_guard<std::mutex> lock(mutex);
  connections.remove_if([](Connection& connection) {
    if (connection.isDone)
      connection.thread.join();
    return connection.isDone;
  });
  return connections.size();
}

bool Server::finish() {
  pollfd waiting = {listener->master, POLLIN, 0};
  for (std::size_t i = 0; i < mostConnections && poll(&waiting, 1, 0) > 0; ++i)
    accept();
  shutdown(listener->master, SHUT_RDWR); // from now on clients are refused
  std::unique_lock<std::mutex> lock(mutex);
  for (const Connection& connection : connections)
    if (connection.context)
      shutdown(connection.context->socket, SHUT_RD);
  const bool areDone = someIsDone.wait_for(lock, finishLimit, [this] {
    return std::all_of(connections.begin(), connections.end(), [](const Connection& each) { return each.isDone; });
  });
  lock.unlock();
  return areDone && joinFinished() == 0;
}

} // namespace localservice
