// The two listings: what they send, and what they append to the host's list.
#include "tests/ServiceUnderTest.h"

namespace {

// Login value, entries of the list ("-": none at all), result, what is appended, what to the light list if it differs.
// "@" is a map with three texts, "$" its identifier.
const char* const listings = R"(
NotPremiumAccount | <M>@</M> | 5 |
7 | <M>@</M> | 1 |
- | <M>@</M> | 1 |
Success | - | 0 |
Success | | 0 |
Success | <M>@</M><M>@</M> | 0 | @; @
Success | <M xsi:nil="true"/><M>@</M> | 0 | @
Success | <M><Thumbnail/></M> | 0 | - - - 1970-01-01T00:00:00Z - - private - 0
Success | <M><MapName/><Author></Author><Description/></M> | 0 | '' - '' 1970-01-01T00:00:00Z '' - private - 0
Success | <M><MapName>&#x1F600;é</MapName><Author>a😀</Author></M> | 0 | 😀é - a😀 1970-01-01T00:00:00Z - - private - 0
Success | <M>@<MapId>67C8770B-44F1-410A-AB9A-F9B5446F13EE</MapId></M> | 0 | n $ a 1970-01-01T00:00:00Z d - private - 0
Success | <M>@<MapId>$</MapId></M> | 0 | n $ a 1970-01-01T00:00:00Z d - private - 0
Success | <M>@<MapId>number 5</MapId></M> | 0 | @
Success | <M>@<LastModified>1969-12-31T23:59:59Z</LastModified></M> | 0 | n - a 2106-02-07T06:28:15Z d - private - 0
Success | <M>@<LastModified>2106-02-07T06:28:17Z</LastModified></M> | 0 | n - a 1970-01-01T00:00:01Z d - private - 0
Success | <M>@<LastModified>2012-03-04T07:06:07+02:00</LastModified></M> | 0 | n - a 2012-03-04T05:06:07Z d - private - 0
Success | <M>@<Created>2001-01-01T00:00:00Z</Created><MapContent>QUJD</MapContent><Preview>QUJD</Preview></M> | 0 | @
Success | <M id="m"><Thumbnail>QUJD</Thumbnail></M><M href="#m"/> | 0 | - - - 1970-01-01T00:00:00Z - 414243 private - 0; - - - 1970-01-01T00:00:00Z - 414243 private - 0 | - - - 1970-01-01T00:00:00Z - - private - 0; - - - 1970-01-01T00:00:00Z - - private - 0
Success | <M>@<Thumbnail>VAB4</Thumbnail><IsPublished>1</IsPublished></M> | 0 | n - a 1970-01-01T00:00:00Z d 540078 published - 0 | n - a 1970-01-01T00:00:00Z d - published - 0
Success | <M>@<Version>1.5</Version><Format_IsTwlx>1</Format_IsTwlx></M> | 0 | n - a 1970-01-01T00:00:00Z d - private - 1.5 twlx
)";
TEST(Listing, AppendsToTheHostsList) {
  for (const auto& row : rows(listings))
    for (const bool lite : {false, true}) {
      SCOPED_TRACE((lite ? "light " : "full ") + row[0] + " " + row[1]);
      std::string entries = replaced(row[1], "@", "<MapName>n</MapName><Author>a</Author><Description>d</Description>");
      entries = replaced(replaced(entries, "$", knownId), "M>", "DesktopInfoClass>");
      entries = replaced(entries, "<M ", "<DesktopInfoClass ");
      const HostOperation& operation = hostOperations()[lite ? 2 : 1];
      ServiceUnderTest tested(operation.name, (row[1] == "-" ? "" : element("DesktopInfoObjectList", entries)) +
                                                  message::loginObject(row[0]));
      const QList<MapInfo>& maps = tested.service.maps;
      for (int call = 0; call < 2; ++call)
        EXPECT_EQ(row[2], std::to_string(operation.call(tested.service)));
      std::string shown;
      for (int at = 0; at < maps.size(); ++at)
        shown += (at > 0 ? "; " : "") + show(maps[at]);
      std::string once = replaced(row[lite && row.size() > 4 ? 4 : 3], "$", knownId);
      once = replaced(once, "@", "n - a 1970-01-01T00:00:00Z d - private - 0");
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
