// The local service in daily use: what each operation does with accounts, maps, update information and reports, and the
// command line.
#include "tests/LocalServiceFixture.h"
#include "tests/Table.h"

#include <QtCore/QDir>
#include <SQLiteCpp/SQLiteCpp.h>
#include <sys/resource.h>

namespace {

// Operations, elements of the request, answer. Words in capitals: see replacements().
const char* const dailyUse = R"(
SaveDesktopMap          | <M>PLAN ONE</M>                           | Success Success KEPT Version=1
SaveDesktopMap          | <M>PLAN ONE</M>                           | FileExists Success
SaveMap_NEW_IPAD        | <M>PLAN</M>FORCED                         | Success Success KEPT Version=2
SaveMap_NEW_DESKTOP     | <M>ID</M>                                 | FileExists Success
SaveDesktopMap          | <username>carl</username><M>OTHER ONE</M> | Success Success SECOND Version=1
SaveDesktopMap          | <M>OTHER ONE</M>                          | Success Success SECOND Version=1
SaveMap_NEW_DESKTOP     | <M>ID PUBLIC TWO</M>FORCED                | Success Success KEPT IsPublished=true Version=3
GetMapsList_NEW_DESKTOP |                                           | KEPT Thumbnail=MQ== IsPublished=true Version=3 SECOND Thumbnail=MQ== Version=1 Success
GetDesktopMapsListLite  |                                           | KEPT IsPublished=true Version=3 SECOND Version=1 Success
GetMapsListLite_NEW_IPAD | PUBLIC                                   | KEPT IsPublished=true Version=3 Success
GetMapsList_NEW_IPAD    | <username>carl</username>                 | SECOND Thumbnail=MQ== Version=1 Success
GetMapContent_NEW_IPAD GetMapContentConverted_NEW_IPAD GetMapContent_NEW_DESKTOP GetDesktopMapContent GetDesktopUniversalMap ConvertMap | <M>ID</M> | Success Success KEPT IsPublished=true MapContent=Mg== Version=3
ConvertMap              | <M>TWO</M>                                | Success Success MapContent=Mg==
ConvertMap              | <M>ID</M><outFormat>b</outFormat>         | None Success
GetDesktopMapPreview    | <M>ID</M>                                 | Success Success KEPT Thumbnail=MQ== IsPublished=true Version=3
RenameDesktopMap        | <M>ID OTHER</M>                           | FileExists Success
RenameDesktopMap        | <M>ID<MapName/></M>                       | None Success
DeleteDesktopMap        | <M>ID</M>                                 | Success Success
SaveDesktopMap          | <M>PLAN</M>                               | Success Success KEPT Version=1
RenameDesktopMap        | <M>ID<MapName>&lt;&amp;</MapName></M>     | Success Success MapName=&lt;&amp; MapId=# Author= Created=% Description= Version=1
GetDesktopMapsListLite  |                                           | SECOND Version=1 MapName=&lt;&amp; MapId=# Author= Created=% Description= Version=1 Success
)";
TEST_F(LocalServiceTest, KeepsMaps) {
  const auto replacements = [this](std::string text) {
    const std::string id = QString::fromStdString(identifier("Plan ü")).toUpper().toStdString();
    for (const auto& [word, by] : {std::pair<const char*, std::string>("M>", "DesktopInfo>"),
                                   {"PLAN", named("Plan ü")},
                                   {"OTHER", named("Other")},
                                   {"ID", identified("{" + id + "}")},
                                   {"ONE", "<Thumbnail>MQ==</Thumbnail><MapContent>MQ==</MapContent>"},
                                   {"TWO", "<MapContent>Mg==</MapContent>"},
                                   {"PUBLIC", "<IsPublished>1</IsPublished>"},
                                   {"FORCED", "<IsForced>true</IsForced>"},
                                   {"KEPT", "MapName=Plan ü MapId=# Author= Created=% Description="},
                                   {"SECOND", "MapName=Other MapId=# Author= Created=% Description="}})
      text = replaced(text, word, by);
    return text;
  };
  for (const auto& row : rows(dailyUse))
    for (const std::string& operation : cells(row[0], " "))
      EXPECT_EQ(call(operation, replacements(row[1])), replacements(row[2])) << operation << " " << row[1];
}

