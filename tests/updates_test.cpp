// Update checks and crash reports at the host's interface.
#include "tests/ServiceUnderTest.h"

namespace {

// Kind of check, result element's content ("-": no answer, "?": none in the answer), result (0: there is an update),
// address and version afterwards.
const char* const checks = R"(
         | <Path>p0</Path>                                     | 1 | -  | -
Extended | <Version>v0</Version><Path xsi:nil="true"/>         | 1 | -  | -
         | <Path/><Version>v1</Version>                        | 1 | '' | v1
Extended | <Version>v2</Version><Path>p2😀</Path>              | 0 | p2😀 | v2
         | -                                                   | 0 | p2😀 | v2
Extended | ?                                                   | 0 | p2😀 | v2
         | <Path>p4</Path><Version>v4</Version>                | 0 | p4 | v4
Extended | <Path>p5</Path><Version/>                           | 1 | p5 | ''
)";
TEST(Updates, StoredTextsDecide) {
  std::vector<Reply> replies;
  for (const auto& row : rows(checks)) {
    const std::string name = "CheckDesktopVersion" + row[0];
    const std::string answer =
        row[1] == "?" ? message::envelope(element(name + "Response", "")) : message::answer(name, row[1]);
    replies.push_back(row[1] == "-" ? hangUp(0) : reply(200, answer));
  }
  ServiceUnderTest tested(replies);
  for (const auto& row : rows(checks)) {
    SCOPED_TRACE(row[0] + " " + row[1]);
    EXPECT_EQ(row[2], std::to_string(hostOperations()[row[0].empty() ? 7 : 8].call(tested.service)));
    EXPECT_EQ(row[3] + " " + row[4], text(tested.service.getSetupUrl()) + " " + text(tested.service.getSetupVersion()));
  }
}

TEST(CrashReport, IsJudgedByTheCallAlone) {
  const std::string name = "SendFeedbackWithAttachment";
  const std::pair<Reply, bool> cases[] = {
      {reply(200, message::answer(name, message::outcome("NotAUser", "DbError"))), true},
      {reply(200, message::envelope(element(name + "Response", ""))), true},
      {reply(200, message::answer("SendFeedback", "")), false},
      {hangUp(std::string::npos), false}};
  for (const auto& [answer, isTaken] : cases) {
    ServiceUnderTest tested({answer});
    EXPECT_EQ(isTaken, hostOperations()[9].call(tested.service) == 0) << answer.bytes;
  }
}

} // namespace
