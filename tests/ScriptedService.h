// A scripted HTTP service on loopback for tests: listens before its constructor returns, gives its replies in the order
// in which they were added (the last one again and again) and records every request. As an HTTP proxy it is simply a
// second one, which records the request with its absolute URI and answers itself.
// One connection at a time, served by a thread of its own; members may be called from any thread. Every wait is
// bounded.
#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

/// What the service does with one connection.
struct Reply {
  std::string bytes;                     ///< the whole reply, header included
  std::size_t reads = std::string::npos; ///< bytes of the request that are read before the reply; npos: all of it
  bool stalls = false;                   ///< waits for ScriptedService::release() before it replies

  Reply closeAfter(std::size_t count) const { return {bytes.substr(0, count), reads, stalls}; }
  Reply stall() const { return {bytes, reads, true}; }
};

/// A complete HTTP reply with Content-Length; `headers` are further lines, each with its line end.
Reply reply(int status, const std::string& body, const std::string& headers = {});
/// The same in HTTP chunks of `size` bytes.
Reply chunks(std::size_t size, int status, const std::string& body);
/// The same with a length that is far too big.
Reply falseLength(const std::string& body);
/// No reply: the connection is closed after `count` bytes of the request (npos: after all of it).
Reply hangUp(std::size_t count);

struct Request {
  std::string head; ///< request line and header fields
  std::string body;
  static Request parsed(const std::string& message);
  /// The value of a header field, empty when absent.
  std::string header(const std::string& name) const;
};

class ScriptedService {
public:
  explicit ScriptedService(const std::vector<Reply>& replies = {});
  explicit ScriptedService(const Reply& only) : ScriptedService(std::vector<Reply>{only}) {}
  ScriptedService(const ScriptedService&) = delete;
  ScriptedService& operator=(const ScriptedService&) = delete;
  ~ScriptedService();

  /// Lets the replies go that stall.
  void release();
  int port() const { return m_port; }
  std::string url() const;
  std::vector<Request> requests() const;
  /// The last request; an empty one before the first.
  Request request() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_requests.empty() ? Request() : m_requests.back();
  }

private:
  void run();
  void serve(int connection);

  const std::vector<Reply> m_replies;
  int m_listener;
  int m_stop;
  int m_port = 0;
  mutable std::mutex m_mutex;
  std::condition_variable m_change;
  bool m_released = false;
  std::vector<Request> m_requests;
  std::thread m_thread;
};