// User, password, map, login outcome, map-access outcome.
const char* const refusals = R"(
nobody | secretü | Mine    | NotAUser          | None
anna   | Secretü | Mine    | NotAUser          | None
poor   | secretü | Mine    | NotPremiumAccount | None
anna   | secretü | Removed | Success           | MapRemoved
anna   | secretü | Busy    | Success           | OngoingCollaboration
anna   | secretü | Foreign | Success           | NoAccess
anna   | secretü | None    | Success           | None
)";
// Name and kind of request.
const std::pair<std::string, std::string> operations[] = {
#define TARNWELL_OPERATION(Name, Wire, Shape, ResultClass) {Wire, #Shape},
#include "protocol/schema/Operations.inc"
#undef TARNWELL_OPERATION
};
TEST_F(LocalServiceTest, RefusesByAccountAndMap) {
  for (const std::string name : {"Mine", "Removed", "Busy", "Foreign"})
    ASSERT_EQ(call("SaveDesktopMap", described(named(name)) + (name == "Foreign" ? "<username>carl</username>" : ""))
                  .substr(0, 7),
              "Success");
  ASSERT_EQ(call("DeleteDesktopMap", stored("Removed")), "Success Success");
  EXPECT_EQ(administer({"--start-collaboration", QString::fromStdString(identifier("Busy"))}), "");
  for (const auto& row : rows(refusals)) {
    const std::string map = described(identified(identifier(row[2])) + named("Mine"), true);
    for (const auto& [name, kind] : operations) {
      const bool isOfUser = kind == "CredentialsRequest" || kind.find("List") == 0;
      const bool isOfAnyMap = isOfUser || (row[2] == "None" && kind.find("Save") == 0);
      if (QRegularExpression("Version|Feedback|Attachment").match(kind.c_str()).hasMatch() ||
          (row[3] == "Success" && isOfAnyMap))
        continue;
      const std::string answer = call(name, element("username", row[0]) + element("pass", row[1]) + map);
      EXPECT_EQ(answer, isOfUser ? row[3] : row[4] + " " + row[3]) << name;
    }
  }
  const auto listed = [this](const QStringList& change) {
    const QString maps = administer(change + QStringList{"--list-maps"});
    return QString(maps).replace(QRegularExpression("[0-9a-f-]{36}"), "#").toStdString();
  };
  const std::string own = "#\tanna\tstored\t1\tMine\n#\tanna\tremoved\t1\tRemoved\n#\tanna\tcollaboration\t1\tBusy\n";
  EXPECT_EQ(listed({}), own + "#\tcarl\tstored\t1\tForeign\n");
  EXPECT_EQ(listed({"--remove-account", "carl"}), own) << "an account takes its maps with it";
  EXPECT_EQ(administer({"--end-collaboration", QString::fromStdString(identifier("Busy"))}), "");
  EXPECT_EQ(call("DeleteDesktopMap", stored("Busy")), "Success Success");
}

