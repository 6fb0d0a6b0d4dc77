#include "tests/ScriptedService.h"

#include <arpa/inet.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <strings.h>

namespace {

constexpr int patienceSeconds = 20;

std::string head(int status, const std::string& headers, const std::string& framing) {
  const bool typed = headers.find("Content-Type:") != std::string::npos;
  return "HTTP/1.1 " + std::to_string(status) + " Scripted\r\n" + headers +
         (typed ? "" : "Content-Type: application/soap+xml; charset=utf-8\r\n") + framing + "\r\n\r\n";
}

/// Reads a request, or its first `limit` bytes.
std::string receive(int connection, std::size_t limit) {
  std::string message;
  std::vector<char> block(1 << 18);
  std::size_t expected = std::string::npos; // until the header is complete
  while (message.size() < std::min(limit, expected)) {
    const ssize_t count = recv(connection, block.data(), std::min(block.size(), limit - message.size()), 0);
    if (count <= 0)
      break;
    message.append(block.data(), static_cast<std::size_t>(count));
    const std::size_t end = message.find("\r\n\r\n");
    if (expected == std::string::npos && end != std::string::npos)
      expected = end + 4 + std::stoul("0" + Request::parsed(message).header("Content-Length"));
  }
  return message;
}

} // namespace

Reply reply(int status, const std::string& body, const std::string& headers) {
  return {head(status, headers, "Content-Length: " + std::to_string(body.size())) + body};
}

Reply chunks(std::size_t size, int status, const std::string& body) {
  std::string bytes = head(status, "", "Transfer-Encoding: chunked");
  for (std::size_t at = 0; at < body.size(); at += size) {
    const std::string chunk = body.substr(at, size);
    char length[20];
    std::snprintf(length, sizeof length, "%zx\r\n", chunk.size());
    bytes += length + chunk + "\r\n";
  }
  return {bytes + "0\r\n\r\n"};
}

Reply falseLength(const std::string& body) { return {head(200, "", "Content-Length: 99999999999") + body}; }

Reply hangUp(std::size_t count) { return {"", count}; }

Request Request::parsed(const std::string& message) {
  const std::size_t end = message.find("\r\n\r\n");
  return end == std::string::npos ? Request{message, {}} : Request{message.substr(0, end), message.substr(end + 4)};
}

std::string Request::header(const std::string& name) const {
  const std::string start = "\r\n" + name + ": ";
  for (std::size_t at = head.find("\r\n"); at != std::string::npos; at = head.find("\r\n", at + 2))
    if (strncasecmp(head.c_str() + at, start.c_str(), start.size()) == 0)
      return head.substr(at + start.size(), head.find("\r\n", at + 2) - at - start.size());
  return {};
}

ScriptedService::ScriptedService(const std::vector<Reply>& replies)
    : m_replies(replies.empty() ? std::vector<Reply>{hangUp(std::string::npos)} : replies),
      m_listener(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)), m_stop(eventfd(0, EFD_CLOEXEC)) {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  auto* const any = reinterpret_cast<sockaddr*>(&address);
  if (bind(m_listener, any, size) != 0 || listen(m_listener, 16) != 0 || getsockname(m_listener, any, &size) != 0)
    throw std::runtime_error("the scripted service cannot listen on loopback");
  m_port = ntohs(address.sin_port);
  m_thread = std::thread([this] { run(); });
}

ScriptedService::~ScriptedService() {
  release();
  eventfd_write(m_stop, 1);
  m_thread.join();
  close(m_listener);
  close(m_stop);
}

void ScriptedService::release() {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_released = true;
  m_change.notify_all();
}

std::string ScriptedService::url() const {
  return "http://127.0.0.1:" + std::to_string(m_port) + "/service/desktopservice.asmx";
}

std::vector<Request> ScriptedService::requests() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_requests;
}

void ScriptedService::run() {
  pollfd waits[] = {{m_listener, POLLIN, 0}, {m_stop, POLLIN, 0}};
  while (poll(waits, 2, -1) > 0 && waits[1].revents == 0) {
    const int connection = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
    const timeval patience{patienceSeconds, 0};
    setsockopt(connection, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    setsockopt(connection, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    serve(connection);
    close(connection);
  }
}

void ScriptedService::serve(int connection) {
  std::unique_lock<std::mutex> lock(m_mutex);
  const Reply& script = m_replies[std::min(m_requests.size(), m_replies.size() - 1)];
  lock.unlock();
  const std::string message = receive(connection, script.reads);
  lock.lock();
  m_requests.push_back(Request::parsed(message));
  if (script.stalls)
    m_change.wait_for(lock, std::chrono::seconds(patienceSeconds), [this] { return m_released; });
  lock.unlock();
  for (std::size_t at = 0; at < script.bytes.size();) {
    const ssize_t count = send(connection, script.bytes.data() + at, script.bytes.size() - at, MSG_NOSIGNAL);
    if (count <= 0)
      return;
    at += static_cast<std::size_t>(count);
  }
}
