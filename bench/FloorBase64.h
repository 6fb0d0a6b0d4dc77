// Fast base64 for the floor: with AVX2 where the processor has it, else with tables. Whole groups only; the caller does
// the last, incomplete group and the padding. RFC 4648 section 4. Any thread.
#pragma once

#include <cstddef>

namespace bench {

/// Encodes `size` bytes, a multiple of 3, into `to`. Returns the characters written.
std::size_t encodeBase64(const unsigned char* bytes, std::size_t size, char* to);

/// Decodes groups of four characters of the alphabet and stops before the first other group. Returns the characters
/// taken; three bytes were written for every four, and up to 8 bytes behind them are overwritten.
std::size_t decodeBase64(const char* text, std::size_t size, unsigned char* to);

} // namespace bench
