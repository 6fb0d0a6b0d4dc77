// Listens on the port and serves each connection in a thread of its own, so that no client waits for another one that
// stalls. At most 256 clients are served at once; others wait. One thread uses a Server.
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

/// The server of one endpoint.
class Server {
public:
  /// Listens. Throws std::runtime_error, with a text for people, and std::bad_alloc. Both arguments outlive this
  /// object.
  Server(const Options& options, const DatabaseFile& file);

  /// The service's URL.
  const std::string& endpoint() const { return url; }
  /// Whether other machines can reach it.
  bool isReachableFromOutside() const;

  /// Serves until the file descriptor `stop` can be read.
  void serve(int stop);
  /// Accepts the clients that already wait, and then no more. Responds to the requests that have arrived whole, and
  /// ends the other connections. False: after five seconds some threads are still running, and the process has to end
  /// without destroying anything.
  [[nodiscard]] bool finish();

private:
  struct Connection {
    Context context;
    std::thread thread;
    bool isDone = false;
  };
  void accept();
  void run(Connection& connection);
  /// Joins the threads that are done. Returns the number of connections that are left.
  std::size_t joinFinished();

  const Context listener;
  const std::string url;
  RequestHandler handler;
  std::mutex mutex; ///< guards `isDone` of each connection, and its pointer to the context
  std::condition_variable someIsDone;
  std::list<Connection> connections;
};

} // namespace localservice
