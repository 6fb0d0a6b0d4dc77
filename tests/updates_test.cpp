// Update checks, crash reports and settings at the host's interface.
#include "tests/Session.h"

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
  Session session(replies);
  for (const auto& row : rows(checks)) {
    SCOPED_TRACE(row[0] + " " + row[1]);
    EXPECT_EQ(row[2] == "true", row[0] == "plain" ? session.service.checkForUpdates("9", 1)
                                                  : session.service.checkForUpdatesExtended("9", 1, 2));
    EXPECT_EQ(row[3] + " " + row[4],
              text(session.service.getSetupUrl()) + " " + text(session.service.getSetupVersion()));
  }
}

TEST(Updates, RequestsCrossTheirArguments) {
  Session session({hangUp(std::string::npos)});
  session.service.login("ann", "p");
  session.service.checkForUpdates("1.é", -3);
  session.expectRequest(element("dsns:CheckDesktopVersion",
                                "<dsns:version>1.é</dsns:version>" + element("dsns:desktopLiveUpdateType", "-3")));
  session.service.checkForUpdatesExtended("", 4, 5);
  session.expectRequest(element("dsns:CheckDesktopVersionExtended",
                                "<dsns:applicationUpdateType>5</dsns:applicationUpdateType><dsns:version/>" +
                                    element("dsns:desktopLiveUpdateType", "4")));
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
    Session session({answer}), other({answer});
    EXPECT_EQ(result, session.service.sendCrashReport("sé", "m<\n", "d.txt", QByteArray("A\0C", 3))) << answer.bytes;
    session.expectRequest(element("dsns:" + name, "<dsns:subject>sé</dsns:subject><dsns:message>m&lt;\n</dsns:message>"
                                                  "<dsns:bytes>QQBD</dsns:bytes><dsns:filename>d.txt</dsns:filename>"));
    session.service.setEndPoint(QString::fromStdString(other.server.url()));
    EXPECT_EQ(result, session.service.sendCrashReport("", QString(), "", QByteArray())) << answer.bytes;
    other.expectRequest(element("dsns:" + name, "<dsns:subject/><dsns:message/><dsns:bytes/><dsns:filename/>"));
  }
}

TEST(Settings, TravelAsUtf8) {
  Session session("Login", ""), proxy("Login", "");
  session.service.setProxySettings("127.0.0.1", proxy.server.port(), "jö", "😀", true);
  session.service.login("a", "b");
  EXPECT_EQ("Basic asO2OvCfmIA=", proxy.server.request().header("Proxy-Authorization"));
  session.service.setProxySettings("127.0.0.1", 1, "x", "y", false);
  session.service.login("a", "b");
  EXPECT_EQ("", session.server.request().header("Proxy-Authorization"));
  EXPECT_EQ(11U, proxy.server.requests().size() * 10 + session.server.requests().size());
}

} // namespace
