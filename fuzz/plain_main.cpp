// Runs a fuzzer's function without the fuzzer, for compilers that have none: on the files of a folder and the
// operations' good answers, and on many copies of each with some bytes changed.
//   split_test FOLDER COUNT
#include "tests/HostOperations.h"
#include "tests/Http.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);

int main(int, char** arguments) {
  std::vector<std::string> seeds;
  for (const auto& entry : std::filesystem::directory_iterator(arguments[1])) {
    std::ifstream file(entry.path(), std::ios::binary);
    seeds.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
  }
  for (const HostOperation& operation : hostOperations())
    seeds.insert(seeds.end(),
                 {"  " + reply(200, operation.answer()).bytes, "  " + chunks(50, 200, operation.answer()).bytes});
  const unsigned start = std::random_device()();
  std::cout << "seed " << start << std::endl;
  std::mt19937 random(start);
  const std::string likely = "<>/&;\"'=#:![]-? \n0a\x80\xFF";
  for (int round = std::stoi(arguments[2]); round > 0; --round)
    for (std::string bytes : seeds) {
      bytes[0] = static_cast<char>(random());
      for (auto changes = random() % 3; changes > 0; --changes)
        bytes[2 + random() % (bytes.size() - 2)] =
            random() % 2 ? likely[random() % likely.size()] : static_cast<char>(random());
      LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
}
