// Feeds the same bytes to an operation of the host interface twice, as an answer that arrives whole and in pieces, the
// second time perhaps without the host's memory for blocks. The first byte is the size of the pieces and, by its
// highest bit, whose memory; the answer's text picks the operation. A finding is a difference in what the host gets, a
// next call that fails, a crash or a leak.
//   split_fuzz -max_len=20000 -dict=fuzz/reply.dict CORPUS fuzz/corpus
#include "protocol/binding/BlockMemory.h"
#include "tests/HostOperations.h"
#include "tests/WireClient.h"

namespace {

std::string outcome(const HostOperation& operation, const std::string& reply, std::size_t piece, bool ownMemory) {
  Host host("http://fuzz/");
  Wire wire(host.context());
  wire.reply = reply;
  wire.piece = piece;
  if (ownMemory)
    tarnwell::setBlockMemory(host.context(), nullptr);
  const int result = operation.call(host);
  const std::string seen = std::to_string(result) + "\n" + host.seen();
  wire.reply = ::reply(200, operation.answer()).bytes;
  return operation.call(host) == 0 ? seen : "the next call fails after " + seen;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  if (size < 2)
    return 0;
  const std::vector<HostOperation>& all = hostOperations();
  const std::string text(bytes + 2, bytes + size);
  const auto named = [&text](const HostOperation& row) {
    return text.find(std::string(row.name) + "Response") != text.npos;
  };
  const auto found = std::find_if(all.begin(), all.end(), named);
  const HostOperation& operation = found == all.end() ? all[0] : *found;
  const std::size_t piece = std::max<std::size_t>(bytes[0] & 15, 1);
  const std::string expected = outcome(operation, text, 0, false);
  const std::string seen = outcome(operation, text, piece, bytes[0] & 0x80);
  if (seen == expected && seen.find("the next") != 0)
    return 0;
  std::fprintf(stderr, "%s\nin pieces of %zu: %s\nwhole: %s\n", text.c_str(), piece, seen.c_str(), expected.c_str());
  std::abort();
}
