// The login outcome in an answer, and the login state of client and service.
#include "tests/ServiceUnderTest.h"

namespace {

Reply answered(const std::string& value) { return reply(200, message::answer("Login", message::loginValue(value))); }
const Reply success = answered("Success"), refusal = answered("NotAUser");

// The answer, result, whether the user is logged in afterwards ("as before": the call failed before an answer was
// read).
const std::tuple<Reply, int, const char*> logins[] = {
    {success, ResultOk, "in"},
    {refusal, ResultNotAUser, "out"},
    {answered(""), ResultNotAUser, "out"},
    {answered("NotPremiumAccount"), ResultNotPremiumAccount, "out"},
    {answered("None"), ResultFailed, "out"},
    {reply(200, message::envelope("<LoginResponse/>")), ResultFailed, "out"},
    {reply(200, message::envelope("<LoginResponse><LoginResult xsi:nil=\"1\"/></LoginResponse>")), ResultFailed, "out"},
    {answered("Successful"), ResultFailed, "as before"},
    {hangUp(std::string::npos), ResultFailed, "as before"},
    {reply(302, "", "Location: /elsewhere\r\n"), ResultFailed, "as before"},
    {reply(404, "busy"), ResultFailed, "as before"},
};
TEST(Login, AnswersDecideTheState) {
  for (const auto& [answer, result, after] : logins)
    for (const bool before : {true, false}) {
      SCOPED_TRACE(answer.bytes);
      ServiceUnderTest tested({before ? success : refusal, answer});
      EXPECT_TRUE(tested.service.currentUser().isNull());
      EXPECT_EQ(before ? ResultOk : ResultNotAUser, tested.service.login("first", "p"));
      EXPECT_EQ(before, tested.service.isUserLogon());
      EXPECT_EQ(result, tested.service.login("second", "p"));
      EXPECT_EQ(after == std::string("as before") ? before : after == std::string("in"), tested.service.isUserLogon());
      tested.service.logout();
      EXPECT_FALSE(tested.service.isUserLogon());
      EXPECT_EQ("second", tested.service.currentUser());
      EXPECT_EQ(2U, tested.server.requests().size());
    }
}

TEST(Login, FlagOfTheClientIsOnlyEverSet) {
  const ScriptedService server({refusal, hangUp(0)});
  STLDesktopService client;
  client.setEndPoint(server.url());
  _dsns__LoginResponse response;
  EXPECT_EQ(0, client.login(L"a", L"b", &response));
  EXPECT_TRUE(client.loginSucces()) << "an answer, whatever it says";
  EXPECT_NE(0, client.login(L"c", L"d", &response));
  EXPECT_TRUE(client.loginSucces()) << "a failed call clears nothing";
  EXPECT_EQ(nullptr, response.LoginResult);
  EXPECT_NE(0, client.checkForUpdate(L"1", 2, nullptr)) << "takes a null response";
}

} // namespace
