// The service on its port: a thread for each connection, up to 256 at once, so that a client that stalls holds up
// nobody else. Further clients wait until one of these ends. One thread uses a Server.
#pragma once

#include "localservice/RequestHandler.h"

#include <condition_variable>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace localservice {

/// Deletes a context of the runtime with everything in it, and closes its sockets.
struct ContextDeleter {
  void operator()(struct soap* context) const;
};
using Context = std::unique_ptr<struct soap, ContextDeleter>;

class Server {
public:
  /// Listens. Throws std::runtime_error, with a text for people. `options` outlives this object.
  explicit Server(const Options& options);

  /// The service's URL.
  const std::string& endpoint() const { return url; }
  /// Whether other machines can reach it.
  bool isReachableFromOutside() const;

  /// Serves until the file descriptor `stop` can be read.
  void serve(int stop);
  /// Serves no new clients. Answers the requests that have arrived whole and breaks off the others. False: some were
  /// not done in five seconds; their threads are still running, and the process has to end without deleting anything.
  [[nodiscard]] bool finish();

private:
  struct Connection {
    Context context;
    std::thread thread;
    bool isDone = false;
  };
  void accept();
  void run(Connection& connection);
  /// Joins the threads that are done. Returns how many connections are left.
  std::size_t reap();

  const Context listener;
  const std::string url;
  const RequestHandler handler;
  std::mutex mutex; ///< guards `isDone` of each connection, and its context's being there
  std::condition_variable someIsDone;
  std::list<Connection> connections;
};

} // namespace localservice
