#include "localservice/Server.h"

#include <chrono>
#include <sys/socket.h>
#include <unistd.h>

namespace localservice {

namespace {
constexpr int workerCount = 4;
constexpr std::chrono::milliseconds retryPause{100}; // when the system has no socket to give
} // namespace

Server::Server(const Options& options)
    : listener(options.host, options.port),
      url("http://" + options.hostInUrl() + ":" + std::to_string(listener.port()) + servicePath) {
  for (int i = 0; i < workerCount; ++i)
    workers.emplace_back(options, url);
  for (Worker& worker : workers)
    worker.thread = std::thread([this, &worker] { work(worker); });
}

Server::~Server() {
  {
    const std::lock_guard<std::mutex> lock(mutex);
    stopping = true;
    for (const Worker& worker : workers)
      if (worker.socket >= 0)
        shutdown(worker.socket, SHUT_RD);
  }
  listener.close();
  for (Worker& worker : workers)
    worker.thread.join();
}

void Server::work(Worker& worker) {
  const auto serving = [&](int socket) {
    const std::lock_guard<std::mutex> lock(mutex);
    worker.socket = socket;
    return !stopping;
  };
  for (;;) {
    const int socket = listener.accept();
    const bool wanted = serving(socket);
    if (wanted && socket >= 0)
      worker.session.serve(socket);
    serving(-1); // before the number of the socket can become another's
    if (socket >= 0)
      close(socket);
    if (!wanted)
      return;
    if (socket < 0)
      std::this_thread::sleep_for(retryPause);
  }
}

} // namespace localservice
