#include "bench/FloorConnection.h"

#include "protocol/binding/Base64.h"

#include <algorithm>
#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

namespace bench {

FloorConnection::FloorConnection(const std::string& host, int port, char* buffer)
    : m_socket(socket(AF_INET, SOCK_STREAM, 0)), m_buffer(buffer) {
  const int on = 1;
  setsockopt(m_socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  inet_pton(AF_INET, host.c_str(), &address.sin_addr);
  m_good = connect(m_socket, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
}

FloorConnection::~FloorConnection() { close(m_socket); }

void FloorConnection::put(const std::string& text) {
  if (m_used + text.size() > bufferSize && !flush())
    return;
  memcpy(m_buffer + m_used, text.data(), text.size());
  m_used += text.size();
}

void FloorConnection::putBase64(const QByteArray& bytes) {
  const auto* from = reinterpret_cast<const unsigned char*>(bytes.constData());
  auto left = static_cast<std::size_t>(bytes.size());
  while (left > 0) { // whole groups of three bytes, except at the end
    const std::size_t size = std::min(left, (bufferSize - m_used) / 4 * 3);
    tarnwell::base64::encode(from, size, m_buffer + m_used);
    m_used += tarnwell::base64::encodedSize(size);
    from += size;
    left -= size;
    if (left > 0 && !flush())
      return;
  }
}

bool FloorConnection::flush() {
  for (std::size_t sent = 0; m_good && sent < m_used;) {
    const ssize_t took = send(m_socket, m_buffer + sent, m_used - sent, MSG_NOSIGNAL);
    m_good = took > 0;
    sent += m_good ? static_cast<std::size_t>(took) : 0;
  }
  m_used = 0;
  read = end = m_buffer;
  return m_good;
}

bool FloorConnection::receive() {
  const auto unread = static_cast<std::size_t>(end - read);
  memmove(m_buffer, read, unread);
  read = m_buffer;
  end = m_buffer + unread;
  if (unread == bufferSize)
    return false;
  const ssize_t got = recv(m_socket, m_buffer + unread, bufferSize - unread, 0);
  if (got <= 0)
    return false;
  end += got;
  m_received += got;
  return true;
}

const char* FloorConnection::findFurther(char character) {
  for (;;) {
    const auto searched = static_cast<std::size_t>(end - read);
    if (!receive())
      return nullptr;
    const auto unread = static_cast<std::size_t>(end - read);
    if (const void* found = memchr(read + searched, character, unread - searched))
      return static_cast<const char*>(found);
  }
}

} // namespace bench
