// The operations on one map: what they send, how they convert, what they change and return.
#include "tests/ServiceUnderTest.h"

#include <QtCore/QFileInfo>
#include <QtCore/QTemporaryDir>
#include <QtNetwork/QLocalServer>

#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

std::string owner() { return QFileInfo(savedFile()).owner().toStdString(); }

const std::vector<HostOperation> operations(hostOperations().begin() + 3, hostOperations().begin() + 7);
const HostOperation &get = operations[0], &save = operations[1];

const std::string stored =
    "<MapName>theirs</MapName><MapId>11111111-2222-3333-4444-555555555555</MapId><Author>Eve 😀</Author><LastModified>"
    "2001-01-01T00:00:00Z</LastModified><Description>other</Description><Thumbnail>QQ==</Thumbnail><MapContent>QkJD"
    "</MapContent><Version>2.25</Version>";
/// How known() is shown after a call of `operation` that was answered with the stored map.
std::string shownAfter(const HostOperation& operation, bool success) {
  const std::string modified = QFileInfo(savedFile()).lastModified().toString(Qt::ISODate).toStdString();
  const std::string id = &operation == &save && success ? "{11111111-2222-3333-4444-555555555555}" : knownId;
  if (&operation == &save)
    return "plan " + id + " " + owner() + " " + modified + " about 6279006573 published 6279746573006f66206974 " +
           (success ? "2.25 twlx" : "1.5 twlx");
  const bool got = &operation == &get && success;
  return "plan " + id + (got ? " Eve 😀" : " Ann") + " 2012-03-04T07:06:07+02:00 about 540078 published " +
         (got ? "424243 2.25" : "636f6e74656e74 1.5 twlx");
}

// Login value, outcome ("-": not in the answer; "?": there is no result element) and result.
const char* const outcomes =
    "NotAUser Success 4|NotPremiumAccount NoAccess 5|DbError Success 1|None Success 1|5 Success 1|"
    "-1 Success 1|258 Success 1|- Success 1|Success DbError 1|Success FileExists 6|Success None 1|Success NoAccess 7|"
    "Success OngoingCollaboration 9|Success MapRemoved 10|Success 7 1|Success -1 1|Success 258 1|Success - 1|"
    "Success Fine 1|Fine Success 1|? ? 1|Success Success 0";
TEST(OneMap, OutcomesDecideResultAndEffects) {
  for (const HostOperation& operation : operations)
    for (const std::string& row : cells(outcomes)) {
      SCOPED_TRACE(operation.name + " " + row);
      const std::vector<std::string> cell = cells(row, " ");
      const std::string maps = element("DesktopInfo", stored) + element("DesktopInfoClass", stored);
      const std::string result = element(operation.name + "Result", message::outcome(cell[0], cell[1]) + maps);
      const std::string response = element(operation.name + "Response", cell[0] == "?" ? "" : result);
      ServiceUnderTest tested({reply(200, message::envelope(response))});
      EXPECT_EQ(cell[2], std::to_string(operation.call(tested.service)));
      EXPECT_EQ(shownAfter(operation, cell[2] == "0"), show(tested.service.info));
      EXPECT_EQ(1U, tested.server.requests().size());
      EXPECT_FALSE(tested.service.isUserLogon());
    }
}

/// What an operation sends of known().
std::string described(const std::string& name, const std::string& author, const std::string& modified,
                      const std::string& thumbnail, const std::string& content, const std::string& version) {
  return "<username/><pass/>" +
         element("DesktopInfo", element("MapName", name) + element("MapId", knownId) + element("Author", author) +
                                    element("LastModified", modified) + "<Created>1970-01-01T00:00:00Z</Created>" +
                                    element("Description", "about") + thumbnail + element("IsPublished", "true") +
                                    content + element("AllowInclusion", "false") + element("Version", version) +
                                    element("Format_IsTwlx", "false"));
}
std::string uploadedMap() {
  return described("plan", owner(), "2001-09-09T01:46:40Z", element("Thumbnail", "YnkAZXM="),
                   element("MapContent", "Ynl0ZXMAb2YgaXQ="), "1.5");
}
TEST(Operations, SendTheirArguments) {
  const std::string modified = "2012-03-04T05:06:07Z", word = "<version>word</version>";
  const std::string listing = "<username/><pass/><IsPublished>true</IsPublished><behaviour/>";
  const std::string expected[] = {
      "<username>word</username><pass>word</pass>",
      listing,
      listing,
      described("plan", "Ann", modified, element("Thumbnail", "VAB4"), "", "1.5") + "<behaviour/>",
      uploadedMap() + "<IsForced>true</IsForced><behaviour/>",
      described("plan", "Ann", modified, "", "", "0"),
      described("word", "Ann", modified, "", "", "0"),
      word + element("desktopLiveUpdateType", "-3"),
      "<applicationUpdateType>5</applicationUpdateType>" + word + element("desktopLiveUpdateType", "4"),
      "<subject>sé</subject><message>m&lt;\n</message><bytes>YnkAZXM=</bytes><filename>word</filename>"};
  for (const HostOperation& operation : hostOperations()) {
    ServiceUnderTest tested(operation.name, "");
    operation.call(tested.service);
    tested.expectRequest(element(operation.name, expected[&operation - hostOperations().data()]));
  }
}