TEST_F(LocalServiceTest, HashesWhatHasNotMatchedBefore) {
  clockid_t clock{};
  ASSERT_EQ(clock_getcpuclockid(static_cast<pid_t>(process.processId()), &clock), 0);
  const auto cost = [&](const std::string& credentials, const std::string& outcome) { // seconds of CPU
    timespec before{}, after{};
    clock_gettime(clock, &before);
    for (int i = 0; i < 10; ++i)
      EXPECT_EQ(call("Login", credentials), outcome);
    clock_gettime(clock, &after);
    return static_cast<double>(after.tv_sec - before.tv_sec) +
           static_cast<double>(after.tv_nsec - before.tv_nsec) / 1e9;
  };
  EXPECT_EQ(call("Login"), "Success");
  const double right = cost("", "Success"), known = cost("<pass>wrong</pass>", "NotAUser");
  const double unknown = cost("<username>nobody</username>", "NotAUser");
  EXPECT_LT(right, known / 4) << "a password that has matched is hashed again";
  EXPECT_GT(unknown, known / 2) << "the time of a response tells which accounts exist";
  EXPECT_LT(unknown, known * 2);

  EXPECT_EQ(administer({"--add-account", "anna"}, "changed\n"), "");
  EXPECT_EQ(call("Login"), "NotAUser") << "another process has changed the password";
  EXPECT_EQ(call("Login", "<pass>changed</pass>"), "Success");
  ASSERT_TRUE(QFile::rename(path("db"), path("moved")));
  EXPECT_EQ(administer({"--add-account", "anna"}, "secretü\n"), "");
  EXPECT_EQ(call("SaveDesktopMap", described(named("Plan"))),
            "Success Success MapName=Plan MapId=# Author= Created=% Description= Version=1");
  EXPECT_NE(identifier("Plan"), "no such map") << "saved into a file that nobody finds";
}

TEST_F(LocalServiceTest, WritesTraces) {
  const QDir traces(path("traces"));
  ASSERT_TRUE(QDir().mkpath(traces.path()));
  const QString old = "20200101-000000.000-1-%1.txt";
  for (int i = 0; i < 1000; ++i)
    ASSERT_TRUE(QFile(traces.filePath(old.arg(i, 4))).open(QIODevice::WriteOnly));
  ASSERT_TRUE(QFile(traces.filePath("notes.txt")).open(QIODevice::WriteOnly));
  EXPECT_EQ(stop().status, 0);
  start({"--trace", traces.path()});
  const std::string hidden = "<d:pass a='>'><![CDATA[secret </d:pass> secret]]><d:pass>secret</d:pass>secret</d:pass>";
  const std::string requests[] = {saving("Plan", std::string(1 << 20, 'A')),
                                  post(message::envelope("<!-- > <pass>secret --><Login><username>bert</username>" +
                                                         hidden + "<pass href='#p'/></Login><a id='p'>secret</a>")),
                                  post("<pass>secret<a>secret"),
                                  post(std::string("\xff\xfe<\0p\0a\0s\0s\0>\0s\0e\0c\0r\0e\0t\0", 26))};
  std::string traced;
  for (const std::string& sent : requests) {
    const std::string withUser = replaced(sent, "POST ", "POST http://anna:secret@a");
    Connection(port(), replaced(withUser, soapType, soapType + "Authorization: Basic c2VjcmV0\r\n")).answer();
    const QStringList files = traces.entryList(QDir::Files);
    EXPECT_EQ(files.size(), 1001);
    traced += contentOf(traces.filePath(files[files.size() - 2])).toStdString();
  }
  EXPECT_EQ(stop().status, 0);
  for (const char* const secret : {"secret", "s e c", "c2VjcmV0"})
    EXPECT_EQ(traced.find(secret), std::string::npos) << traced;
  for (const char* const shown :
       {"\tSaveDesktopMap\tanna\tSuccess\t", "\nAuthorization: ***\n",
        "\n      <username>anna</username>\n      <pass>***</pass>\n", "AAAA... [1048576 bytes]</MapContent>\n",
        "HTTP/1.1 200 OK\n", "\n        <dsns:DesktopMapAccess>Success</dsns:DesktopMapAccess>\n",
        "<username>bert</username>", "[26 bytes that are not UTF-8]"})
    EXPECT_NE(traced.find(shown), std::string::npos) << shown << traced;
  EXPECT_TRUE(traces.exists("notes.txt") && !traces.exists(old.arg(0, 4)) && traces.exists(old.arg(999, 4)));
}

