// Runs the fuzzer's target without libFuzzer: on every file of the corpus, and on inputs that are made from them. Input
// N of a seed is the same on every machine. While an input runs, it is in FINDING: a crash leaves it there.
//   split_fuzz SEED RUNS FINDING CORPUS DICTIONARY
#include "tests/Random.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
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
  std::vector<std::filesystem::path> files(std::filesystem::directory_iterator(folder), {});
  std::sort(files.begin(), files.end());
  std::vector<std::string> contents;
  for (const std::filesystem::path& file : files)
    contents.push_back(contentOf(file));
  return contents;
}

/// The words of a dictionary in libFuzzer's form: in quotes, one in a line, with \\, \" and \xNN.
std::vector<std::string> wordsOf(const char* dictionary) {
  std::vector<std::string> words;
  std::istringstream lines(contentOf(dictionary));
  for (std::string line; std::getline(lines, line);) {
    std::string word;
    for (std::size_t at = line.find('"') + 1; at > 0 && at < line.size() && line[at] != '"'; ++at) {
      const bool isEscaped = line[at] == '\\', isHex = isEscaped && line[at + 1] == 'x';
      word += isHex ? static_cast<char>(std::stoi(line.substr(at + 2, 2), nullptr, 16)) : line[at + isEscaped];
      at += isHex ? 3 : isEscaped;
    }
    words.push_back(word);
  }
  return words;
}

/// Position and length of a part of `text`: any bytes, or from one tag or line to another.
std::pair<std::size_t, std::size_t> someRange(const std::string& text, Random& random) {
  std::size_t from = random.below(text.size()), to = from + random.below(64);
  if (!random.once(3)) {
    const char* const edges = random.once(4) ? "\n" : "<";
    from = std::min(text.find_first_of(edges, from), text.size());
    for (to = from + 1; to < text.size() && !random.once(4);)
      to = std::min(text.find_first_of(edges, to + 1), text.size());
  }
  return {from, std::min(to, text.size()) - std::min(from, text.size())};
}

void mutate(std::string& text, const std::string& other, const std::vector<std::string>& words, Random& random) {
  static const std::string numbers[] = {"0", "-1", "7", "255", "65536", "2147483648", "99999999999", "FFFFFFFF"};
  const auto [from, size] = someRange(text, random);
  const auto [otherFrom, otherSize] = someRange(other, random);
  const std::size_t at = random.below(text.size() + 1);
  switch (random.below(8)) {
  case 0:
    text[random.below(text.size())] = static_cast<char>(random.next());
    break;
  case 1:
    text[random.below(text.size())] ^= static_cast<char>(1U << random.below(8));
    break;
  case 2:
    text.insert(at, random.of(words));
    break;
  case 3:
    text.erase(from, size);
    break;
  case 4:
    text.insert(at, text.substr(from, size));
    break;
  case 5:
    text.insert(from, other.substr(otherFrom, otherSize));
    break;
  case 6:
    text.replace(from, size, other, otherFrom, otherSize);
    break;
  default: {
    const std::size_t digit = std::min(text.find_first_of("0123456789", at), text.size());
    text.replace(digit, std::min(text.find_first_not_of("0123456789", digit), text.size()) - digit, random.of(numbers));
  }
  }
}

std::string madeOf(const std::vector<std::string>& corpus, const std::vector<std::string>& words, Random random) {
  std::string text = random.of(corpus);
  for (std::size_t count = 1 + random.below(8); count > 0 && !text.empty(); --count)
    mutate(text, random.of(corpus), words, random);
  if (!text.empty())
    text[0] = static_cast<char>(random.next()); // the size of the pieces
  return text.substr(0, 20000);
}

} // namespace

int main(int count, char** arguments) {
  if (count != 6)
    return std::fprintf(stderr, "usage: split_fuzz SEED RUNS FINDING CORPUS DICTIONARY\n"), 2;
  const std::uint64_t seed = std::stoull(arguments[1]), runs = std::stoull(arguments[2]);
  const std::filesystem::path finding = std::filesystem::absolute(arguments[3]);
  const std::vector<std::string> corpus = corpusOf(arguments[4]), words = wordsOf(arguments[5]);
  if (corpus.empty() || words.empty())
    return std::fprintf(stderr, "split_fuzz: no corpus or no dictionary\n"), 2;
  std::printf("%zu files, %s inputs of seed %s; one that fails stays in %s\n", corpus.size(), arguments[2],
              arguments[1], finding.c_str());
  std::fflush(stdout);
  for (std::uint64_t number = 0; number < corpus.size() + runs; ++number) {
    const std::string input =
        number < corpus.size() ? corpus[number] : madeOf(corpus, words, Random(Random(seed).next() + number));
    std::ofstream(finding, std::ios::binary) << input;
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
  }
  std::filesystem::remove(finding);
  return 0;
}