// The map in the answer, result and author afterwards.
const char* const partialMaps = R"(
                                                         | 1 Ann
<DesktopInfo xsi:nil="true"/>                            | 1 Ann
<DesktopInfo><Author>Eve</Author></DesktopInfo>          | 1 Ann
<DesktopInfo><MapContent>QQ==</MapContent></DesktopInfo> | 0 -
<DesktopInfo><MapContent/><Author/></DesktopInfo>        | 0 ''
)";
TEST(OneMap, ContentIsNeededToGetIt) {
  for (const auto& row : rows(partialMaps)) {
    ServiceUnderTest tested(get.name, message::outcome("Success", "Success") + row[0]);
    const int result = get.call(tested.service);
    const MapInfo& info = tested.service.info;
    EXPECT_EQ(row[1], std::to_string(result) + " " + text(info.mapAuthor())) << row[0];
    EXPECT_TRUE(result == 0 || show(info) == show(known())) << row[0];
  }
}

TEST(OneMap, DownloadedContentIsTheHostsOwn) {
  const auto block = [](const std::string& start, const std::string& bytes) {
    return start + QByteArray::fromStdString(bytes).toBase64().toStdString();
  };
  for (const std::size_t size : {3U, 600000U, 2500000U})
    for (const std::string attribute : {"", " id=\"c\""}) {
      const std::string bytes = randomBytes(size), other = block(">", randomBytes(size));
      const std::string map = "<DesktopInfo><Preview" + other + "</Preview><MapContent" + attribute +
                              block(">", bytes) + "</MapContent><Thumbnail" + other + "</Thumbnail></DesktopInfo>";
      const std::string body = message::answer(get.name, message::outcome("Success", "Success") + map);
      for (const Reply& arriving : {reply(200, body), chunks(60000, 200, body), falseLength(body)}) {
        auto tested = std::make_unique<ServiceUnderTest>(std::vector{arriving, reply(200, get.answer())});
        ASSERT_EQ(0, get.call(tested->service));
        const QByteArray content = tested->service.info.mapContent();
        ASSERT_EQ(0, get.call(tested->service));
        tested.reset();
        EXPECT_TRUE(content.isDetached()) << size;
        EXPECT_LE(static_cast<std::size_t>(content.capacity()), size / 16 * 17 + 100);
        EXPECT_TRUE(bytes == content.toStdString()) << size;
      }
    }
}

TEST(Saving, NeedsAFile) {
  const QTemporaryDir folder;
  QLocalServer socket; // a file that exists, is no directory and cannot be opened, not even by root
  ASSERT_TRUE(socket.listen(folder.filePath("s")));
  const QString pipe = folder.filePath("pipe"); // into which nobody writes
  ASSERT_EQ(0, mkfifo(qPrintable(pipe), 0600));
  const int terminal = posix_openpt(O_RDWR | O_NOCTTY); // the device that a test can make
  ASSERT_EQ(0, grantpt(terminal) + unlockpt(terminal));
  EXPECT_EQ(8, write(terminal, "map\n\4\4\4\4", 8)) << "the last four end its input, so that a reader does not wait";
  ServiceUnderTest tested(save.name, "");
  const QStringList none{QString(), "/", folder.path(), savedFile() + "/x", "/none at all"};
  for (const QString& path : none + QStringList{pipe, ptsname(terminal)}) {
    MapInfo info = known();
    EXPECT_EQ(none.contains(path) ? ResultNoSuchFile : ResultFailed, tested.service.saveMap(path, info, "new", false))
        << path.toStdString();
    EXPECT_EQ(show(known()), show(info));
  }
  EXPECT_TRUE(tested.server.requests().empty());
  MapInfo empty;
  tested.service.saveMap(folder.filePath("s"), empty, QByteArray(), false);
  const std::string sent = tested.server.request().body;
  for (const char* part :
       {"<dsns:MapContent></dsns:MapContent>", "<dsns:Thumbnail></dsns:Thumbnail>", "<dsns:MapName></dsns:MapName>",
        ">{00000000-0000-0000-0000-000000000000}<", "<dsns:Version>-1</dsns:Version>", "<dsns:IsForced>false<"})
    EXPECT_NE(std::string::npos, sent.find(part)) << part << "\n" << sent;
  close(terminal);
}

