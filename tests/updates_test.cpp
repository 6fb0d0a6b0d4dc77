// Update checks and crash reports at the host's interface.
#include "tests/ServiceUnderTest.h"

namespace {

// Kind of check, result element's content ("-": no answer, "?": none in the answer), result, address and version
// afterwards.
const char* const checks = R"(
plain    | -                                                   | false | -  | -
plain    | <Path>p0</Path>                                     | false | -  | -
extended | <Version>v0</Version><Path xsi:nil="true"/>         | false | -  | -
plain    | <Path/><Version>v1</Version>                        | false | '' | v1
extended | <Version>v2</Version><Path>p2😀</Path>              | true  | p2😀 | v2
plain    | -                                                   | true  | p2😀 | v2
extended | ?                                                   | true  | p2😀 | v2
plain    | <Path>p3</Path>                                     | true  | p2😀 | v2
plain    | <Path>p4</Path><Version>v4</Version>                | true  | p4 | v4
extended | <Path>p5</Path><Version/>                           | false | p5 | ''
)";
TEST(Updates, StoredTextsDecide) {
  std::vector<Reply> replies;
  for (const auto& row : rows(checks)) {
    const std::string name = row[0] == "plain" ? "CheckDesktopVersion" : "CheckDesktopVersionExtended";
    const std::string answer =
        row[1] == "?" ? message::envelope(element(name + "Response", "")) : message::answer(name, row[1]);
    replies.push_back(row[1] == "-" ? hangUp(0) : reply(200, answer));
  }
  ServiceUnderTest tested(replies);
  for (const auto& row : rows(checks)) {
    SCOPED_TRACE(row[0] + " " + row[1]);
    EXPECT_EQ(row[2] == "true", row[0] == "plain" ? tested.service.checkForUpdates("9", 1)
                                                  : tested.service.checkForUpdatesExtended("9", 1, 2));
    EXPECT_EQ(row[3] + " " + row[4], text(tested.service.getSetupUrl()) + " " + text(tested.service.getSetupVersion()));
  }
}

TEST(Updates, RequestsCrossTheirArguments) {
  ServiceUnderTest tested({hangUp(std::string::npos)});
  tested.service.login("ann", "p");
  tested.service.checkForUpdates("1.é", -3);
  tested.expectRequest(
      element("CheckDesktopVersion", "<version>1.é</version>" + element("desktopLiveUpdateType", "-3")));
  tested.service.checkForUpdatesExtended("", 4, 5);
  tested.expectRequest(
      element("CheckDesktopVersionExtended",
              "<applicationUpdateType>5</applicationUpdateType><version/>" + element("desktopLiveUpdateType", "4")));
}

TEST(CrashReport, IsJudgedByTheCallAlone) {
  const std::string name = "SendFeedbackWithAttachment";
  const std::pair<Reply, bool> cases[] = {
      {reply(200, message::answer(name, message::outcome("Success", "Success"))), true},
      {reply(200, message::answer(name, message::outcome("NotAUser", "DbError"))), true},
      {reply(200, message::envelope(element(name + "Response", ""))), true},
      {reply(500, message::fault("soap:Sender")), false},
      {reply(200, message::answer("SendFeedback", "")), false},
      {hangUp(std::string::npos), false}};
  for (const auto& [answer, result] : cases) {
    ServiceUnderTest tested({answer});
    EXPECT_EQ(result, tested.service.sendCrashReport("sé", "m<\n", "d.txt", QByteArray("A\0C", 3))) << answer.bytes;
    tested.expectRequest(element(name, "<subject>sé</subject><message>m&lt;\n</message>"
                                       "<bytes>QQBD</bytes><filename>d.txt</filename>"));
    EXPECT_EQ(result, tested.service.sendCrashReport("", QString(), "", QByteArray())) << answer.bytes;
    tested.expectRequest(element(name, "<subject/><message/><bytes/><filename/>"));
  }
}

} // namespace
