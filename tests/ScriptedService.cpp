#include "tests/ScriptedService.h"

#include <QtNetwork/QTcpServer>
#include <QtNetwork/QTcpSocket>

#include <algorithm>
#include <future>
#include <memory>

namespace {

constexpr int patience = 20000; // milliseconds; nothing here takes more than a fraction

/// Reads a request, or at least its first `limit` bytes.
std::string receive(QTcpSocket& connection, std::size_t limit) {
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

} // namespace

ScriptedService::ScriptedService(const std::vector<Reply>& replies) : m_replies(replies) {
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

ScriptedService::~ScriptedService() {
  m_stops = true;
  QTcpSocket wake;
  wake.connectToHost(QHostAddress::LocalHost, m_port);
  wake.waitForConnected(patience);
  m_thread->wait();
}

std::vector<Request> ScriptedService::requests() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_requests;
}

void ScriptedService::serve(QTcpSocket& connection) {
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
