// The two listings: what they send, and what they append to the host's list.
#include "protocol/binding/Receiver.h"
#include "tests/ServiceUnderTest.h"
#include "tests/WireClient.h"

namespace {

// Login value, entries of the list ("-": none at all), result, what is appended, what to the light list if it differs.
// <map> is an entry's element, SAMPLE a map with three texts, ID the known identifier.
const char* const listings = R"(
NotPremiumAccount | <map>SAMPLE</map> | 5 |
7 | <map>SAMPLE</map> | 1 |
- | <map>SAMPLE</map> | 1 |
Success | - | 0 |
Success | | 0 |
Success | <map>SAMPLE</map><map>SAMPLE</map> | 0 | SAMPLE; SAMPLE
Success | <map xsi:nil="true"/><map>SAMPLE</map> | 0 | SAMPLE
Success | <map><Thumbnail/></map> | 0 | - - - 1970-01-01T00:00:00Z - - private - 0
Success | <map><MapName/><Author></Author><Description/></map> | 0 | '' - '' 1970-01-01T00:00:00Z '' - private - 0
Success | <map><MapName>&#x1F600;é</MapName><Author>a😀</Author></map> | 0 | 😀é - a😀 1970-01-01T00:00:00Z - - private - 0
Success | <map>SAMPLE<MapId>67C8770B-44F1-410A-AB9A-F9B5446F13EE</MapId></map> | 0 | n ID a 1970-01-01T00:00:00Z d - private - 0
Success | <map>SAMPLE<MapId>ID</MapId></map> | 0 | n ID a 1970-01-01T00:00:00Z d - private - 0
Success | <map>SAMPLE<MapId>number 5</MapId></map> | 0 | SAMPLE
Success | <map><MapName>&#xFEFF;n</MapName></map> | 0 | n - - 1970-01-01T00:00:00Z - - private - 0
Success | <map>SAMPLE<LastModified>1969-12-31T23:59:59Z</LastModified></map> | 0 | n - a 2106-02-07T06:28:15Z d - private - 0
Success | <map>SAMPLE<LastModified>2106-02-07T06:28:17Z</LastModified></map> | 0 | n - a 1970-01-01T00:00:01Z d - private - 0
Success | <map>SAMPLE<LastModified>2012-03-04T07:06:07+02:00</LastModified></map> | 0 | n - a 2012-03-04T05:06:07Z d - private - 0
Success | <map>SAMPLE<Created>2001-01-01T00:00:00Z</Created><MapContent>QUJD</MapContent><Preview>QUJD</Preview></map> | 0 | SAMPLE
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

/// One of `texts`, which "|" divides.
std::string any(std::mt19937& random, const std::string& texts) {
  const std::vector<std::string> all = cells(texts);
  return all[random() % all.size()];
}

const char* const usual = "<MapName>n&amp;&#x1F600;é</MapName>|<d:Author><![CDATA[<a>]]></d:Author>|<MapId>$</MapId>|"
                          "<Author xsi:nil='true'/>|<Description>d<b>e</b></Description>|<Thumbnail>QUJD</Thumbnail>|"
                          "<Thumbnail/>|<Preview>QUJDRA==</Preview>|<MapContent>QUI=</MapContent>|<!-- c -->|text|"
                          "<Unknown><@/></Unknown>|<IsPublished>1</IsPublished>|<Version>1.5</Version>|<MapName/>|"
                          "<LastModified>2012-03-04T05:06:07Z</LastModified>|<Format_IsTwlx>true</Format_IsTwlx>";
const char* const wrong = "<Version>x</Version>|<IsPublished>7</IsPublished>|<Thumbnail>?</Thumbnail>|&no;|</@>";
const char* const referring = "<Author href='#t'/>|<Thumbnail href='#b'/>|<MapId href='#g'/>|<Thumbnail href='cid:a'/>|"
                              "<X id='x'/>|<MapName id='n'>n</MapName>";
const char* const between = "<@/>|<@/>|<@/>|<@ xsi:nil='true'/>|<X><@/></X>|text|<!-- c -->";
const char* const references =
    "<@ href='#m'/>|<@ href='#m'/>|<@ href='#m'/>|<@ href='#x'/>|<@ id='e'><Thumbnail>QUJD</Thumbnail></@>|"
    "<X id='x' xsi:type='d:DesktopInfoClass'><MapName>x</MapName></X>";
const char* const target =
    "<@ id='m'><MapName id='t'>s</MapName><MapId id='g'>$</MapId><Thumbnail id='b'>QQ==</Thumbnail></@>";

/// The result of a listing as no service should send it.
std::string hostileResult(std::mt19937& random) {
  const auto oneIn = [&random](unsigned count) { return random() % count == 0; };
  const bool refers = oneIn(2);
  std::vector<std::string> entries(random() % 8);
  for (std::string& entry : entries) {
    while (!oneIn(5))
      entry += any(random, oneIn(100) ? wrong : refers && oneIn(5) ? referring : usual);
    entry = element("@", entry) + any(random, refers && oneIn(2) ? references : between);
  }
  if (refers)
    entries.insert(entries.begin() + static_cast<long>(random() % (entries.size() + 1)), target);
  const std::string login =
      message::loginObject(any(random, "Success|Success|Success|Success|Success|Success|Success|NotAUser|7|-"));
  std::string list;
  for (const std::string& entry : entries)
    list += entry;
  list = element("DesktopInfoObjectList", list);
  if (oneIn(8))
    list += any(random, "<X/>|<@/>|<DesktopInfoObjectList><@/></DesktopInfoObjectList>");
  return replaced(replaced(oneIn(2) ? login + list : list + login, "$", knownId), "@", "DesktopInfoClass");
}

// Half of the answers have no ids, references or attachments: their descriptions are taken while they arrive. The
// same host without a receiver reads everything first, and an id of the list makes every host do so.
TEST(Listing, IsTheSameAsItArrivesAndAtTheEnd) {
  const std::string multipart = "Content-Type: multipart/related; boundary=b\r\n",
                    part = "\r\n--b\r\nContent-ID: <a>\r\n\r\nattached\r\n--b--\r\n";
  std::mt19937 random(1);
  int taken = 0, kept = 0, failed = 0;
  for (int number = 0; number < 6000; ++number) {
    const HostOperation& operation = hostOperations()[1 + random() % 2];
    std::string answer = message::answer(operation.name, hostileResult(random));
    if (random() % 8 == 0)
      answer.resize(random() % answer.size());
    if (random() % 8 == 0)
      answer[random() % answer.size()] = "<>/'&\0 x"[random() % 8];
    std::string withId = answer;
    if (const std::size_t at = answer.find("<DesktopInfoObjectList>"); at != std::string::npos)
      withId.insert(at + 22, " id='l'");
    const std::size_t piece = random() % 9;
    const bool attached = random() % 8 == 0;
    std::string outcomes[3];
    for (std::string& outcome : outcomes) {
      Host host("http://service.example/");
      Wire wire(host.context());
      const std::string& xml = &outcome == &outcomes[2] ? withId : answer;
      wire.reply = (attached ? reply(200, "--b\r\n\r\n" + xml + part, multipart) : reply(200, xml)).bytes;
      wire.piece = piece;
      if (&outcome == &outcomes[1])
        tarnwell::setReceiver(host.context(), nullptr);
      const int result = operation.call(host);
      outcome = std::to_string(result) + host.seen();
      if (&outcome == &outcomes[0])
        ++(result != 0 ? failed : host.objects().find(" DesktopInfoClass=") == std::string::npos ? taken : kept);
    }
    EXPECT_EQ(outcomes[1], outcomes[0]) << answer;
    EXPECT_EQ(outcomes[2], outcomes[0]) << answer;
  }
  std::printf("%d lists taken while they arrived, %d kept until the end, %d failed\n", taken, kept, failed);
  EXPECT_GT(std::min(taken, kept), 500) << "the test feeds both ways";
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
