// Values that are read and written again. Every text arrives whole, in single bytes and in HTTP chunks, because the
// reader's fast and slow paths have to give the same value.
#include "protocol/binding/BlockMemory.h"
#include "tests/Table.h"
#include "tests/WireClient.h"

#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>
#include <gtest/gtest.h>

#include <clocale>
#include <ctime>
#include <map>

namespace {

using tarnwell::Type;

/// The text of `value` between the tags of an element as it is written, or the error.
std::string written(WireClient& client, const void* value, const Type& type) {
  const std::string all =
      client.written([&](struct soap* soap) { return tarnwell::writeElement(soap, "v", -1, value, nullptr, type); });
  const std::size_t start = all.find('>', all.find("<v")) + 1;
  return all.find("error") == 0 ? all : all.substr(start, all.rfind("</v>") - start);
}

std::string document(const std::string& content) {
  return "<v xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" xmlns:q=\"urn:q\" xmlns:s=\"" +
         message::envelopeNamespace + "\" xmlns:dsns=\"" TARNWELL_SERVICE_NAMESPACE "\">" + content + "</v>";
}
/// The text of a value that was read from `bytes` and written again, or the error of reading.
std::string rewritten(WireClient& client, const std::string& bytes, const Type& type) {
  client.rewind();
  client.reply = bytes;
  const bool begun = soap_begin_recv(client.soap) == 0;
  const void* value = begun ? tarnwell::readElement(client.soap, "v", nullptr, nullptr, type) : nullptr;
  return value ? written(client, value, type) : "error " + std::to_string(client.soap->error);
}

void expectRewritten(const Type& type, const std::string& content, const std::string& expected) {
  SCOPED_TRACE(std::string(type.name) + " " + content);
  WireClient client;
  EXPECT_EQ(expected, rewritten(client, document(content), type)) << "whole";
  client.piece = 1;
  EXPECT_EQ(expected, rewritten(client, document(content), type)) << "byte by byte";
  client.piece = 0;
  for (const std::size_t size : {1U, 2U, 3U, 7U, 4096U})
    EXPECT_EQ(expected, rewritten(client, chunks(size, 200, document(content)).bytes, type)) << "in chunks of " << size;
}

// Types, then texts, each with the text that is written again. {blanks} is a blank and a tabulator,
// {line} a line end.
const char* const values = R"(
xsd:boolean | true => true | 2 => error 4 | -1 => error 4 | => false | {line}{blanks}true{blanks} => true | {line} => false
xsd:boolean | True => error 4 | truely => error 4 | 1x => error 4 | <!-- 0 -->1 => true | &#49; => true
xsd:byte | -128 => -128 | 127 => 127 | 128 => error 4 | x => error 4
xsd:unsignedByte | 255 => 255 | 256 => error 4 | -1 => error 4
xsd:int | -2147483648 => -2147483648 | +7 => 7 | 2147483648 => error 4 | 12x => error 4 | => 0
xsd:unsignedInt | 4294967295 => 4294967295 | 4294967296 => error 4
xsd:float | {line}1.5{line} => 1.5 | {line}{blanks}{line} => 0 | 1.5 => 1.5 | -2e3 => -2000 | INF => INF | +INF => INF | -INF => -INF | NaN => NaN | seven => error 4 | => 0
xsd:float | 0.1 => 0.100000001 | 1e10 => 1E+10 | 123456789 => 123456792 | 1e-5 => 9.99999975E-06 | - => error 4
xsd:float | 0.001e50 => INF | 0.001e-60 => 0 | -1e99999999999999999999 => -INF | 1e-99999999999999999999 => 0 | +-1.5 => error 4
xsd:float | 1000000000000000000000000000000000000000000000000000000000000e-60 => 1 | 1e39 => INF | -1e39 => -INF | 1e-60 => 0 | 3.4028235e38 => 3.40282347E+38 | 1e-45 => 1.40129846E-45 | 16777217 => 16777216 | 0x10 => 16 | 1.5kg => 1.5
xsd:dateTime | 2012-03-04T05:06:07+0200 => 2012-03-04T03:06:07Z | 2012-03-04T05:06:07-05:30 => 2012-03-04T10:36:07Z
xsd:dateTime | 2012-03-04T05:06:07-0530 => 2012-03-04T10:36:07Z | 2012-03-04T05:06:07 => 2012-03-04T01:36:07Z
xsd:dateTime | 2012-03-04T05:06:07.98765 => 2012-03-04T01:36:07Z | 2012-03-04T05:06:07.5Z => 2012-03-04T05:06:07Z
xsd:dateTime | 2012-03-04T05:06:07.123+02:00 => 2012-03-04T03:06:07Z | 20120304T05:06:07Z => 2012-03-04T05:06:07Z
xsd:dateTime | 20120304T050607Z => 2012-03-04T05:06:07Z | 20120304T050607+0200 => 2012-03-04T03:06:07Z
xsd:dateTime | 20120304T050607 => 2012-03-04T01:36:07Z | 20120304T050607-0200 => error 4 | 20120304T0506 => error 4
xsd:dateTime | -2147483648-01-01T00:00:00Z => error 4 | 2012--2147483648-04T05:06:07Z => error 4
xsd:dateTime | 2012-03-04T05:06:07-00:-2147483648 => error 4 | 2012-03-04T05:06:07--2147483648:00 => error 4
xsd:dateTime | 2012-03-04T-2147483648:06:07+01:00 => error 4 | 999999999-01-01T00:00:00Z => 999999999-01-01T00:00:00Z
xsd:dateTime | 2012-03-04 => error 4 | 2012-03-04T05:06 => error 4 | 2012-03-04T05:06Z => error 4 | soon => error 4
xsd:dateTime | 05:06:07 => error 4 | 1 => error 4 | => 1970-01-01T00:00:00Z | 0001-01-01T00:00:09Z => 1970-01-01T00:00:09Z
xsd:dateTime | 1900-02-29T00:00:00Z => 1900-03-01T00:00:00Z | 2011-02-30T24:60:61Z => 2011-03-03T01:01:01Z | 9999-12-31T23:59:59Z => 9999-12-31T23:59:59Z
xsd:string | {blanks}a{blanks}b{blanks} => {blanks}a{blanks}b{blanks} | plain => plain | => | a&lt;&gt;&amp;&quot;&apos;b => a&lt;&gt;&amp;"'b | é€😀 => é€😀 | ]] => ]]
xsd:string | &#233;&#xE9;&#x20AC; => éé€ | a&#x1F600;b => a😀b | &#128512; => 😀 | &#x10000; => 𐀀 | &#00000000065; => A | &amp;amp; => &amp;amp; | &#13; => &#xD;
xsd:string | a&nope;b => error 5 | a&#12x;b => error 5 | &#x110000; => error 5 | &#; => error 5 | &#000000000000000000000000000065; => A | &#xD83D;&#xDE00; => error 5
xsd:string | a&#1;&#31;&#xFFFF;z => a���z | a<b c="/>">x</b>&lt; => a&lt;b c="/&gt;"&gt;x&lt;/b&gt;&lt; | <b c='>"'/> => &lt;b c='&gt;"'/&gt;
xsd:string | a<![CDATA[b<&amp;]]]]>c => ab&lt;&amp;amp;]]c | <![CDATA[]]> => | a<!-- <b> -->c => ac | a<?b >c?>d => ad
dsns2:guid | a&amp;b<![CDATA[<]]>é => a&amp;b&lt;é
xsd:QName | s:Sender => SOAP-ENV:Sender | q:Quota => _1:Quota
dsns:DesktopLoginEnumerators | NotAUser => NotAUser | 1 => NotPremiumAccount | 2 => Success | 3 => DbError | 4 => None | 5 => 5
dsns:DesktopMapAccess | 0 => DbError | FileExists => FileExists | 2 => Success | 3 => None | NoAccess => NoAccess | => DbError
dsns:DesktopMapAccess | {line}2{blanks} => Success | 5 => OngoingCollaboration | MapRemoved => MapRemoved | 9 => 9 | -1 => -1 | noaccess => error 4
xsd:base64Binary | {line}{blanks}QU{line}{blanks}JD{line}{blanks} => QUJD | => | QU JD  RA = = => QUJDRA== | +/+/ => +/+/
xsd:base64Binary | QU<!-- J -->JD => QUJD | <![CDATA[QUJD]]> => QUJD | <![CDATA[QUJD</]]> => error 4
xsd:base64Binary | QUJD* => error 4 | Q*JDQUJD => error 4 | QU-D => error 4 | QUJDQ => error 4 | QQ==QQ== => error 4 | Q=== => error 4 | QUJé => error 4 | =QUJ => error 4 | = => error 4 | QUJ&#x151; => error 4
)";
/// Texts, each with the text that is written again, by the type's name.
const auto examples = [] {
  std::map<std::string, std::vector<std::pair<std::string, std::string>>> all;
  const auto blanks = [](const std::string& cell) {
    return replaced(replaced(cell, "{blanks}", " \t"), "{line}", "\r\n");
  };
  for (const auto& row : rows(values))
    for (std::size_t at = 1; at < row.size(); ++at) {
      const auto cell = cells(row[at], "=>");
      all[row[0]].emplace_back(blanks(cell[0]), blanks(cell[1]));
    }
  return all;
}();
TEST(Values, AreReadAndWrittenWhateverTheLocale) {
  setenv("TZ", "TWL-3:30", 1); // local time is 3:30 ahead of UTC
  tzset();
  const QTemporaryDir folder;
  const QString makeLocale =
      R"(cd "$0"; printf 'LC_NUMERIC\ndecimal_point ","\nthousands_sep ""\ngrouping -1\nEND LC_NUMERIC\n' > comma; localedef --quiet --$1-endian -ci comma -f ANSI_X3.4-1968 ./comma.ASCII)";
  const bool isBig = QSysInfo::ByteOrder == QSysInfo::BigEndian; // the test may be for another processor than localedef
  QProcess::execute("sh", {"-c", makeLocale, folder.path(), isBig ? "big" : "little"});
  setenv("LOCPATH", folder.path().toLocal8Bit().constData(), 1);
  ASSERT_TRUE(std::setlocale(LC_NUMERIC, "comma.ASCII"));
  ASSERT_STREQ(",", std::localeconv()->decimal_point);
  for (int number = 1; number < SOAP_TYPE_count; ++number)
    if (const auto found = examples.find(tarnwell::findType(number)->name); found != examples.end())
      for (const auto& [text, rewrittenText] : found->second)
        expectRewritten(tarnwell::typeOf(number), text, rewrittenText);
  expectRewritten(tarnwell::typeOf(SOAP_TYPE_xsd__int), std::string("1\0x", 3), "error 4");
  std::setlocale(LC_NUMERIC, "C");
}
TEST(Values, OfEveryLength) {
  const auto isSame = [](int number, const std::string& content, const std::string& expected) {
    WireClient client;
    client.piece = content.size() > 65536 ? 4093 : 0;
    const Type& type = tarnwell::typeOf(number);
    return rewritten(client, document(content), type) == expected &&
           rewritten(client, chunks(1000, 200, document(content)).bytes, type) == expected;
  };
  for (std::size_t size = 0; size < 300000; size += size < 200 ? 1 : 32681) { // the runtime's buffer has 65,536 bytes
    const std::string block = QByteArray::fromStdString(randomBytes(size)).toBase64().toStdString();
    std::string text, expected;
    for (std::size_t at = 0; at < size; at += 20)
      text += "aé😀&lt;<!-- c -->", expected += "aé😀&lt;";
    EXPECT_TRUE(isSame(SOAP_TYPE_xsd__base64Binary, block, block)) << size;
    EXPECT_TRUE(isSame(SOAP_TYPE_xsd__string, text, expected)) << size;
  }
}
/// Memory that refuses more than `most` bytes: address space that nobody touches, so that gigabytes cost nothing.
class SparseMemory : public tarnwell::Receiver {
public:
  unsigned char* reserve(std::size_t capacity, std::size_t) noexcept override {
    return capacity <= most ? &somewhere : nullptr;
  }
  unsigned char* keep(std::size_t size, bool) noexcept override {
    kept = size;
    return &somewhere;
  }
  void discard() noexcept override {}
  std::size_t most = 0, kept = 0;
  unsigned char somewhere = 0;
};
TEST(Values, BlocksOfTwoGigabytesOrInLittleMemory) {
  const std::size_t gib = 1073741824, all = tarnwell::largestBlock;
  // Bytes read so far, needed, expected, refused above, read in the end, kept.
  const std::size_t cases[][6] = {{1000, 100, 0, 2 * gib, 2000, 2000},  {1000, 100, 10 * gib, 1500, 1100, 1100},
                                  {1000, 100, 10 * gib, 1050, 1000, 0}, {gib, 100, 0, 2 * gib, all, all},
                                  {all - 3, 35, 0, 2 * gib, all, all},  {all - 3, 36, 0, 2 * gib, all, 0},
                                  {all - 3, 35, 0, 2 * gib, all + 1, 0}};
  for (const auto& [before, needed, expected, most, after, kept] : cases) {
    SparseMemory memory;
    memory.most = most;
    tarnwell::OpenBlock block(memory);
    EXPECT_TRUE(block.grow(before, 0));
    block.extend(before);
    if (block.grow(needed, expected)) {
      EXPECT_GE(block.room(), after - before) << "as much again, so that small pieces are not moved once each";
      block.extend(after - before);
      block.close();
    }
    EXPECT_EQ(kept, memory.kept) << before << " " << needed << " " << after;
  }
}
/// An example of every element of a type in its order, two of a list's; nil where `isNil` and an element may be.
std::string contentOf(const Type& type, bool isNil) {
  if (const auto found = examples.find(type.name); found != examples.end())
    return found->second.front().second;
  std::string all;
  for (const tarnwell::Row* row = type.rows; row != type.rows + type.rowCount; ++row) {
    const std::string one = element(row->tag, contentOf(tarnwell::typeOf(row->type), isNil));
    const bool mayBeNil = row->occurs == tarnwell::Occurs::RequiredNillable;
    all += isNil && mayBeNil ? "<" + std::string(row->tag) + " xsi:nil=\"true\"/>" : row->list ? one + one : one;
  }
  return all;
}
TEST(Values, RecordsOfEveryType) {
  for (int number = SOAP_TYPE_dsns__DesktopLoginResponseClass; number < SOAP_TYPE_count; ++number)
    for (const bool isNil : {false, true})
      if (const Type& type = *tarnwell::findType(number); std::string(type.name).find("SOAP-ENV:") != 0)
        expectRewritten(type, contentOf(type, isNil), contentOf(type, isNil));
}

} // namespace
