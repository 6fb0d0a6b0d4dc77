#include "localservice/ChunkFraming.h"

#include <algorithm>

namespace localservice {

namespace {

constexpr unsigned longestSize = 15; // hexadecimal digits

/// The value of a hexadecimal digit; 16 for another character.
unsigned digit(char c) {
  if (c >= '0' && c <= '9')
    return static_cast<unsigned>(c - '0');
  const char lower = static_cast<char>(c | 0x20);
  return lower >= 'a' && lower <= 'f' ? static_cast<unsigned>(lower - 'a' + 10) : 16;
}

} // namespace

bool ChunkFraming::check(const char* bytes, std::size_t size) {
  const char* const end = bytes + size;
  while (bytes < end && part != End) {
    if (part == Data && left > 0) {
      const auto skipped = std::min<std::uint64_t>(left, static_cast<std::uint64_t>(end - bytes));
      left -= skipped;
      bytes += skipped;
    } else if (!checkOne(*bytes++)) {
      return false;
    }
  }
  return true;
}

bool ChunkFraming::checkOne(char c) {
  if (part == Data)
    part = DataEnd;
  if (c == '\n')
    return endLine();
  if (c == '\r')
    return true;
  ++characters;
  if (part == Size && digit(c) < 16) {
    left = left << 4 | digit(c);
    return characters <= longestSize;
  }
  if (part == Size && characters > 1 && (c == ';' || c == ' ' || c == '\t'))
    part = Extension;
  return part == Extension || part == Trailer;
}

bool ChunkFraming::endLine() {
  const bool isEmpty = characters == 0;
  characters = 0;
  if (part == DataEnd) {
    part = Size;
    return true;
  }
  if (part == Trailer) {
    part = isEmpty ? End : Trailer;
    return true;
  }
  part = left > 0 ? Data : Trailer;
  return !isEmpty;
}

} // namespace localservice
