// Random values that depend on nothing but a seed: the same on every machine and with every standard library, whose
// engines are alike and whose distributions differ.
#pragma once

#include <cstdint>
#include <random>

class Random {
public:
  explicit Random(std::uint64_t seed) : m_engine(seed) {}

  std::uint64_t next() { return m_engine(); }
  /// 0 to count - 1; 0 when count is 0.
  std::size_t below(std::size_t count) { return count == 0 ? 0 : static_cast<std::size_t>(next() % count); }
  /// True once in `times`.
  bool once(std::size_t times) { return below(times) == 0; }
  template <class List> const auto& of(const List& list) { return list[below(std::size(list))]; }
  template <class Value> Value of(std::initializer_list<Value> list) { return list.begin()[below(list.size())]; }

private:
  std::mt19937_64 m_engine;
};
