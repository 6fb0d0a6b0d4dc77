// The local service in daily use: what each operation does with accounts, maps, update information and reports, and the
// command line.
#include "tests/LocalServiceFixture.h"

#include <SQLiteCpp/SQLiteCpp.h>

namespace {

TEST_F(LocalServiceTest, KeepsMaps) {
  Map plan(L"Plan ü", "one");
  const std::string kept = "MapName='Plan ü' MapId=# Author='' Created=% Description=''";
  EXPECT_EQ(call("SaveDesktopMap", {L"anna", &plan}), "2 login 2 {" + kept + " Version=1}");
  EXPECT_EQ(call("SaveDesktopMap", {L"anna", &plan}), "1 login 2 null") << "the name is taken";
  EXPECT_EQ(call("SaveMap_NEW_IPAD", {L"anna", &plan, true}), "2 login 2 {" + kept + " Version=2}");
  plan.identify(identifier("Plan ü"));
  plan.IsPublished = true;
  EXPECT_EQ(call("SaveMap_NEW_DESKTOP", {L"anna", &plan}), "1 login 2 null");
  Map other(L"Other", "two");
  EXPECT_EQ(call("SaveDesktopMap", {L"anna", &other}).substr(0, 9), "2 login 2");
  plan.bytes = "new";
  const std::string published = " IsPublished=1";
  EXPECT_EQ(call("SaveMap_NEW_DESKTOP", {L"anna", &plan, true}), "2 login 2 {" + kept + published + " Version=3}");

  const std::string second = " {MapName='Other' MapId=# Author='' Created=% Description=''";
  EXPECT_EQ(call("GetMapsList_NEW_DESKTOP"), "login 2 {" + kept + " Thumbnail=3:new" + published + " Version=3}" +
                                                 second + " Thumbnail=3:two Version=1} end");
  EXPECT_EQ(call("GetDesktopMapsListLite"),
            "login 2 {" + kept + published + " Version=3}" + second + " Version=1} end");
  EXPECT_EQ(call("GetDesktopMapsListLite", {L"anna", nullptr, true}),
            "login 2 {" + kept + published + " Version=3} end");
  EXPECT_EQ(call("GetMapsList_NEW_IPAD", {L"carl"}), "login 2 end");

  const std::string whole = "2 login 2 {" + kept + published + " MapContent=3:new Version=3}";
  for (const char* const operation : {"GetMapContent_NEW_IPAD", "GetMapContentConverted_NEW_IPAD",
                                      "GetMapContent_NEW_DESKTOP", "GetDesktopMapContent", "GetDesktopUniversalMap"})
    EXPECT_EQ(call(operation, {L"anna", &plan}), whole) << operation;
  EXPECT_EQ(call("GetDesktopMapPreview", {L"anna", &plan}),
            "2 login 2 {" + kept + " Thumbnail=3:new" + published + " Version=3}");
  plan.MapContent = nullptr;
  EXPECT_EQ(call("ConvertMap", {L"anna", &plan}), whole);
  Values convert{L"anna", &plan};
  convert.outFormat = L"b";
  EXPECT_EQ(call("ConvertMap", convert), "3 login 2 null");

  plan.name = L"Other";
  EXPECT_EQ(call("RenameDesktopMap", {L"anna", &plan}), "1 login 2 null");
  plan.name = L"";
  EXPECT_EQ(call("RenameDesktopMap", {L"anna", &plan}), "3 login 2 null");
  plan.name = L"<&>";
  EXPECT_EQ(call("RenameDesktopMap", {L"anna", &plan}).substr(0, 25), "2 login 2 {MapName='<&>' ");
  EXPECT_EQ(call("DeleteDesktopMap", {L"anna", &plan}), "2 login 2 null");
  EXPECT_EQ(call("GetDesktopMapsListLite"), "login 2" + second + " Version=1} end");
}

TEST_F(LocalServiceTest, RefusesByAccountAndMap) {
  for (const wchar_t* name : {L"Mine", L"Removed", L"Busy", L"Foreign"}) {
    Map map(name, "x");
    ASSERT_EQ(call("SaveDesktopMap", {map.name == L"Foreign" ? L"carl" : L"anna", &map}).substr(0, 1), "2");
  }
  Map removed(L"", "", identifier("Removed"));
  ASSERT_EQ(call("DeleteDesktopMap", {L"anna", &removed}), "2 login 2 null");
  EXPECT_EQ(administer({"--start-collaboration", identifier("Busy")}), "");
  const struct {
    const wchar_t* user;
    const wchar_t* password;
    QByteArray id;
    std::string expected;
  } rows[] = {{L"nobody", L"öffne dich", identifier("Mine"), "3 login 0 null"},
              {L"anna", L"Öffne dich", identifier("Mine"), "3 login 0 null"},
              {L"poor", L"öffne dich", identifier("Mine"), "3 login 1 null"},
              {L"anna", L"öffne dich", identifier("Removed"), "6 login 2 null"},
              {L"anna", L"öffne dich", identifier("Busy"), "5 login 2 null"},
              {L"anna", L"öffne dich", identifier("Foreign"), "4 login 2 null"},
              {L"anna", L"öffne dich", "no identifier", "3 login 2 null"}};
  for (const auto& row : rows) {
    Map map(L"Mine", "x", row.id);
    const Values values{row.user, &map, true, row.password};
    for (const tarnwell::Operation& operation : tarnwell::operations) {
      const std::string name = operation.name;
      const bool isList = name.find("List") != std::string::npos;
      if (std::string(tarnwell::typeOf(operation.request).rows[0].local) != "username" || row.expected[8] == '2')
        continue;
      const std::string result = call(name, values);
      EXPECT_EQ(result, isList            ? row.expected.substr(2, 7) + " no list"
                        : name == "Login" ? row.expected.substr(2, 7)
                                          : row.expected)
          << name;
    }
    for (const std::string name : {"GetDesktopMapContent", "RenameDesktopMap", "DeleteDesktopMap", "SaveDesktopMap"}) {
      if (row.id == "no identifier" && name == "SaveDesktopMap")
        continue; // stores a new map
      EXPECT_EQ(call(name, values), row.expected) << name;
    }
  }
  EXPECT_EQ(administer({"--end-collaboration", identifier("Busy")}), "");
  Map busy(L"", "", identifier("Busy"));
  EXPECT_EQ(call("DeleteDesktopMap", {L"anna", &busy}), "2 login 2 null");
}

TEST_F(LocalServiceTest, AnnouncesUpdatesAndKeepsReports) {
  EXPECT_EQ(call("CheckDesktopVersion"), "Path='' Version=''");
  EXPECT_EQ(administer({"--update-version", "1.10", "--update-url", "http://a.example/?b&c"}), "");
  EXPECT_EQ(call("CheckDesktopVersion"), "Path='http://a.example/?b&c' Version='1.10'") << "1.9 is older";
  EXPECT_EQ(call("CheckDesktopVersionExtended"), "Path='http://a.example/?b&c' Version='1.10'");
  Values current;
  current.version = L"1.10";
  EXPECT_EQ(call("CheckDesktopVersion", current), "Path='' Version=''");

  Map some(L"", "ABC"), tooMuch(L"", std::string((8 << 20) + 1, 'x'));
  Values report;
  report.bytes = &some.block;
  EXPECT_EQ(call("SendFeedbackWithAttachment", report), "2 login 4 null");
  report.bytes = &tooMuch.block;
  EXPECT_EQ(call("SendFeedbackWithAttachment", report), "0 login 4 null");
  for (int i = 0; i < 101; ++i)
    EXPECT_EQ(call("SendFeedback"), "2 login 4 null");
  const QByteArray reports = administer({"--list-reports"});
  EXPECT_EQ(reports.count("\tCrash\xef\xbf\xbd\xef\xbf\xbd[31m\n"), 100) << reports.toStdString();
  EXPECT_EQ(reports.count("It broke: ü\n"), 100);
  EXPECT_FALSE(reports.contains("\n1\t")) << "the oldest of more than a hundred";
}

TEST_F(LocalServiceTest, SaysWhenTheDatabaseFails) {
  EXPECT_EQ(stop(), 0);
  start({"--read-only"});
  Map map(L"Plan", "x");
  EXPECT_EQ(call("SaveDesktopMap", {L"anna", &map}), "0 login 2 null");
  EXPECT_EQ(call("SendFeedback"), "0 login 4 null");
  EXPECT_EQ(call("GetDesktopMapsList"), "login 2 end");
  SQLite::Database(database().toStdString(), SQLite::OPEN_READWRITE)
      .exec("DROP TABLE accounts; CREATE TABLE accounts(name, password, premium); INSERT INTO accounts(name) "
            "VALUES('anna')");
  EXPECT_EQ(call("Login"), "login 3") << "NULL where this program writes none";
  QFile file(database());
  ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(QByteArray(8192, 'x')) == 8192);
  file.close();
  EXPECT_EQ(call("Login"), "login 3");
  EXPECT_EQ(call("GetDesktopMapsList"), "login 3 no list");
  EXPECT_EQ(call("GetDesktopMapContent", {L"anna", &map}), "0 login 3 null");
  EXPECT_EQ(call("CheckDesktopVersion"), "error 2");
}

