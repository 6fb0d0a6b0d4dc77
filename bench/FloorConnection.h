// A blocking connection for the floor: requests are composed, and replies scanned, in one block that stays warm in the
// cache. IPv4 addresses only.
#pragma once

#include <QtCore/QByteArray>

#include <cstring>
#include <string>

namespace bench {

constexpr std::size_t blockSize = 256 << 10;

class FloorConnection {
public:
  /// Connects to "HOST:PORT"; what fails here, fails at the first flush.
  FloorConnection(const std::string& host, int port, char* block);
  FloorConnection(const FloorConnection&) = delete;
  FloorConnection& operator=(const FloorConnection&) = delete;
  ~FloorConnection();

  void put(const std::string& text);
  void putBase64(const QByteArray& bytes);
  /// Sends what is left; from here on the block receives. False when anything since the connect failed.
  [[nodiscard]] bool flush();

  /// Unread bytes of the reply; `read` is the caller's to advance.
  const char* read = nullptr;
  const char* end = nullptr;
  /// Receives more behind the unread bytes, which move to the front of the block. False at the end of the reply, and
  /// when the block is full.
  bool receive();
  /// The next `character`, received if need be, or null.
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
  char* m_block;
  std::size_t m_used = 0;
  long long m_received = 0;
};

} // namespace bench
