// Answers that are cut off, torn or damaged: never a crash, and what is read is right or the call fails.
#include "tests/HostOperations.h"
#include "tests/Table.h"
#include "tests/WireClient.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>

namespace {

/// The children of a map, an element each.
const std::vector<std::string> children = cells(replaced(R"(
<MapName>pl&#xE4;n &amp; <![CDATA[<more>]]></MapName>|<MapId>{67c8770b-44f1-410a-ab9a-f9b5446f13ee}</MapId>|<Author>Ann
</Author>|<LastModified>2012-03-04T05:06:07Z</LastModified>|<Created>2011-01-01T00:00:00+01:00</Created>|<Description>d
</Description>|<Thumbnail>VGh1bWI=</Thumbnail>|<IsPublished>true</IsPublished>|<MapContent>Q29udGVudA==</MapContent>|
<AllowInclusion>1</AllowInclusion>|<Version>1.25</Version>|<Preview>UHJl</Preview>|<OldTwlxBackUp>T2xk</OldTwlxBackUp>|
<Format_IsTwlx>true</Format_IsTwlx>|<Format_Type>t</Format_Type>|<Format_Version>v</Format_Version>|<Format_Header>h
</Format_Header>)",
                                                         "\n", ""));
/// All children, with `instead` in the place of number `at`.
std::string allExcept(std::size_t at, const std::string& instead = {}) {
  std::string text;
  for (std::size_t child = 0; child < children.size(); ++child)
    text += (child == at ? instead : children[child]) + "\n";
  return text;
}
const std::string all = allExcept(children.size());
const std::string shownAll = replaced(R"(2 login 2 {MapName='plän & <more>' MapId={67c8770b-44f1-410a-ab9a-f9b5446f13ee}
 Author='Ann' LastModified=1330837567 Created=1293836400 Description='d' Thumbnail=5:Thumb IsPublished=1
 MapContent=7:Content AllowInclusion=1 Version=1.25 Preview=3:Pre OldTwlxBackUp=3:Old Format_IsTwlx=1 Format_Type='t'
 Format_Version='v' Format_Header='h'})",
                                      "\n", "");
std::string answer(const std::string& map) {
  const std::string result = message::outcome("Success", "Success") + "<DesktopInfo>" + map + "</DesktopInfo>";
  return message::answer("GetMapContent_NEW_DESKTOP", result);
}

TEST(Damage, EveryElementDeletedNilledRepeatedMoved) {
  WireClient client;
  ASSERT_EQ(shownAll, client.content(answer(all)));
  for (std::size_t at = 0; at < children.size(); ++at) {
    const std::string name = children[at].substr(1, children[at].find('>') - 1);
    const std::string alone = client.content(answer(children[at]));
    const std::string value = alone.substr(alone.find('{') + 1, alone.size() - alone.find('{') - 2);
    const std::string without = replaced(replaced(shownAll, " " + value, ""), value + " ", "");
    EXPECT_EQ(without, client.content(answer(allExcept(at)))) << name << " deleted";
    EXPECT_EQ(without, client.content(answer(allExcept(at, "<" + name + " xsi:nil=\"true\"/>")))) << name << " nil";
    EXPECT_EQ(shownAll, client.content(answer(all + "<" + name + ">0</" + name + ">"))) << name << " repeated";
    EXPECT_EQ(shownAll, client.content(answer(allExcept(at) + children[at]))) << name << " at the end";
    EXPECT_EQ(shownAll, client.content(answer(children[at] + allExcept(at)))) << name << " at the beginning";
  }
}

TEST(Damage, CutOffAnswersFail) {
  for (const HostOperation& operation : hostOperations())
    for (const Reply& whole : {reply(200, operation.answer()), chunks(11, 200, operation.answer())}) {
      Host refused("http://127.0.0.1:1/");
      const int result = operation.call(refused);
      const std::size_t complete = whole.bytes.rfind('>') + 1; // after it there is only the chunks' own end
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

// A DIME answer whose attachment is as long as its header says, or not.
TEST(Damage, AttachmentsMayNotClaimMoreThanTheAnswerHas) {
  const auto record = [](char flags, const char* type, const std::string& id, std::size_t size, std::string data) {
    std::string bytes = {flags, type[0] == 'h' ? '\x20' : '\x10', 0, 0, 0, static_cast<char>(id.size()), 0, 0};
    bytes[7] = static_cast<char>(std::strlen(type));
    for (const int shift : {24, 16, 8, 0})
      bytes += static_cast<char>(size >> shift);
    for (std::string part : {id, std::string(type), std::move(data)})
      bytes += part + std::string(-part.size() & 3, '\0');
    return bytes;
  };
  const std::string xml = answer("<MapContent href=\"a\"/>");
  for (const auto& [size, read] : {std::pair<std::size_t, const char*>(7, "2 login 2 {MapContent=7:content}"),
                                   {0xFFFFFFFF, "error 32"},
                                   {0x7FFFFFFF, "error 32"}}) {
    WireClient client;
    client.reply = reply(200,
                         record(0x0c, "http://www.w3.org/2003/05/soap-envelope", "", xml.size(), xml) +
                             record(0x0a, "text/plain", "a", size, "content"),
                         "Content-Type: application/dime\r\n")
                       .bytes;
    const long before = memory().first;
    EXPECT_EQ(read, client.content());
    EXPECT_LT(memory().first - before, 100) << size;
  }
}

} // namespace
