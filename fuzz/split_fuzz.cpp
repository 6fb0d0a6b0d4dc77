// Feeds the same bytes to an operation of the host interface twice, as an answer that arrives whole and in pieces. The
// first byte is the size of the pieces, the answer's text picks the operation. A finding is a difference in what the
// host gets, a crash or a leak.
//   split_fuzz -max_len=20000 -dict=fuzz/reply.dict CORPUS fuzz/corpus
#include "fuzz/Delivery.h"
#include "tests/HostOperations.h"

#include <cstdio>

namespace {

std::string outcome(const HostOperation& operation, Delivery delivery) {
  Host host("http://fuzz/");
  connectTo(host.context(), delivery);
  const int result = operation.call(host);
  return std::to_string(result) + "\n" + host.seen();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  if (size < 2)
    return 0;
  const std::vector<HostOperation>& all = hostOperations();
  const std::string_view text(reinterpret_cast<const char*>(bytes), size);
  const auto named = [text](const HostOperation& row) {
    return text.find(std::string(row.name) + "Response") != text.npos;
  };
  const auto found = std::find_if(all.begin(), all.end(), named);
  const HostOperation& operation = found == all.end() ? all[0] : *found;
  const Delivery whole{bytes + 2, size - 2, size}, split{bytes + 2, size - 2, std::max<std::size_t>(bytes[0] & 15, 1)};
  const std::string expected = outcome(operation, whole), seen = outcome(operation, split);
  if (seen == expected)
    return 0;
  std::fprintf(stderr, "%s\nin pieces of %zu: %s\nwhole: %s\n", std::string(text).c_str(), split.piece, seen.c_str(),
               expected.c_str());
  std::abort();
}
