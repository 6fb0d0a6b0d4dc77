// A blocking connection for the peer `limit`. It composes requests and scans replies in one buffer, which stays in the
// processor's cache. IPv4 addresses only.
#pragma once

#include <QtCore/QByteArray>

#include <cstring>
#include <string>

namespace bench {

constexpr std::size_t bufferSize = 256 << 10;

class FloorConnection {
public:
  /// Connects to "HOST:PORT". A failure is reported by the first flush.
  FloorConnection(const std::string& host, int port, char* buffer);
  FloorConnection(const FloorConnection&) = delete;
  FloorConnection& operator=(const FloorConnection&) = delete;
  ~FloorConnection();

  void put(const std::string& text);
  void putBase64(const QByteArray& bytes);
  /// Sends the rest of the request; from then on the buffer receives. False when the connect or a send failed.
  [[nodiscard]] bool flush();

  /// Unread bytes of the reply. The caller advances `read`.
  const char* read = nullptr;
  const char* end = nullptr;
  /// Moves the unread bytes to the front of the buffer and receives more behind them. False at the end of the reply,
  /// and when the buffer is full.
  bool receive();
  /// The next `character` of the reply; receives more until it is there. Null: the reply ends without it.
  const char* find(char character) {
    const void* found = memchr(read, character, static_cast<std::size_t>(end - read));
    return found ? static_cast<const char*>(found) : findFurther(character);
  }
  /// Bytes of the reply that were read.
  long long position() const { return m_received - (end - read); }

private:
  const char* findFurther(char character);

  int m_socket;
  bool m_good;
  char* m_buffer;
  std::size_t m_used = 0;
  long long m_received = 0;
};

} // namespace bench
