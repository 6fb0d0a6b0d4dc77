// The service on its port: a few threads that take connections from one listener, each with its own session and
// database connection, so that a client that stalls holds up nobody else.
#pragma once

#include "localservice/Listener.h"
#include "localservice/Options.h"
#include "localservice/Session.h"

#include <list>
#include <mutex>
#include <string>
#include <thread>

namespace localservice {

class Server {
public:
  /// Listens and serves until destroyed. Throws StoreError or std::runtime_error, with a text for people.
  explicit Server(const Options& options);
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;
  /// Answers the requests that have arrived whole, breaks off those that are still arriving.
  ~Server();

  /// The service's URL.
  const std::string& endpoint() const { return url; }

private:
  struct Worker {
    Worker(const Options& options, const std::string& url) : session(options.database, options.readOnly, url) {}
    Session session;
    int socket = -1; ///< of the connection that it serves; -1: none
    std::thread thread;
  };
  void work(Worker& worker);

  Listener listener;
  const std::string url;
  std::mutex mutex; ///< guards `stopping` and each worker's `socket`
  bool stopping = false;
  std::list<Worker> workers;
};

} // namespace localservice
