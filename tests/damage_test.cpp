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

/// `text` so many times, with numbers for "%".
std::string repeated(int count, const std::string& text) {
  std::string all;
  for (int i = 0; i < count; ++i)
    all += replaced(text, "%", std::to_string(i));
  return all;
}

TEST(Damage, FalseLengthsCostNothing) {
  for (const auto& [count, size] : {std::pair(300, 4U), std::pair(8, 900000U)}) {
    const std::string list = repeated(count, element("DesktopInfoClass", element("Thumbnail", std::string(size, 'Q'))));
    WireClient client;
    client.piece = size == 4 ? 7 : 0;
    client.reply = falseLength(message::answer("GetMapsList_NEW_DESKTOP", message::listing(list))).bytes;
    const auto before = memory();
    for (int call = 0; call < 3; ++call)
      EXPECT_EQ(std::string::npos, client.list().find("error"));
    EXPECT_LT(memory().first - before.first, 1000) << size;
    EXPECT_LT(memory().second - before.second, size == 4 ? 30 : 400) << size; // asan keeps what the test itself freed
  }
  WireClient client;
  client.reply = framed("Transfer-Encoding: chunked", "80000000\r\n" + hostOperations()[0].answer()).bytes;
  EXPECT_EQ("error -1", client.login()) << "a chunk of 2 GiB ends the answer";
}

// The light list leaves its answer's maps and thumbnails, which go at once; a download keeps them until the next
// operation. Only that an answer had a header stays.
TEST(Damage, EarlierCallsLeaveNothing) {
  const std::string thumbnail = element("Thumbnail", std::string(2 << 20, 'Q'));
  const std::string contents[] = {"", thumbnail, thumbnail + repeated(1000, "</DesktopInfoClass><DesktopInfoClass>")};
  for (const HostOperation& operation : hostOperations()) {
    Host host("http://service.example/");
    Wire wire(host.context());
    const bool isLight = operation.name == "GetMapsListLite_NEW_DESKTOP";
    std::size_t before = 0, after = 0;
    for (int call = 0; call < 40; ++call) {
      wire.reply = reply(500, message::fault("soap:Receiver")).bytes;
      operation.call(host);
      const std::string answer = replaced(operation.answer(), "<soap:Body>", "<soap:Header/><soap:Body>");
      const std::string& content = contents[!isLight ? 1 : call < 20 ? 0 : 2];
      wire.reply = reply(200, replaced(answer, "<Author>a</Author>", content)).bytes;
      EXPECT_EQ(0, operation.call(host)) << operation.name;
      EXPECT_NE(call == 0, wire.sent.find("<SOAP-ENV:Header></SOAP-ENV:Header>") != std::string::npos);
      host.maps = QList<MapInfo>(); // clear() and "= {}" keep its memory in Qt 6
      std::string().swap(wire.reply);
      const auto used = mallinfo2(); // zeros with a sanitizer
      after = used.uordblks + used.hblkhd;
      before = call < 20 ? after : before;
    }
    EXPECT_LT(after, before + 10000) << operation.name;
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

TEST(Damage, MoreNamesOrIdsThanTheBoundFail) {
  const std::string value = message::loginValue("Success"), response = message::response("Login", value);
  for (const auto& [names, few] : {std::pair(" a%=''", 240), {" xmlns:a%='u'", 120}})
    for (const bool isMore : {false, true}) {
      const std::string many = repeated(few + (isMore ? 20 : 0), names), entry = "<y" + many + "/>";
      for (const std::string& body : {message::answer("Login", entry + value), message::envelope(response + entry),
                                      message::envelope(response, element("soap:Header", entry)),
                                      replaced(message::envelope(response), "<soap:Envelope", "<soap:Envelope" + many),
                                      replaced(message::envelope(response), "<soap:Body", "<soap:Body" + many)})
        for (const std::size_t piece : {0U, 7U}) {
          WireClient client;
          client.piece = piece;
          EXPECT_EQ(isMore ? "error 44" : "login 2", client.login(body)) << body;
        }
    }
  std::string few, ids, references; // in one list of the runtime's table
  for (int id = 0, count = 0; count < 260; ++id)
    if (const std::string name = std::to_string(id); soap_hash(("#" + name).c_str()) == soap_hash("#0")) {
      ids += "<x:int id='" + name + "'/>";
      references += "<DesktopInfoClass href='#" + name + "'/>";
      few = ++count == 250 ? ids : few;
    }
  for (const auto& [list, read] : {std::pair(few + message::listing(""), "login 2 end"),
                                   {ids + message::listing(""), "error 44"},
                                   {message::listing(references), "error 44"}})
    EXPECT_EQ(read, WireClient().list(message::answer("GetMapsList_NEW_DESKTOP", list)));
}

// In the runtime each of these takes minutes.
TEST(Damage, NamesAndReferencesCostLinearTime) {
  EXPECT_EQ("login 2",
            WireClient().login(message::answer("Login", repeated(100000, "<y a%=''/>") + message::loginValue("2"))));
  const auto list = [](const std::string& entries, const std::string& after) {
    const std::string response =
        message::response("GetMapsList_NEW_DESKTOP", message::listing(repeated(9000, entries)));
    return WireClient().list(message::envelope(response + repeated(9000, after) + "<d:Login id='a0'/>"));
  };
  EXPECT_EQ("login 2 end", list("", "<DesktopInfoClass id='b%' href='#a%'/>"));
  EXPECT_EQ("login 2 end", list("", "<x:float id='b%' href='#a%'>1</x:float>"));
  EXPECT_EQ("login 2" + repeated(9000, " {Version=3}") + " end",
            list("<DesktopInfoClass><Version href='#c%'/></DesktopInfoClass>", "<x:float id='c%'>3</x:float>"));
}

TEST(Damage, RecordsShareWhatManyReferencesLeadTo) {
  const std::string text(400000, 'n'), map = "DesktopInfoClass";
  const auto listed = [&](const std::string& first, const std::string& others) {
    return message::answer("GetMapsList_NEW_DESKTOP", message::listing(first + repeated(5000, others)));
  };
  std::vector<Reply> answers = {
      withAttachment(listed("", element(map, element("Thumbnail", included))), text),
      reply(200, listed("<DesktopInfoClass id='b'>" + element("MapName", text) + "</DesktopInfoClass>",
                        "<DesktopInfoClass href='#b'/>"))};
  for (const std::string name : {"MapName", "Description", "Author", "Thumbnail"})
    answers.push_back(reply(200, listed(element(map, "<" + name + " id='a'>" + text + "</" + name + ">"),
                                        element(map, "<" + name + " href='#a'/>"))));
  for (const Reply& answer : answers) {
    Host host("http://service.example/");
    Wire wire(host.context());
    wire.reply = answer.bytes;
    const long before = memory().second;
    EXPECT_EQ(0, host.getDesktopMapsList(true, host.maps));
    EXPECT_LE(5001, host.maps.size());
    EXPECT_EQ(show(host.maps[1]), show(host.maps.last()));
    EXPECT_LT(400000U, show(host.maps[1]).size());
    EXPECT_LT(memory().second - before, 60);
  }
}

} // namespace