TEST_F(LocalServiceTest, AnnouncesUpdatesAndKeepsReports) {
  const std::string newer = "Path=http://a.example/?b&amp;c Version=1.10", older = "<version>1.9</version>";
  EXPECT_EQ(call("CheckDesktopVersion", older), "Path= Version=");
  EXPECT_EQ(administer({"--update-version", "1.10", "--update-url", "http://a.example/?b&c"}), "");
  EXPECT_EQ(call("CheckDesktopVersion", older), newer);
  EXPECT_EQ(call("CheckDesktopVersion", "<version>1.10</version>"), "Path= Version=");

  const std::string texts = "<subject>Crash\n\u202E[31m</subject><message>It broke: ü</message>";
  const std::string file = "<filename>dump</filename><bytes>QUJD</bytes>", from = "<name>A</name><email>a@b</email>";
  EXPECT_EQ(call("SendFeedbackWithAttachment", texts + file), "Success None");
  EXPECT_EQ(call("SendFeedback", texts + from), "Success None");
  const QByteArray crash = "\tCrash\uFFFD\uFFFD[31m\n", broken = "  It broke: ü\n";
  EXPECT_EQ(QString(administer({"--list-reports"})).replace(QRegularExpression("\t\\d{4}-[-0-9T:]+Z"), "\t#").toUtf8(),
            "1\t#" + crash + "  file: dump, 3 bytes\n" + broken + "2\t#" + crash + "  from: A <a@b>\n" + broken);
  EXPECT_EQ(call("SendFeedbackWithAttachment", element("bytes", std::string(11 << 20, 'A'))),
            "SOAP-ENV:Receiver the report is too long")
      << "clients look at faults alone";
  for (int i = 0; i < 101; ++i)
    EXPECT_EQ(call("SendFeedback", texts), "Success None");
  const QByteArray reports = administer({"--list-reports"});
  EXPECT_EQ(reports.count(crash), 100) << reports.toStdString();
  EXPECT_TRUE(reports.startsWith("4\t")) << "the latest hundred";
}

TEST_F(LocalServiceTest, SaysWhenTheDatabaseFails) {
  rlimit limit{};
  ASSERT_EQ(prlimit(static_cast<pid_t>(process.processId()), RLIMIT_FSIZE, nullptr, &limit), 0);
  const rlimit full{100000, limit.rlim_max};
  ASSERT_EQ(prlimit(static_cast<pid_t>(process.processId()), RLIMIT_FSIZE, &full, nullptr), 0);
  const std::string big = element("bytes", std::string(200000, 'A'));
  EXPECT_EQ(call("SaveDesktopMap", described(named("Plan") + element("MapContent", std::string(200000, 'A')))),
            "DbError Success");
  EXPECT_EQ(call("SendFeedbackWithAttachment", big).substr(0, 17), "SOAP-ENV:Receiver");
  ASSERT_EQ(prlimit(static_cast<pid_t>(process.processId()), RLIMIT_FSIZE, &limit, nullptr), 0);
  EXPECT_EQ(call("SendFeedbackWithAttachment", big), "Success None");

  EXPECT_EQ(stop().status, 0);
  start({"--read-only"});
  EXPECT_EQ(call("SaveDesktopMap", described(named("Plan"))), "DbError Success");
  EXPECT_EQ(call("SendFeedback"), "SOAP-ENV:Receiver attempt to write a readonly database");
  EXPECT_EQ(call("GetDesktopMapsList"), "DesktopInfoObjectList= Success");
  SQLite::Database(path("db").toStdString(), SQLite::OPEN_READWRITE)
      .exec("DROP TABLE accounts; CREATE TABLE accounts(name, password, premium); INSERT INTO accounts(name) "
            "VALUES('anna')");
  EXPECT_EQ(call("Login"), "DbError") << "NULL where this program writes none";
  QFile file(path("db"));
  ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(QByteArray(8192, 'x')) == 8192);
  file.close();
  EXPECT_EQ(call("Login"), "DbError");
  EXPECT_EQ(call("GetDesktopMapContent", described("")), "DbError DbError");
  EXPECT_EQ(call("CheckDesktopVersion").substr(0, 17), "SOAP-ENV:Receiver");
}

