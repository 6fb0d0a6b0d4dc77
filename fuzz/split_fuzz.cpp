// Feeds the same bytes to an operation of the host interface and to one of the client twice: as an answer that arrives
// whole, and in pieces. The first byte is the size of the pieces; its highest bit says whether the second answer is
// read without the host's memory for blocks. The answer's text selects the operations. A finding is a difference
// between the two results, a next call that fails, a crash or a leak.
// scripts/fuzz runs it with libFuzzer; as a test, runs.cpp makes the inputs.
#include "protocol/binding/Receiver.h"
#include "tests/HostOperations.h"
#include "tests/WireClient.h"

namespace {

/// The row whose response element `text` contains; if there is none, the first row.
template <class Rows> const auto& named(const Rows& all, const std::string& text) {
  const auto found = std::find_if(std::begin(all), std::end(all),
                                  [&text](const auto& row) { return text.find(row.name + "Response") != text.npos; });
  return found == std::end(all) ? *std::begin(all) : *found;
}

std::string outcome(const std::string& reply, std::size_t piece, bool ownMemory) {
  const HostOperation& operation = named(hostOperations(), reply);
  Host host("http://fuzz/");
  Wire wire(host.context());
  WireClient client;
  wire.reply = client.reply = reply;
  wire.piece = client.piece = piece;
  if (ownMemory)
    tarnwell::setReceiver(host.context(), nullptr);
  const int result = operation.call(host);
  const std::string seen =
      std::to_string(result) + "\n" + host.seen() + "\n" + named(clientOperations, reply).ask(client, Proxy);
  wire.reply = ::reply(200, operation.answer()).bytes;
  return operation.call(host) == 0 ? seen : "the next call fails after " + seen;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  if (size < 2)
    return 0;
  const std::string text(bytes + 2, bytes + size);
  const std::size_t piece = std::max<std::size_t>(bytes[0] & 15, 1);
  const std::string expected = outcome(text, 0, false);
  const std::string seen = outcome(text, piece, bytes[0] & 0x80);
  if (seen == expected && seen.find("the next") != 0)
    return 0;
  std::fprintf(stderr, "%s\nin pieces of %zu: %s\nwhole: %s\n", text.c_str(), piece, seen.c_str(), expected.c_str());
  std::abort();
}