TEST_F(LocalServiceTest, AnswersAsRehearsed) {
  EXPECT_EQ(stop(), 0);
  start({"--fail", "Login=NotPremiumAccount", "--fail", "SaveDesktopMap=FileExists", "--fail",
         "DeleteDesktopMap=NotAUser", "--fail", "GetDesktopMapsList=DbError", "--fail", "ConvertMap=fault", "--fail",
         "CheckDesktopVersion=drop", "--log", "--delay", "50"});
  const struct {
    const char* operation;
    const char* expected;
  } rows[] = {{"Login", "login 1"},
              {"SaveDesktopMap", "1 login 2 null"},
              {"DeleteDesktopMap", "3 login 0 null"},
              {"GetDesktopMapsList", "login 3 no list"},
              {"ConvertMap", "error 2"},
              {"CheckDesktopVersion", "error -1"},
              {"GetDesktopMapsListLite", "login 2 end"}};
  for (const auto& row : rows)
    EXPECT_EQ(call(row.operation), row.expected) << row.operation;
  EXPECT_EQ(stop(), 0);
  const QByteArray log = service.readAllStandardError();
  EXPECT_EQ(log.count('\n'), 7) << log.toStdString();
  EXPECT_TRUE(QRegularExpression("\tGetDesktopMapsListLite\tanna\tSuccess\t(?!0 )\\d\\d+ ms\t").match(log).hasMatch());
  EXPECT_FALSE(log.contains("ffne"));
}

