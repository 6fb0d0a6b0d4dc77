// Runs the fuzzer's target without libFuzzer: on every file of the corpus, and on inputs that are made from them. Input
// N of a seed is the same on every machine. While an input runs, it is in FINDING: a crash leaves it there.
//   split_fuzz SEED RUNS FINDING CORPUS
#include "tests/Random.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);

namespace {

std::string contentOf(const std::filesystem::path& file) {
  std::ostringstream content;
  content << std::ifstream(file, std::ios::binary).rdbuf();
  return content.str();
}

std::vector<std::string> corpusOf(const char* folder) {
  std::vector<std::string> contents;
  for (const std::filesystem::path& file :
       std::set<std::filesystem::path>(std::filesystem::directory_iterator(folder), {}))
    contents.push_back(contentOf(file));
  return contents;
}

/// Position and length of a part of `text`: any bytes, a number, or from one tag or line to another.
std::pair<std::size_t, std::size_t> someRange(const std::string& text, Random& random) {
  const char* const edges = random.of({"\n", "<", "<", "0123456789"});
  const auto next = [&](std::size_t from) { return std::min(text.find_first_of(edges, from), text.size()); };
  const std::size_t at = random.below(text.size());
  if (random.once(3))
    return {at, random.below(random.of({2, 64}))};
  const std::size_t from = next(at);
  std::size_t to = next(from + 1);
  while (to < text.size() && !random.once(4))
    to = next(to + 1);
  return {from, to - from};
}

void mutate(std::string& text, const std::string& other, Random& random) {
  const auto [from, size] = someRange(text, random);
  const auto [otherFrom, otherSize] = someRange(other, random);
  const std::string insertions[] = {"", std::string(1, static_cast<char>(random.next())), text.substr(from, size),
                                    other.substr(otherFrom, otherSize)};
  text.replace(from, random.once(2) ? size : 0, random.of(insertions));
}

std::string madeOf(const std::vector<std::string>& corpus, Random random) {
  std::string text = random.of(corpus);
  for (std::size_t count = 1 + random.below(8); count > 0 && !text.empty(); --count)
    mutate(text, random.of(corpus), random);
  if (!text.empty())
    text[0] = static_cast<char>(random.next()); // the size of the pieces
  return text.substr(0, 20000);
}

} // namespace

int main(int count, char** arguments) {
  if (count != 5)
    return std::fprintf(stderr, "usage: split_fuzz SEED RUNS FINDING CORPUS\n"), 2;
  const std::uint64_t seed = std::stoull(arguments[1]), runs = std::stoull(arguments[2]);
  const std::filesystem::path finding = std::filesystem::absolute(arguments[3]);
  const std::vector<std::string> corpus = corpusOf(arguments[4]);
  if (corpus.empty())
    return std::fprintf(stderr, "split_fuzz: no corpus\n"), 2;
  std::printf("%zu files, %s inputs of seed %s; one that fails stays in %s\n", corpus.size(), arguments[2],
              arguments[1], finding.c_str());
  std::fflush(stdout);
  for (std::uint64_t number = 0; number < corpus.size() + runs; ++number) {
    const std::string input =
        number < corpus.size() ? corpus[number] : madeOf(corpus, Random(Random(seed).next() + number));
    std::ofstream(finding, std::ios::binary) << input;
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
  }
  std::filesystem::remove(finding);
  return 0;
}
