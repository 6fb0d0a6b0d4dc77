// The console host: exit statuses, what it prints for people and for programs, and files.
#include "tests/HostFixture.h"

#include <QtCore/QJsonArray>

namespace {

struct Case {
  const char* name;
  QStringList arguments;
  int status;
  const char* resultName; // null for the host's own statuses
  QString user = "anna";
  QString password = "secret";
};

void PrintTo(const Case& row, std::ostream* out) { *out << row.name; }

class StatusTest : public HostTest, public testing::WithParamInterface<Case> {};

TEST_P(StatusTest, ExitStatusIsTheResultForPeopleAndPrograms) {
  const Case& row = GetParam();
  const Ended people = tarnwell(row.arguments, row.user, row.password);
  EXPECT_EQ(people.status, row.status) << people.err.toStdString();
  const QString beginning = row.resultName != nullptr ? QString("result %1 %2: ").arg(row.status).arg(row.resultName)
                                                      : QString("exit status %1: ").arg(row.status);
  EXPECT_TRUE(people.lastLine().startsWith(beginning)) << people.err.toStdString();
  EXPECT_EQ(people.err.contains("\ntry: "), row.status != 0) << people.err.toStdString();

  const Ended program = tarnwell(row.arguments + QStringList{"--json"}, row.user, row.password);
  EXPECT_EQ(program.status, row.status);
  EXPECT_TRUE(program.err.isEmpty()) << program.err.toStdString();
  const QJsonObject json = program.json();
  EXPECT_EQ(json["exitStatus"].toInt(-1), row.status) << program.out.toStdString();
  EXPECT_EQ(json["result"], row.resultName != nullptr ? QJsonValue(row.status) : QJsonValue());
  EXPECT_EQ(json["resultName"].toString(), QString(row.resultName));
  EXPECT_EQ(json.contains("advice"), row.status != 0);
}

const Case cases[] = {
    {"Login", {"login"}, 0, "ResultOk"},
    {"List", {"list"}, 0, "ResultOk"},
    {"ListLite", {"list", "--lite", "--published"}, 0, "ResultOk"},
    {"Get", {"get", "Goals"}, 0, "ResultOk"},
    {"SaveForced", {"save", "@map", "@Goals", "--force"}, 0, "ResultOk"},
    {"RenameToItself", {"rename", "Goals", "Goals"}, 0, "ResultOk"},
    {"Gallery", {"gallery", "@page"}, 0, "ResultOk"},
    {"Updates", {"updates", "4.1", "--live-update-type", "1"}, 0, "ResultOk"},
    {"UpdatesExtended", {"updates", "4.1", "--application-type", "2"}, 0, "ResultOk"},
    {"Report", {"report", "Subject", "Message", "@map"}, 0, "ResultOk"},
    {"NoNewerSetup", {"updates", "5.0"}, 1, "ResultFailed"},
    {"NobodyListens", {"login", "--endpoint", "http://127.0.0.1:1/"}, 1, "ResultFailed"},
    {"ReportNotSent", {"report", "a", "b", "--endpoint", "http://127.0.0.1:1/"}, 1, "ResultFailed"},
    {"UnknownIdentifier", {"get", "00000001-0000-0000-0000-000000000000"}, 1, "ResultFailed"},
    {"WrongPassword", {"login"}, 4, "ResultNotAUser", "anna", "wrong"},
    {"MapCommandLogsInFirst", {"delete", "Goals"}, 4, "ResultNotAUser", "anna", "wrong"},
    {"NotPremium", {"list"}, 5, "ResultNotPremiumAccount", "bob"},
    {"SaveExisting", {"save", "@map", "Goals"}, 6, "ResultFileExists"},
    {"SaveSameName", {"save", "@map", "--name", "Goals"}, 6, "ResultFileExists"},
    {"GetForeign", {"get", "@Foreign"}, 7, "ResultNoAccess"},
    {"NoSuchFile", {"save", "@nowhere"}, 8, "ResultNoSuchFile"},
    {"SaveFolder", {"save", "/"}, 8, "ResultNoSuchFile"},
    {"RenameBusy", {"rename", "Busy", "New"}, 9, "ResultOngoingCollaboration"},
    {"DeleteRemoved", {"delete", "@Removed"}, 10, "ResultMapRemoved"},
    {"UnknownName", {"get", "Nothing"}, 2, nullptr},
    {"UnknownCommand", {"fly"}, 2, nullptr},
    {"UnknownOption", {"list", "--fast"}, 2, nullptr},
    {"MissingArgument", {"rename", "Goals"}, 2, nullptr},
    {"NotANumber", {"updates", "4", "--application-type", "two"}, 2, nullptr},
    {"BadProxy", {"login", "--proxy", "nowhere"}, 2, nullptr},
    {"NoThumbnail", {"save", "@map", "--thumbnail", "@nowhere"}, 3, nullptr},
    {"NoPlugin", {"login", "--plugin", "@nowhere"}, 3, nullptr},
    {"CannotWrite", {"get", "Goals", "-o", "@nowhere/file"}, 3, nullptr},
};
INSTANTIATE_TEST_SUITE_P(All, StatusTest, testing::ValuesIn(cases),
                         [](const auto& row) { return std::string(row.param.name); });

class HelpTest : public HostTest, public testing::WithParamInterface<const char*> {};

TEST_P(HelpTest, NamesTheCommandAndGivesExamples) {
  const Ended run = tarnwell({GetParam(), "--help"});
  EXPECT_EQ(run.status, 0);
  EXPECT_TRUE(run.err.isEmpty());
  EXPECT_TRUE(run.out.contains(QByteArray("[options] ") + GetParam())) << run.out.toStdString();
  EXPECT_TRUE(run.out.contains(QByteArray("\n  tarnwell ") + GetParam())) << run.out.toStdString();
  EXPECT_TRUE(tarnwell({"--help"}).out.contains(QByteArray("\n  ") + GetParam() + ' '));
}
INSTANTIATE_TEST_SUITE_P(All, HelpTest,
                         testing::Values("login", "list", "get", "save", "rename", "delete", "updates", "report",
                                         "gallery"));

TEST_F(HostTest, MapsComeBackByteForByte) {
  ASSERT_EQ(tarnwell({"save", "@empty", "--name", "Empty"}).status, 0);
  EXPECT_EQ(tarnwell({"get", "Goals"}).out, content);
  EXPECT_EQ(tarnwell({"get", "Empty"}).out, QByteArray());
  EXPECT_EQ(tarnwell({"get", "@Goals", "-o", "@copy"}).status, 0);
  EXPECT_EQ(read("copy"), content);
  const QJsonObject data = tarnwell({"get", "Goals", "--json"}).json()["data"].toObject();
  EXPECT_EQ(QByteArray::fromBase64(data["content"].toString().toLatin1()), content);
}

/// Starts tinyproxy with a password on a port that nobody has; 0 when there is none.
int start(QProcess& proxy, const QString& configuration) {
  proxy.setProcessChannelMode(QProcess::MergedChannels);
  const int first = 20000 + static_cast<int>(QCoreApplication::applicationPid() % 20000);
  for (int port = first; port < first + 20; ++port) {
    QFile file(configuration);
    if (!file.open(QIODevice::WriteOnly))
      return 0;
    file.write("Listen 127.0.0.1\nMaxClients 5\nTimeout 60\nLogLevel Info\nBasicAuth carl battery\nPort ");
    file.write(QByteArray::number(port) + '\n');
    file.close();
    proxy.start("tinyproxy", {"-d", "-c", configuration});
    for (QByteArray log; proxy.waitForReadyRead(patience);) { // ends when tinyproxy does
      log += proxy.readAll();
      if (log.contains("Accepting connections"))
        return port;
    }
  }
  return 0;
}

TEST_F(HostTest, BigMapsPassAProxyThatAsksForAPassword) {
  QProcess proxy;
  const int port = start(proxy, folder->filePath("tinyproxy.conf"));
  ASSERT_NE(port, 0) << proxy.errorString().toStdString();
  const QStringList through{"--proxy", "127.0.0.1:" + QString::number(port), "--proxy-user", "carl"};
  qputenv("TARNWELL_PROXY_PASSWORD", "wrong");
  EXPECT_EQ(tarnwell(QStringList{"save", "@map", "--name", "Big"} + through).status, 1);
  qputenv("TARNWELL_PROXY_PASSWORD", "battery");
  for (const int size : {5 << 20, 64 << 20}) {
    QByteArray big;
    while (big.size() < size)
      big += content;
    write("big", big);
    ASSERT_EQ(tarnwell(QStringList{"save", "@big", "--name", "Big"} + through).status, 0);
    EXPECT_EQ(tarnwell(QStringList{"get", "Big", "-o", "@copy"} + through).status, 0);
    EXPECT_TRUE(read("copy") == big) << size;
    EXPECT_EQ(tarnwell(QStringList{"delete", "Big"} + through).status, 0);
  }
  qunsetenv("TARNWELL_PROXY_PASSWORD");
  proxy.terminate();
  EXPECT_TRUE(proxy.waitForFinished(patience));
}

TEST_F(HostTest, MapsAreRenamedAndDeleted) {
  save("Old", "anna");
  ASSERT_EQ(tarnwell({"rename", "Old", "New"}).status, 0);
  EXPECT_EQ(tarnwell({"get", "Old"}).status, 2);
  EXPECT_EQ(tarnwell({"get", "New"}).out, content);
  ASSERT_EQ(tarnwell({"delete", "New"}).status, 0);
  EXPECT_EQ(tarnwell({"get", "@Old"}).status, 10);
}

TEST_F(HostTest, AmbiguousNamesAreExplained) {
  save("Twin", "anna");
  save("Other", "anna");
  ASSERT_EQ(tarnwell({"save", "@map", "Other", "--force", "--name", "Twin"}).status, 0);
  const Ended people = tarnwell({"get", "Twin"});
  EXPECT_EQ(people.status, 2);
  EXPECT_TRUE(people.err.contains(resolved("@Twin").toUtf8()) && people.err.contains(resolved("@Other").toUtf8()));
  EXPECT_EQ(tarnwell({"get", "Twin", "--json"}).json()["data"].toObject()["maps"].toArray().size(), 2);
  EXPECT_EQ(tarnwell({"get", "@Twin"}).out, content);
}

TEST_F(HostTest, GalleryAndTableShowHostileNamesAsText) {
  // Beside markup: a control character and an override of the text's direction.
  const QChar control(0x9b);
  const QChar reversal(0x202e);
  const QString name = QString("<script>\"&' %1%2").arg(control).arg(reversal);
  ASSERT_EQ(tarnwell({"save", "@map", "--name", name, "--thumbnail", "@image", "--description", "<i>"}).status, 0);
  ASSERT_EQ(tarnwell({"gallery", "@page"}).status, 0);
  const QByteArray page = read("page");
  EXPECT_TRUE(page.contains("&lt;script&gt;&quot;&amp;'")) << page.toStdString();
  EXPECT_TRUE(page.contains("src=\"data:image/png;base64," + read("image").toBase64() + '"'));
  EXPECT_TRUE(page.contains("&lt;i&gt;"));
  EXPECT_FALSE(page.contains("<script") || page.contains("<i>"));
  for (const QByteArray& shown : {page, tarnwell({"list"}).out, tarnwell({"list", "--json"}).out})
    EXPECT_FALSE(shown.contains(QString(control).toUtf8()) || shown.contains(QString(reversal).toUtf8()))
        << shown.toStdString();
  const QJsonArray maps = tarnwell({"list", "--json"}).json()["data"].toObject()["maps"].toArray();
  EXPECT_TRUE(std::any_of(maps.begin(), maps.end(), [&](const QJsonValue& map) { return map["name"] == name; }));
}

TEST_F(HostTest, ReportArrives) {
  ASSERT_EQ(tarnwell({"report", "Crash on save", "It stopped.", "@map"}).status, 0);
  const Ended list = administer({"--list-reports"});
  EXPECT_TRUE(list.out.contains("Crash on save") && list.out.contains("file: map, 300001 bytes"))
      << list.out.toStdString();
}

} // namespace
