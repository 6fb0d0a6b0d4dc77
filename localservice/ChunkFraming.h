// Checks the framing of content that comes in chunks (RFC 9112 section 7.1), while the runtime decodes it: the runtime
// skips what it does not understand and waits for more. One thread.
#pragma once

#include <cstddef>
#include <cstdint>

namespace localservice {

/// The framing of one request's content.
class ChunkFraming {
public:
  /// Checks the next `size` bytes. False when they break the rules. Bytes after the end are not looked at.
  [[nodiscard]] bool check(const char* bytes, std::size_t size);

private:
  bool checkOne(char c);
  bool endLine();

  enum { Size, Extension, Data, DataEnd, Trailer, End } part = Size;
  std::uint64_t left = 0;  ///< bytes of the chunk that follow
  unsigned characters = 0; ///< in the line so far
};

} // namespace localservice