TEST_F(LocalServiceTest, UnderstandsItsCommandLine) {
  const QString foreign = folder.filePath("foreign"), newer = folder.filePath("newer"), none = folder.filePath("none");
  SQLite::Database(foreign.toStdString(), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE)
      .exec("CREATE TABLE a(b); PRAGMA user_version = 1");
  ASSERT_TRUE(QFile::copy(database(), newer));
  SQLite::Database(newer.toStdString(), SQLite::OPEN_READWRITE).exec("PRAGMA user_version = 2");
  const auto contents = [](const QString& name) {
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
  };
  const struct {
    const char* what;
    QStringList arguments;
    QByteArray expected;
    QByteArray input = {};
  } rows[] = {{"all accounts", {"--list-accounts"}, "anna\tpremium\ncarl\tpremium\npoor\tnot premium\n"},
              {"one less", {"--remove-account", "carl", "--list-accounts"}, "anna\tpremium\npoor\tnot premium\n"},
              {"no such account", {"--remove-account", "carl"}, "status 1"},
              {"no password", {"--add-account", "bert"}, "status 1"},
              {"an empty password", {"--add-account", "bert"}, "status 1", "\n"},
              {"no such map", {"--start-collaboration", "nothing"}, "status 1"},
              {"a wrong name", {"--db", none, "--list-maps"}, "status 1"},
              {"another program's file", {"--db", foreign, "--add-account", "bert"}, "status 1", "secret"},
              {"a newer file", {"--db", newer, "--add-account", "bert"}, "status 1", "secret"},
              {"in memory", {"--db", ":memory:", "--add-account", "bert", "--list-accounts"}, "bert\tpremium\n", "a"},
              {"a port that is none", {"--port", "65536"}, "status 2"},
              {"an address without port", {"--listen", "localhost"}, "status 2"},
              {"no size", {"--max-request", "0"}, "status 2"},
              {"an unknown operation", {"--fail", "Logout=fault"}, "status 2"},
              {"a result of others", {"--fail", "Login=FileExists"}, "status 2"},
              {"an unknown option", {"-dash"}, "status 2"},
              {"an argument", {"anna"}, "status 2"},
              {"an empty value", {"--add-account", ""}, "status 2"},
              {"the version", {"--version"}, "tarnwell-localservice 1.0.0\n"}};
  const QByteArray foreignBefore = contents(foreign), newerBefore = contents(newer);
  for (const auto& row : rows)
    EXPECT_EQ(administer(row.arguments, row.input), row.expected) << row.what;
  EXPECT_EQ(contents(foreign), foreignBefore);
  EXPECT_EQ(contents(newer), newerBefore);
  EXPECT_FALSE(QFile::exists(none));
  EXPECT_EQ(QFile::permissions(database()) & (QFile::ReadGroup | QFile::ReadOther), 0);
  EXPECT_FALSE(contents(database()).contains("ffne dich")) << "passwords stand in the file";
}

} // namespace
