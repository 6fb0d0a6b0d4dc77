// Runs the fuzzer's target without libFuzzer: on every file of the corpus, and on inputs that are made from them. Input
// N of a seed is the same on every machine. While an input runs, it is in FINDING: a crash leaves it there.
//   split_fuzz SEED RUNS FINDING CORPUS
#include "tests/Random.h"

#include <QtCore/QDir>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);

namespace {

std::vector<std::string> corpusOf(const char* folder) {
  std::vector<std::string> contents;
  for (const QFileInfo& entry : QDir(folder).entryInfoList(QDir::Files, QDir::Name))
    if (QFile file(entry.filePath()); file.open(QIODevice::ReadOnly))
      contents.push_back(file.readAll().toStdString());
  return contents;
}

/// An input of the corpus in which parts of others replace parts.
std::string madeOf(const std::vector<std::string>& corpus, Random random) {
  std::string text = random.of(corpus).substr(1);
  for (std::size_t count = 1 + random.below(8); count > 0; --count) {
    const std::string& other = random.of(corpus);
    const std::size_t most = random.of<std::size_t>({2, 16, 256}), at = random.below(text.size()),
                      size = random.below(most);
    const std::size_t from = random.below(other.size());
    text.replace(at, size, other, from, random.below(most));
  }
  return static_cast<char>(random.next()) + text.substr(0, 20000); // the first byte is the size of the pieces
}

} // namespace

int main(int count, char** arguments) {
  if (count != 5)
    return std::fprintf(stderr, "usage: split_fuzz SEED RUNS FINDING CORPUS\n"), 2;
  const std::uint64_t seed = std::stoull(arguments[1]), runs = std::stoull(arguments[2]);
  const std::vector<std::string> corpus = corpusOf(arguments[4]);
  if (corpus.empty())
    return std::fprintf(stderr, "split_fuzz: no corpus\n"), 2;
  std::printf("%zu files, %s inputs of seed %s; one that fails stays in %s\n", corpus.size(), arguments[2],
              arguments[1], qPrintable(QFileInfo(arguments[3]).absoluteFilePath()));
  std::fflush(stdout);
  for (std::uint64_t number = 0; number < corpus.size() + runs; ++number) {
    const std::string input =
        number < corpus.size() ? corpus[number] : madeOf(corpus, Random(Random(seed).next() + number));
    std::ofstream(arguments[3], std::ios::binary) << input;
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
  }
  return std::remove(arguments[3]);
}