TEST(Saving, UnconfirmedIsUndone) {
  for (const Reply& undone : {reply(200, message::answer("DeleteDesktopMap", message::outcome("Success", "Success"))),
                              reply(500, message::fault("soap:Sender")), hangUp(std::string::npos)}) {
    ServiceUnderTest tested({reply(200, message::answer(save.name, message::outcome("Success", "Success"))), undone});
    EXPECT_EQ(ResultFailed, save.call(tested.service));
    EXPECT_EQ(shownAfter(save, false), show(tested.service.info));
    EXPECT_EQ(2U, tested.server.requests().size());
    tested.expectRequest(element("DeleteDesktopMap", uploadedMap()));
  }
}

TEST(Conversions, OfWhatIsSent) {
  setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1); // in March from 2:00 to 3:00
  tzset();
  const auto utc = [](qint64 seconds) { return QDateTime::fromSecsSinceEpoch(seconds).toUTC(); };
  const QChar high(0xD83D), low(0xDE00);
  const std::string last = "2106-02-07T06:28:15Z";
  // Before 6.7, Qt takes a skipped local time for invalid.
  const char* const skipped = QT_VERSION < QT_VERSION_CHECK(6, 7, 0) ? "2012-03-25T02:30:00Z" : "2012-03-25T01:30:00Z";
  const std::tuple<QString, QDateTime, std::string, std::string> cases[] = {
      {QString(), QDateTime(), "", last},
      {"", utc(0), "", "1970-01-01T00:00:00Z"},
      {QString(high) + low, utc(-1), "😀", last},
      {QString(low) + high + "a" + high, utc(4294967296), "\uFFFD\uFFFDa\uFFFD", last},
      {"<a b=\"c\">&amp;]]>", utc(4294967294), "&lt;a b=\"c\"&gt;&amp;amp;]]&gt;", "2106-02-07T06:28:14Z"},
      {" a\tb\nc ", QDateTime::fromString("2012-03-04T05:06:07.999-01:00", Qt::ISODateWithMs), " a\tb\nc ",
       "2012-03-04T06:06:07Z"},
      {"e\u0301\u00E9", utc(1), "e\u0301\u00E9", "1970-01-01T00:00:01Z"},
      {QString(QChar(0xFEFF)) + "a", QDateTime(QDate(2012, 3, 25), QTime(2, 30)), "\uFEFFa", skipped}};
  ServiceUnderTest tested("RenameDesktopMap", "");
  for (const auto& [name, date, sentName, sentDate] : cases) {
    MapInfo info = known();
    info.setMapModificationDate(date);
    tested.service.renameMap(info, name);
    const std::string sent = tested.server.request().body;
    EXPECT_NE(std::string::npos, sent.find(element("dsns:MapName", sentName))) << sentName << "\n" << sent;
    EXPECT_NE(std::string::npos, sent.find(element("dsns:LastModified", sentDate))) << sentDate << "\n" << sent;
  }
}
#if QT_VERSION_MAJOR >= 6
// Values of Qt 6 may be larger than any of Qt 5. Nothing reads this one, whose memory cannot be read.
TEST(OneMap, LargerValuesThanThoseOfQt5AreNotSent) {
  const std::size_t size = tarnwell::largestBlock + 1;
  void* const memory = mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  ASSERT_NE(MAP_FAILED, memory);
  const QByteArray bytes = QByteArray::fromRawData(static_cast<const char*>(memory), static_cast<qsizetype>(size));
  const QString text = QString::fromRawData(static_cast<const QChar*>(memory), static_cast<qsizetype>(size / 2));
  const ScriptedService server(reply(200, get.answer()));
  Host service(server.url());
  EXPECT_FALSE(service.sendCrashReport("subject", "message", "file", bytes));
  EXPECT_EQ(ResultFailed, service.renameMap(service.info, text));
  EXPECT_EQ(ResultFailed, service.login("anna", text));
  EXPECT_EQ(ResultFailed, service.saveMap(savedFile(), service.info, bytes, true));
  EXPECT_EQ(ResultFailed, service.getMap(service.info)) << "which has this preview now";
  EXPECT_EQ(0U, server.requests().size());
  service.info.setMapThumbnail(QByteArray());
  EXPECT_EQ(ResultOk, service.getMap(service.info));
  munmap(memory, size);
}
#endif

TEST(WithoutContext, EveryOperationFails) {
  Host host("http://service.example/", QString());
  soap_free(std::exchange(host.context(), nullptr));
  host.setProxySettings("h", 1, "u", "p", true);
  host.setProxySettings("h", 1, "u", "p", false);
  host.setProxyHost("h");
  host.setProxyPort(2);
  host.setProxyUser("u");
  host.setProxyPassword("p");
  for (const HostOperation& operation : hostOperations())
    EXPECT_EQ(1, operation.call(host)) << operation.name;
}

TEST(Record, EqualityIsIdentity) {
  MapInfo one = known(), other;
  EXPECT_EQ("- - - - - - private - -1", show(other));
  other.setMapID(one.mapID());
  EXPECT_TRUE(one == other);
  one.setMapID(QUuid());
  EXPECT_FALSE(one == other);
}

} // namespace
