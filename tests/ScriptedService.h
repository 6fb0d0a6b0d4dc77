// A scripted HTTP service on loopback: listens before its constructor returns, gives its replies in the order in which
// they stand (the last one again and again) and records every request. As an HTTP proxy it is simply a second one,
// which records the request with its absolute URI and answers itself. One connection at a time, served by a thread of
// its own; members may be called from any thread. Every wait is bounded.
#pragma once

#include "tests/Http.h"

#include <QtCore/QThread>
#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

class QTcpSocket;

class ScriptedService {
public:
  explicit ScriptedService(const std::vector<Reply>& replies);
  explicit ScriptedService(const Reply& only) : ScriptedService(std::vector<Reply>{only}) {}
  ScriptedService(const ScriptedService&) = delete;
  ScriptedService& operator=(const ScriptedService&) = delete;
  ~ScriptedService();

  int port() const { return m_port; }
  std::string url() const { return "http://127.0.0.1:" + std::to_string(m_port) + "/service/desktopservice.asmx"; }
  std::vector<Request> requests() const;
  /// The last request; an empty one before the first.
  Request request() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_requests.empty() ? Request() : m_requests.back();
  }

private:
  void serve(QTcpSocket& connection);

  const std::vector<Reply> m_replies;
  mutable std::mutex m_mutex;
  std::vector<Request> m_requests;
  std::atomic<bool> m_stops{false};
  quint16 m_port = 0;
  std::unique_ptr<QThread> m_thread; ///< one of Qt's, since it uses Qt's sockets
};
