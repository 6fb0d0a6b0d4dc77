// The local service in daily use: what each operation does with accounts, maps, update information and reports.
#include "tests/LocalServiceFixture.h"

#include <QtCore/QFile>
#include <iterator>

namespace {

TEST_F(LocalServiceTest, KeepsMaps) {
  Map plan(L"Plan ü", "one");
  const std::string kept = "MapName='Plan ü' MapId=# Author='' Created=% Description=''";
  EXPECT_EQ(call(Index::SaveDesktopMap, by(L"anna", &plan)), "2 login 2 {" + kept + " Version=1}");
  EXPECT_EQ(call(Index::SaveDesktopMap, by(L"anna", &plan)), "1 login 2 null") << "the name is taken";
  EXPECT_EQ(call(Index::SaveMap_USCORENEW_USCOREIPAD, by(L"anna", &plan, true)), "2 login 2 {" + kept + " Version=2}");
  plan.identified(identifier("Plan ü"));
  plan.IsPublished = true;
  EXPECT_EQ(call(Index::SaveMap_USCORENEW_USCOREDESKTOP, by(L"anna", &plan)), "1 login 2 null");
  Map other(L"Other", "two");
  EXPECT_EQ(call(Index::SaveDesktopMap, by(L"anna", &other)).substr(0, 9), "2 login 2");
  plan.bytes = "new";
  const std::string published = " IsPublished=1";
  EXPECT_EQ(call(Index::SaveMap_USCORENEW_USCOREDESKTOP, by(L"anna", &plan, true)),
            "2 login 2 {" + kept + published + " Version=3}");

  const std::string second = " {MapName='Other' MapId=# Author='' Created=% Description=''";
  EXPECT_EQ(call(Index::GetMapsList_USCORENEW_USCOREDESKTOP, by(L"anna")), "login 2 {" + kept + " Thumbnail=3:new" +
                                                                               published + " Version=3}" + second +
                                                                               " Thumbnail=3:two Version=1} end");
  EXPECT_EQ(call(Index::GetDesktopMapsListLite, by(L"anna")),
            "login 2 {" + kept + published + " Version=3}" + second + " Version=1} end");
  Values onlyPublished = by(L"anna");
  onlyPublished.IsPublished = true;
  EXPECT_EQ(call(Index::GetDesktopMapsListLite, onlyPublished), "login 2 {" + kept + published + " Version=3} end");
  EXPECT_EQ(call(Index::GetMapsList_USCORENEW_USCOREIPAD, by(L"carl")), "login 2 end");

  const std::string whole = "2 login 2 {" + kept + published + " MapContent=3:new Version=3}";
  for (const Index index :
       {Index::GetMapContent_USCORENEW_USCOREIPAD, Index::GetMapContentConverted_USCORENEW_USCOREIPAD,
        Index::GetMapContent_USCORENEW_USCOREDESKTOP, Index::GetDesktopMapContent, Index::GetDesktopUniversalMap})
    EXPECT_EQ(call(index, by(L"anna", &plan)), whole);
  EXPECT_EQ(call(Index::GetDesktopMapPreview, by(L"anna", &plan)),
            "2 login 2 {" + kept + " Thumbnail=3:new" + published + " Version=3}");
  Values convert = by(L"anna", &plan);
  plan.MapContent = nullptr;
  EXPECT_EQ(call(Index::ConvertMap, convert), whole);
  convert.outFormat = L"b";
  EXPECT_EQ(call(Index::ConvertMap, convert), "3 login 2 null");

  plan.name = L"Other";
  EXPECT_EQ(call(Index::RenameDesktopMap, by(L"anna", &plan)), "1 login 2 null");
  plan.name = L"";
  EXPECT_EQ(call(Index::RenameDesktopMap, by(L"anna", &plan)), "3 login 2 null");
  plan.name = L"<&>";
  EXPECT_EQ(call(Index::RenameDesktopMap, by(L"anna", &plan)).substr(0, 25), "2 login 2 {MapName='<&>' ");
  EXPECT_EQ(call(Index::DeleteDesktopMap, by(L"anna", &plan)), "2 login 2 null");
  EXPECT_EQ(call(Index::GetDesktopMapsListLite, by(L"anna")), "login 2" + second + " Version=1} end");
}

TEST_F(LocalServiceTest, RefusesMaps) {
  for (const wchar_t* name : {L"Removed", L"Busy", L"Foreign"}) {
    Map map(name, "x");
    ASSERT_EQ(call(Index::SaveDesktopMap, by(map.name == L"Foreign" ? L"carl" : L"anna", &map)).substr(0, 1), "2");
  }
  Map removed(L"Removed", "x");
  ASSERT_EQ(call(Index::DeleteDesktopMap, by(L"anna", &removed.identified(identifier("Removed")))), "2 login 2 null");
  EXPECT_EQ(administer({"--start-collaboration", identifier("Busy")}), "");
  const struct {
    QByteArray id;
    std::string expected;
  } rows[] = {{identifier("Removed"), "6"}, {identifier("Busy"), "5"}, {identifier("Foreign"), "4"}, {"", "3"}};
  for (const auto& row : rows)
    for (const Index index :
         {Index::GetDesktopMapContent, Index::SaveDesktopMap, Index::RenameDesktopMap, Index::DeleteDesktopMap}) {
      if (row.id.isEmpty() && index == Index::SaveDesktopMap)
        continue; // stores a new map
      Map map(L"Name", "x");
      EXPECT_EQ(call(index, by(L"anna", &map.identified(row.id), true)), row.expected + " login 2 null")
          << tarnwell::operations[static_cast<std::size_t>(index)].name;
    }
  EXPECT_EQ(administer({"--end-collaboration", identifier("Busy")}), "");
  Map busy(L"Busy", "x");
  EXPECT_EQ(call(Index::DeleteDesktopMap, by(L"anna", &busy.identified(identifier("Busy")))), "2 login 2 null");
  EXPECT_EQ(administer({"--start-collaboration", "nothing"}), "status 1");
}

TEST_F(LocalServiceTest, LooksAtTheAccount) {
  Values stranger = by(L"nobody");
  Values wrong = by(L"anna");
  wrong.pass = L"Öffne dich";
  Values poor = by(L"poor");
  for (std::size_t i = 0; i < std::size(tarnwell::operations); ++i) {
    const tarnwell::Operation& operation = tarnwell::operations[i];
    if (std::string(tarnwell::typeOf(operation.request).rows[0].local) != "username")
      continue;
    SCOPED_TRACE(operation.name);
    const auto ends = [&](const Values& values) { return call(static_cast<Index>(i), values); };
    EXPECT_NE(ends(stranger).find("login 0"), std::string::npos) << ends(stranger);
    EXPECT_NE(ends(wrong).find("login 0"), std::string::npos) << ends(wrong);
    EXPECT_NE(ends(poor).find("login 1"), std::string::npos) << ends(poor);
    EXPECT_NE(ends(by(L"anna")).find("login 2"), std::string::npos) << ends(by(L"anna"));
  }
  QFile file(database());
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  EXPECT_FALSE(file.readAll().contains("ffne dich")) << "passwords stand in the file";
}

TEST_F(LocalServiceTest, AnnouncesUpdatesAndKeepsReports) {
  EXPECT_EQ(call(Index::CheckDesktopVersion, {}), "Path='' Version=''");
  EXPECT_EQ(administer({"--update-version", "1.10", "--update-url", "http://a.example/?b&c"}), "");
  EXPECT_EQ(call(Index::CheckDesktopVersion, {}), "Path='http://a.example/?b&c' Version='1.10'") << "1.9 is older";
  EXPECT_EQ(call(Index::CheckDesktopVersionExtended, {}), "Path='http://a.example/?b&c' Version='1.10'");
  Values current;
  current.version = L"1.10";
  EXPECT_EQ(call(Index::CheckDesktopVersion, current), "Path='' Version=''");

  Map any(L"", "ABC");
  Values report;
  report.bytes = &any.block;
  EXPECT_EQ(call(Index::SendFeedbackWithAttachment, report), "2 login 4 null");
  EXPECT_EQ(call(Index::SendFeedback, report), "2 login 4 null");
  const QByteArray reports = administer({"--list-reports"});
  EXPECT_EQ(reports.count("\tCrash\n"), 2) << reports.toStdString();
  EXPECT_EQ(reports.count("It broke: ü\n"), 2) << reports.toStdString();
  EXPECT_EQ(reports.count(", 3 bytes\n"), 1) << reports.toStdString();
}

TEST_F(LocalServiceTest, SaysWhenTheDatabaseFails) {
  EXPECT_EQ(stop(), 0);
  start({"--read-only"});
  Map map(L"Plan", "x");
  EXPECT_EQ(call(Index::SaveDesktopMap, by(L"anna", &map)), "0 login 2 null");
  EXPECT_EQ(call(Index::SendFeedback, {}), "0 login 4 null");
  EXPECT_EQ(call(Index::GetDesktopMapsList, by(L"anna")), "login 2 end");
  QFile file(database());
  ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(QByteArray(8192, 'x')) == 8192);
  file.close();
  EXPECT_EQ(call(Index::Login, by(L"anna")), "login 3");
  EXPECT_EQ(call(Index::GetDesktopMapsList, by(L"anna")), "login 3 no list");
  EXPECT_EQ(call(Index::GetDesktopMapContent, by(L"anna", &map)), "0 login 3 null");
  EXPECT_EQ(call(Index::CheckDesktopVersion, {}), "error 2");
  EXPECT_EQ(administer({"--list-maps"}), "status 1");
}

} // namespace