TEST_F(LocalServiceTest, AnswersAsTheCommandLineAsks) {
  EXPECT_EQ(stop().status, 0);
  start({"--fail", "Login=NotPremiumAccount", "--fail", "SaveDesktopMap=FileExists", "--fail",
         "DeleteDesktopMap=NotAUser", "--fail", "GetDesktopMapsList=DbError", "--fail", "ConvertMap=fault", "--fail",
         "CheckDesktopVersion=drop", "--log", "--delay", "50"});
  for (const auto& row : rows(R"(
Login                  | NotPremiumAccount
SaveDesktopMap         | FileExists Success
DeleteDesktopMap       | None NotAUser
GetDesktopMapsList     | DbError
ConvertMap             | SOAP-ENV:Receiver the command line asks for this fault
CheckDesktopVersion    |
GetDesktopMapsListLite | DesktopInfoObjectList= Success
)"))
    EXPECT_EQ(call(row[0]), row[1]) << row[0];
  const QByteArray log = stop().err;
  EXPECT_EQ(log.count('\n'), 7) << log.toStdString();
  EXPECT_TRUE(QRegularExpression("\tGetDesktopMapsListLite\tanna\tSuccess\t(?!0 )\\d\\d+ ms\t").match(log).hasMatch());
  EXPECT_TRUE(log.contains("\tConvertMap\tanna\t500\t") && log.contains("\tCheckDesktopVersion\t-\tdrop\t"))
      << log.data();
  EXPECT_FALSE(log.contains("secret"));
}

TEST_F(LocalServiceTest, UnderstandsItsCommandLine) {
  const QString foreign = path("foreign"), newer = path("newer"), none = path("none");
  SQLite::Database(foreign.toStdString(), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE)
      .exec("CREATE TABLE a(b); PRAGMA user_version = 1");
  ASSERT_TRUE(QFile::copy(path("db"), newer));
  SQLite::Database(newer.toStdString(), SQLite::OPEN_READWRITE).exec("PRAGMA user_version = 2");
  const struct {
    QStringList commands;
    QByteArray expected;
    QByteArray input = "secret";
  } rows[] = {
      {{"--list-accounts"}, "anna\tpremium\ncarl\tpremium\npoor\tnot premium\n"},
      {{"--remove-account carl --list-accounts"}, "anna\tpremium\npoor\tnot premium\n"},
      {{"--db :memory: --add-account bert --list-accounts"}, "bert\tpremium\n"},
      {{"--version"}, "tarnwell-localservice 1.0.0\n"},
      {{"--add-account bert"}, "status 1", ""},
      {{"--add-account bert"}, "status 1", "\n"},
      {{"--add-account bert"}, "status 1", "secret\r\n"},
      {{"--remove-account carl", "--start-collaboration nothing", "--db " + none + " --list-maps",
        "--db " + foreign + " --add-account bert", "--db " + newer + " --add-account bert",
        "--port 0 --trace " + path("none/traces")},
       "status 1"},
      {{"--add-account bert --add-account carl", "--premium --list-accounts", "--port 65536", "--listen localhost",
        "--add-account bert --premium --not-premium", "--max-request 0", "--fail Logout=fault",
        "--fail Login=FileExists", "-dash", "anna", "--add-account="},
       "status 2"},
  };
  const QByteArray foreignBefore = contentOf(foreign), newerBefore = contentOf(newer);
  for (const auto& row : rows)
    for (const QString& command : row.commands)
      EXPECT_EQ(administer(QProcess::splitCommand(command), row.input), row.expected) << command.toStdString();
  EXPECT_EQ(contentOf(foreign), foreignBefore);
  EXPECT_EQ(contentOf(newer), newerBefore);
  EXPECT_FALSE(QFile::exists(none));
  EXPECT_EQ(QFile::permissions(path("db")) & (QFile::ReadGroup | QFile::ReadOther), 0);
  EXPECT_FALSE(contentOf(path("db")).contains("secret")) << "passwords stand in the file";
}

} // namespace
