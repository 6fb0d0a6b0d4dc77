// The two listings: what they send, and what they append to the host's list.
#include "tests/ServiceUnderTest.h"

namespace {

// Login value, entries of the list ("-": none at all), result, what is appended, what to the light list if it differs.
// <map> is an entry's element, SAMPLE a map with three texts, ID the known identifier.
const char* const listings = R"(
NotPremiumAccount | <map>SAMPLE</map> | 5 |
- | <map>SAMPLE</map> | 1 |
Success | - | 0 |
Success | <map>SAMPLE</map><map>SAMPLE</map> | 0 | SAMPLE; SAMPLE
Success | <map xsi:nil="true"/><map>SAMPLE</map> | 0 | SAMPLE
Success | <map><MapName/><Author></Author><Description/></map> | 0 | '' - '' 1970-01-01T00:00:00Z '' - private - 0
Success | <map><MapName>&#x1F600;é</MapName><Author>a😀</Author></map> | 0 | 😀é - a😀 1970-01-01T00:00:00Z - - private - 0
Success | <map>SAMPLE<MapId>67C8770B-44F1-410A-AB9A-F9B5446F13EE</MapId></map> | 0 | n ID a 1970-01-01T00:00:00Z d - private - 0
Success | <map>SAMPLE<MapId>ID</MapId></map> | 0 | n ID a 1970-01-01T00:00:00Z d - private - 0
Success | <map>SAMPLE<MapId>number 5</MapId></map> | 0 | SAMPLE
Success | <map><MapName>&#xFEFF;n</MapName></map> | 0 | n - - 1970-01-01T00:00:00Z - - private - 0
Success | <map>SAMPLE<LastModified>1969-12-31T23:59:59Z</LastModified></map> | 0 | n - a 2106-02-07T06:28:15Z d - private - 0
Success | <map>SAMPLE<LastModified>2106-02-07T06:28:17Z</LastModified></map> | 0 | n - a 1970-01-01T00:00:01Z d - private - 0
Success | <map id="m"><Thumbnail>QUJD</Thumbnail></map><map href="#m"/> | 0 | - - - 1970-01-01T00:00:00Z - 414243 private - 0; - - - 1970-01-01T00:00:00Z - 414243 private - 0 | - - - 1970-01-01T00:00:00Z - - private - 0; - - - 1970-01-01T00:00:00Z - - private - 0
Success | <map>SAMPLE<Thumbnail>VAB4</Thumbnail><IsPublished>1</IsPublished></map> | 0 | n - a 1970-01-01T00:00:00Z d 540078 published - 0 | n - a 1970-01-01T00:00:00Z d - published - 0
Success | <map>SAMPLE<Version>1.5</Version><Format_IsTwlx>1</Format_IsTwlx></map> | 0 | n - a 1970-01-01T00:00:00Z d - private - 1.5 twlx
)";
TEST(Listing, AppendsToTheHostsList) {
  for (const auto& row : rows(listings))
    for (const bool lite : {false, true}) {
      SCOPED_TRACE((lite ? "light " : "full ") + row[0] + " " + row[1]);
      std::string entries =
          replaced(row[1], "SAMPLE", "<MapName>n</MapName><Author>a</Author><Description>d</Description>");
      entries = replaced(replaced(entries, ">ID<", ">" + knownId + "<"), "map>", "DesktopInfoClass>");
      entries = replaced(entries, "<map ", "<DesktopInfoClass ");
      const HostOperation& operation = hostOperations()[lite ? 2 : 1];
      ServiceUnderTest tested(operation.name, (row[1] == "-" ? "" : element("DesktopInfoObjectList", entries)) +
                                                  message::loginObject(row[0]));
      const QList<MapInfo>& maps = tested.service.maps;
      for (int call = 0; call < 2; ++call)
        EXPECT_EQ(row[2], std::to_string(operation.call(tested.service)));
      std::string shown;
      for (int at = 0; at < maps.size(); ++at)
        shown += (at > 0 ? "; " : "") + show(maps[at]);
      std::string once = replaced(row[lite && row.size() > 4 ? 4 : 3], " ID ", " " + knownId + " ");
      once = replaced(once, "SAMPLE", "n - a 1970-01-01T00:00:00Z d - private - 0");
      EXPECT_EQ(show(known()) + (once.empty() ? "" : "; " + once + "; " + once), shown);
    }
}

TEST(Listing, SendsTheCredentialsOfTheLastLogin) {
  ServiceUnderTest tested("Login", message::loginValue("NotAUser"));
  tested.service.login("first", "other");
  tested.service.login("Zoë 😀 ", "p<&>");
  tested.service.logout();
  tested.service.getDesktopMapsListLite(true, tested.service.maps);
  tested.expectRequest("<GetMapsListLite_NEW_DESKTOP><username>Zoë 😀 </username><pass>p&lt;&amp;&gt;</pass>"
                       "<IsPublished>true</IsPublished><behaviour/></GetMapsListLite_NEW_DESKTOP>");
}

} // namespace
