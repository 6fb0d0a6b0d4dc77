#include "bench/FloorBase64.h"

#include <array>
#include <cstdint>
#include <cstring>

#ifdef __x86_64__
#include <immintrin.h>
#endif

namespace bench {

namespace {

constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint32_t notBase64 = 0x80000000U;

/// Table from 12 bits to two characters, in the order in which they lie in memory.
constexpr std::array<std::array<char, 2>, 4096> makePairs() {
  std::array<std::array<char, 2>, 4096> pairs{};
  for (std::size_t bits = 0; bits < pairs.size(); ++bits)
    pairs[bits] = {alphabet[bits >> 6], alphabet[bits & 63]};
  return pairs;
}

/// Tables, one for each of the four places of a group: from the character there to its bits in the group's three bytes,
/// as a little-endian number.
constexpr std::array<std::array<std::uint32_t, 256>, 4> makeBits() {
  std::array<std::array<std::uint32_t, 256>, 4> bits{};
  for (auto& place : bits) {
    for (auto& entry : place)
      entry = notBase64;
  }
  for (std::uint32_t value = 0; value < 64; ++value) {
    const auto character = static_cast<unsigned char>(alphabet[value]);
    bits[0][character] = value << 2;
    bits[1][character] = value >> 4 | (value & 15) << 12;
    bits[2][character] = (value >> 2) << 8 | (value & 3) << 22;
    bits[3][character] = value << 16;
  }
  return bits;
}

constexpr auto pairs = makePairs();
constexpr auto bits = makeBits();

std::size_t encodeByTable(const unsigned char* bytes, std::size_t size, char* to) {
  const char* const start = to;
  for (; size >= 3; size -= 3, bytes += 3, to += 4) {
    const std::uint32_t group = std::uint32_t{bytes[0]} << 16 | std::uint32_t{bytes[1]} << 8 | bytes[2];
    memcpy(to, pairs[group >> 12].data(), 2);
    memcpy(to + 2, pairs[group & 4095].data(), 2);
  }
  return static_cast<std::size_t>(to - start);
}

std::size_t decodeByTable(const char* text, std::size_t size, unsigned char* to) {
  const auto* from = reinterpret_cast<const unsigned char*>(text);
  std::size_t taken = 0;
  for (; size - taken >= 4; taken += 4, from += 4, to += 3) {
    const std::uint32_t group = bits[0][from[0]] | bits[1][from[1]] | bits[2][from[2]] | bits[3][from[3]];
    if (group & notBase64)
      break;
    memcpy(to, &group, 4);
  }
  return taken;
}

#ifdef __x86_64__

/// A register with the same 16 bytes in its lower and its upper half.
__attribute__((target("avx2"))) __m256i twice(const char (&bytes)[17]) {
  return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes)));
}

__attribute__((target("avx2"))) __m256i load(const void* from) {
  return _mm256_loadu_si256(static_cast<const __m256i*>(from));
}

// Encodes 24 bytes to 32 characters at a time: spreads 12 bytes over each half of a register, cuts them into 6-bit
// values with two multiplications, and adds to each value the distance to its character, which depends on the value's
// range.
__attribute__((target("avx2"))) std::size_t encodeByVector(const unsigned char* bytes, std::size_t size, char* to) {
  const __m256i spread = twice("\1\0\2\1\4\3\5\4\7\6\10\7\12\11\13\12");
  const __m256i distances = twice("\101\107\374\374\374\374\374\374\374\374\374\374\355\360\0\0");
  std::size_t written = 0;
  for (; size >= 28; size -= 24, bytes += 24, written += 32) {
    const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
    const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + 12));
    const __m256i in = _mm256_shuffle_epi8(_mm256_set_m128i(high, low), spread);
    const __m256i odd =
        _mm256_mulhi_epu16(_mm256_and_si256(in, _mm256_set1_epi32(0x0fc0fc00)), _mm256_set1_epi32(0x04000040));
    const __m256i even =
        _mm256_mullo_epi16(_mm256_and_si256(in, _mm256_set1_epi32(0x003f03f0)), _mm256_set1_epi32(0x01000010));
    const __m256i values = _mm256_or_si256(odd, even);
    const __m256i ranges = _mm256_sub_epi8(_mm256_subs_epu8(values, _mm256_set1_epi8(51)),
                                           _mm256_cmpgt_epi8(values, _mm256_set1_epi8(25)));
    const __m256i out = _mm256_add_epi8(values, _mm256_shuffle_epi8(distances, ranges));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to + written), out);
  }
  return written + encodeByTable(bytes, size, to + written);
}

// Decodes 32 characters to 24 bytes at a time. The upper and the lower four bits of a character select a set of bits
// each; the sets have a common bit only if the character is not of the alphabet. The upper four bits also select the
// distance from the character to its value. Two multiplications join the values.
__attribute__((target("avx2"))) std::size_t decodeByVector(const char* text, std::size_t size, unsigned char* to) {
  const __m256i lower = twice("\25\21\21\21\21\21\21\21\21\21\23\32\33\33\33\32");
  const __m256i upper = twice("\20\20\1\2\4\10\4\10\20\20\20\20\20\20\20\20");
  const __m256i distances = twice("\0\20\23\4\277\277\271\271\0\0\0\0\0\0\0\0");
  const __m256i pack = twice("\2\1\0\6\5\4\12\11\10\16\15\14\377\377\377\377");
  const __m256i join = _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 7, 7);
  const __m256i slash = _mm256_set1_epi8('/');
  std::size_t taken = 0;
  for (; size - taken >= 45; taken += 32, to += 24) { // 45: leaves room for the 8 bytes written too many
    const __m256i in = load(text + taken);
    const __m256i high = _mm256_and_si256(_mm256_srli_epi32(in, 4), slash);
    const __m256i low = _mm256_and_si256(in, slash);
    if (!_mm256_testz_si256(_mm256_shuffle_epi8(lower, low), _mm256_shuffle_epi8(upper, high)))
      break;
    const __m256i range = _mm256_add_epi8(_mm256_cmpeq_epi8(in, slash), high);
    const __m256i values = _mm256_add_epi8(in, _mm256_shuffle_epi8(distances, range));
    const __m256i halves = _mm256_maddubs_epi16(values, _mm256_set1_epi32(0x01400140));
    const __m256i groups = _mm256_madd_epi16(halves, _mm256_set1_epi32(0x00011000));
    const __m256i out = _mm256_permutevar8x32_epi32(_mm256_shuffle_epi8(groups, pack), join);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), out);
  }
  return taken + decodeByTable(text + taken, size - taken, to);
}

const bool hasVector = __builtin_cpu_supports("avx2") != 0;

#else

constexpr bool hasVector = false;
constexpr auto encodeByVector = encodeByTable;
constexpr auto decodeByVector = decodeByTable;

#endif

} // namespace

std::size_t encodeBase64(const unsigned char* bytes, std::size_t size, char* to) {
  return hasVector ? encodeByVector(bytes, size, to) : encodeByTable(bytes, size, to);
}

std::size_t decodeBase64(const char* text, std::size_t size, unsigned char* to) {
  return hasVector ? decodeByVector(text, size, to) : decodeByTable(text, size, to);
}

} // namespace bench
