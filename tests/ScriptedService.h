// A scripted HTTP service on loopback. It listens before its constructor returns, sends its replies in their order (the
// last one again and again) and records every request. A second one serves as HTTP proxy: it records the request with
// its absolute URI and answers itself. Its thread serves one connection at a time; members may be called from any
// thread. Every wait is bounded.
#pragma once

#include "tests/Http.h"

#include <QtCore/QThread>
#include <QtNetwork/QTcpServer>
#include <QtNetwork/QTcpSocket>
#include <algorithm>
#include <atomic>
#include <future>
#include <memory>
#include <mutex>
#include <vector>

class ScriptedService {
public:
  explicit ScriptedService(const std::vector<Reply>& replies) : m_replies(replies) {
    std::promise<quint16> port;
    m_thread.reset(QThread::create([this, &port] {
      QTcpServer listener;
      listener.listen(QHostAddress::LocalHost);
      port.set_value(listener.serverPort());
      while (!m_stops && listener.waitForNewConnection(-1))
        while (!m_stops && listener.hasPendingConnections()) // one wait may accept several
          serve(*std::unique_ptr<QTcpSocket>(listener.nextPendingConnection()));
    }));
    m_thread->start();
    m_port = port.get_future().get();
  }
  explicit ScriptedService(const Reply& only) : ScriptedService(std::vector<Reply>{only}) {}
  ScriptedService(const ScriptedService&) = delete;
  ScriptedService& operator=(const ScriptedService&) = delete;
  ~ScriptedService() {
    m_stops = true;
    QTcpSocket wake;
    wake.connectToHost(QHostAddress::LocalHost, m_port);
    wake.waitForConnected(patience);
    m_thread->wait();
  }

  int port() const { return m_port; }
  std::string url() const { return "http://127.0.0.1:" + std::to_string(m_port) + "/service/desktopservice.asmx"; }
  std::vector<Request> requests() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_requests;
  }
  /// The last of them; an empty one before the first.
  Request request() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_requests.empty() ? Request() : m_requests.back();
  }

private:
  /// Reads a request, or at least its first `limit` bytes.
  static std::string receive(QTcpSocket& connection, std::size_t limit) {
    std::string message;
    std::size_t expected = std::string::npos; // until the header is complete
    while (message.size() < std::min(limit, expected) && connection.waitForReadyRead(patience)) {
      message += connection.readAll().toStdString();
      const std::size_t end = message.find("\r\n\r\n");
      if (expected == std::string::npos && end != std::string::npos)
        expected = end + 4 + std::stoul("0" + Request::parsed(message).header("Content-Length"));
    }
    return message;
  }

  void serve(QTcpSocket& connection) {
    const Reply& script = m_replies[std::min(requests().size(), m_replies.size() - 1)];
    const Request request = Request::parsed(receive(connection, script.reads));
    {
      const std::lock_guard<std::mutex> lock(m_mutex);
      m_requests.push_back(request);
    }
    while (script.stalls && !m_stops)
      QThread::msleep(1);
    connection.write(script.bytes.data(), static_cast<qint64>(script.bytes.size()));
    while (connection.bytesToWrite() > 0 && connection.waitForBytesWritten(patience))
      continue;
  }

  const std::vector<Reply> m_replies;
  mutable std::mutex m_mutex;
  std::vector<Request> m_requests;
  std::atomic<bool> m_stops{false};
  quint16 m_port = 0;
  std::unique_ptr<QThread> m_thread; ///< a QThread, because Qt's sockets need one
};
