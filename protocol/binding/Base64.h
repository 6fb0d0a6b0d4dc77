// The base64 codec (RFC 4648 section 4): whole blocks, no allocation. Any thread.
#pragma once

#include <cstddef>

namespace tarnwell::base64 {

/// Characters that `size` bytes become, padding included.
constexpr std::size_t encodedSize(std::size_t size) { return (size + 2) / 3 * 4; }

/// Encodes `size` bytes to encodedSize(size) characters at `text`.
void encode(const unsigned char* bytes, std::size_t size, char* text);

/// Room beyond the decoded bytes that decodeGroups may write to.
inline constexpr std::size_t decodeSlack = 8;

/// Decodes whole groups of four plain characters, up to the first group that holds anything else. Three bytes per
/// group go to `bytes`, which needs decodeSlack bytes more. Returns the number of characters taken.
std::size_t decodeGroups(const char* text, std::size_t size, unsigned char* bytes);

} // namespace tarnwell::base64
