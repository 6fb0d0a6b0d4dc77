#include "protocol/binding/Base64.h"

#include <array>
#include <cstdint>
#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace tarnwell::base64 {
namespace {

constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr std::array<std::int8_t, 256> makeValues() {
  std::array<std::int8_t, 256> values{};
  for (auto& value : values)
    value = -1;
  for (int i = 0; i < 64; ++i)
    values[static_cast<unsigned char>(alphabet[i])] = static_cast<std::int8_t>(i);
  return values;
}

constexpr std::array<std::int8_t, 256> values = makeValues();

void encodeScalar(const unsigned char* bytes, std::size_t size, char* text) {
  for (; size >= 3; size -= 3, bytes += 3, text += 4) {
    const unsigned group = static_cast<unsigned>(bytes[0] << 16 | bytes[1] << 8 | bytes[2]);
    for (int i = 0; i < 4; ++i)
      text[i] = alphabet[group >> (18 - 6 * i) & 63];
  }
  if (size == 0)
    return;
  const unsigned char rest[3] = {bytes[0], size == 2 ? bytes[1] : static_cast<unsigned char>(0), 0};
  encodeScalar(rest, sizeof rest, text);
  std::memset(text + size + 1, '=', 3 - size);
}

std::size_t decodeScalar(const char* text, std::size_t size, unsigned char* bytes) {
  const char* const start = text;
  for (; size >= 4; size -= 4, text += 4, bytes += 3) {
    int any = 0;
    unsigned group = 0;
    for (int i = 0; i < 4; ++i) {
      const int value = values[static_cast<unsigned char>(text[i])];
      any |= value;
      group = group << 6 | static_cast<unsigned>(value);
    }
    if (any < 0) // one of the four was -1
      break;
    bytes[0] = static_cast<unsigned char>(group >> 16);
    bytes[1] = static_cast<unsigned char>(group >> 8);
    bytes[2] = static_cast<unsigned char>(group);
  }
  return static_cast<std::size_t>(text - start);
}

#if defined(__x86_64__)
// 24 bytes and 32 characters a step, by the method of W. Mula and D. Lemire, "Faster Base64 Encoding and Decoding using
// AVX2 Instructions" (2018): spread or gather six-bit fields with multiplications, translate with in-register tables.

[[gnu::target("avx2")]] std::size_t encodeAvx2(const unsigned char* bytes, std::size_t size, char* text) {
  // Each 32-bit lane gets the bytes b1 b0 b2 b1 of its group of three.
  const __m256i spread = _mm256_broadcastsi128_si256(_mm_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10));
  // What to add to a field to get its character, by class: A-Z, a-z, ten digits, '+', '/'.
  const __m256i offsets = _mm256_broadcastsi128_si256(_mm_setr_epi8('A', 'a' - 26, '0' - 52, '0' - 52, '0' - 52,
                                                                    '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52,
                                                                    '0' - 52, '0' - 52, '+' - 62, '/' - 63, 0, 0));
  const std::size_t steps = size < 28 ? 0 : (size - 4) / 24; // a step reads four bytes beyond its 24
  for (std::size_t left = steps; left > 0; --left, bytes += 24, text += 32) {
    const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
    const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + 12));
    const __m256i groups = _mm256_shuffle_epi8(_mm256_set_m128i(high, low), spread);
    const __m256i odd =
        _mm256_mulhi_epu16(_mm256_and_si256(groups, _mm256_set1_epi32(0x0fc0fc00)), _mm256_set1_epi32(0x04000040));
    const __m256i even =
        _mm256_mullo_epi16(_mm256_and_si256(groups, _mm256_set1_epi32(0x003f03f0)), _mm256_set1_epi32(0x01000010));
    const __m256i fields = _mm256_or_si256(odd, even);
    // Class: 0 for 0..25, 1 for 26..51, 2 to 13 for 52..63.
    const __m256i classes = _mm256_sub_epi8(_mm256_subs_epu8(fields, _mm256_set1_epi8(51)),
                                            _mm256_cmpgt_epi8(fields, _mm256_set1_epi8(25)));
    const __m256i characters = _mm256_add_epi8(fields, _mm256_shuffle_epi8(offsets, classes));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(text), characters);
  }
  return steps * 24;
}

[[gnu::target("avx2")]] std::size_t decodeAvx2(const char* text, std::size_t size, unsigned char* bytes) {
  const char* const start = text;
  // A character is plain when the sets of its high and its low half have no bit in common.
  const __m256i lowSets = _mm256_broadcastsi128_si256(
      _mm_setr_epi8(0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x13, 0x1a, 0x1b, 0x1b, 0x1b, 0x1a));
  const __m256i highSets = _mm256_broadcastsi128_si256(
      _mm_setr_epi8(0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10));
  // What to add to a character to get its field, by high half; '/' shares its half with '+' and takes the slot below.
  const __m256i offsets = _mm256_broadcastsi128_si256(
      _mm_setr_epi8(0, 63 - '/', 62 - '+', 52 - '0', -'A', -'A', 26 - 'a', 26 - 'a', 0, 0, 0, 0, 0, 0, 0, 0));
  const __m256i gather =
      _mm256_broadcastsi128_si256(_mm_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1));
  const __m256i slash = _mm256_set1_epi8('/');
#pragma GCC unroll 4
  for (; size >= 32; size -= 32, text += 32, bytes += 24) {
    const __m256i characters = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(text));
    const __m256i high = _mm256_and_si256(_mm256_srli_epi32(characters, 4), _mm256_set1_epi8(0x0f));
    const __m256i low = _mm256_and_si256(characters, _mm256_set1_epi8(0x0f));
    if (!_mm256_testz_si256(_mm256_shuffle_epi8(lowSets, low), _mm256_shuffle_epi8(highSets, high)))
      break;
    const __m256i slot = _mm256_add_epi8(high, _mm256_cmpeq_epi8(characters, slash));
    const __m256i fields = _mm256_add_epi8(characters, _mm256_shuffle_epi8(offsets, slot));
    const __m256i pairs = _mm256_maddubs_epi16(fields, _mm256_set1_epi32(0x01400140));
    const __m256i groups = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000));
    const __m256i packed =
        _mm256_permutevar8x32_epi32(_mm256_shuffle_epi8(groups, gather), _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(bytes), packed); // 24 bytes count, 8 are slack
  }
  return static_cast<std::size_t>(text - start);
}

bool hasAvx2() { return __builtin_cpu_supports("avx2") != 0; }
#else
std::size_t encodeAvx2(const unsigned char*, std::size_t, char*) { return 0; }
std::size_t decodeAvx2(const char*, std::size_t, unsigned char*) { return 0; }
bool hasAvx2() { return false; }
#endif

} // namespace

void encode(const unsigned char* bytes, std::size_t size, char* text) {
  const std::size_t done = hasAvx2() ? encodeAvx2(bytes, size, text) : 0;
  encodeScalar(bytes + done, size - done, text + encodedSize(done));
}

std::size_t decodeGroups(const char* text, std::size_t size, unsigned char* bytes) {
  const std::size_t done = size >= 32 && hasAvx2() ? decodeAvx2(text, size, bytes) : 0;
  return done + decodeScalar(text + done, size - done, bytes + done / 4 * 3);
}

} // namespace tarnwell::base64
