// Random values that depend on nothing but a seed: the same on every machine and with every standard library, whose own
// distributions differ.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>

/// SplitMix64 (Steele, Lea and Flood 2014).
class Random {
public:
  explicit Random(std::uint64_t seed) : m_state(seed) {}

  std::uint64_t next() {
    std::uint64_t bits = m_state += 0x9E3779B97F4A7C15;
    bits = (bits ^ bits >> 30) * 0xBF58476D1CE4E5B9;
    bits = (bits ^ bits >> 27) * 0x94D049BB133111EB;
    return bits ^ bits >> 31;
  }
  /// 0 to count - 1; 0 when count is 0.
  std::size_t below(std::size_t count) { return count == 0 ? 0 : static_cast<std::size_t>(next() % count); }
  /// True once in `times`.
  bool once(std::size_t times) { return below(times) == 0; }
  template <class List> const auto& of(const List& list) { return list[below(std::size(list))]; }
  template <class Value> Value of(std::initializer_list<Value> list) { return list.begin()[below(list.size())]; }

private:
  std::uint64_t m_state;
};
