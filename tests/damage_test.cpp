// Answers that are cut off, torn or damaged: no crash; the values are right or the call fails.
#include "tests/HostOperations.h"
#include "tests/Table.h"
#include "tests/WireClient.h"

#include <gtest/gtest.h>

#include <fstream>
#include <malloc.h>

namespace {

TEST(Damage, CutOffAnswersFail) {
  for (const HostOperation& operation : hostOperations())
    for (const Reply& whole : {reply(200, operation.answer()), chunks(11, 200, operation.answer())}) {
      Host refused("http://127.0.0.1:1/");
      const int result = operation.call(refused);
      const std::size_t complete = whole.bytes.rfind('>') + 1; // only the last chunk follows
      for (std::size_t size = 0; size < complete; ++size) {
        Host host("http://service.example/");
        Wire wire(host.context());
        wire.reply = whole.bytes.substr(0, size);
        wire.piece = 3;
        EXPECT_EQ(result, operation.call(host)) << operation.name << " after " << size;
        EXPECT_EQ(refused.seen(), host.seen()) << operation.name << " after " << size;
      }
    }
}

/// Address space and resident memory of this process, in MiB.
std::pair<long, long> memory() {
  long size = 0, resident = 0;
  std::ifstream("/proc/self/statm") >> size >> resident;
  return {size / 256, resident / 256};
}

TEST(Damage, FalseLengthsCostNothing) {
  for (const auto& [count, size] : {std::pair(300, 4), std::pair(8, 900000)}) {
    const std::string map = "<DesktopInfoClass><Thumbnail>" + std::string(static_cast<std::size_t>(size), 'Q') +
                            "</Thumbnail></DesktopInfoClass>";
    const std::string list = replaced(std::string(static_cast<std::size_t>(count), '.'), ".", map);
    WireClient client;
    client.piece = size == 4 ? 7 : 0;
    client.reply = falseLength(message::answer("GetMapsList_NEW_DESKTOP", message::listing(list))).bytes;
    const auto before = memory();
    for (int call = 0; call < 3; ++call)
      EXPECT_EQ(std::string::npos, client.list().find("error"));
    EXPECT_LT(memory().first - before.first, 1000) << size;
    EXPECT_LT(memory().second - before.second, size == 4 ? 30 : 400) << size; // asan keeps what the test itself freed
  }
}

// The light list leaves its answer's thumbnails.
TEST(Damage, BlocksOfEarlierAnswersAreLetGo) {
  Host host("http://service.example/");
  Wire wire(host.context());
  const std::string thumbnail = element("Thumbnail", std::string(1 << 20, 'Q'));
  wire.reply = reply(200, replaced(hostOperations()[2].answer(), "<Author>a</Author>", thumbnail)).bytes;
  std::size_t before = 0;
  for (int call = 0; call < 8; ++call) {
    EXPECT_EQ(0, hostOperations()[2].call(host));
    const auto used = mallinfo2(); // zeros with a sanitizer
    before = call < 4 ? used.uordblks + used.hblkhd : before;
    EXPECT_LT(used.uordblks + used.hblkhd, before + (1 << 20)) << "call " << call;
  }
}

// A DIME answer whose attachment is as long as its header says, or not.
TEST(Damage, AttachmentsMayNotClaimMoreThanTheAnswerHas) {
  const auto head = [](const char* hex, std::size_t size, const std::string& typeAndId) {
    const QByteArray length = QByteArray::number(static_cast<qulonglong>(size), 16).rightJustified(8, '0');
    return QByteArray::fromHex(hex + length).toStdString() + typeAndId;
  };
  const std::string map = "<DesktopInfo><MapContent href=\"a\"/></DesktopInfo>";
  std::string xml = message::answer("GetMapContent_NEW_DESKTOP", map);
  xml.append(-xml.size() & 3, ' ');
  const std::string first =
      head("0c20000000000027", xml.size(), "http://www.w3.org/2003/05/soap-envelope") + '\0' + xml;
  for (const auto& [size, read] : {std::pair<std::size_t, const char*>(7, "0 no login {MapContent=7:content}"),
                                   {0x0A000000, "error 32"},
                                   {0xFFFFFFFF, "error 32"},
                                   {0x7FFFFFFF, "error 32"}}) {
    WireClient client;
    client.reply = reply(200, first + head("0a1000000001000a", size, std::string("a\0\0\0text/plain\0\0content\0", 24)),
                         "Content-Type: application/dime\r\n")
                       .bytes;
    const long before = memory().first;
    EXPECT_EQ(read, client.content());
    EXPECT_LT(memory().first - before, 100) << size;
  }
}

} // namespace
