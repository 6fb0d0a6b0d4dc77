// The login outcome in an answer, and the login state of client and service.
#include "tests/ServiceUnderTest.h"

#include <QtCore/QThread>
#include <memory>

namespace {

Reply answered(const std::string& value) { return reply(200, message::answer("Login", message::loginValue(value))); }
const Reply success = answered("Success"), refusal = answered("NotAUser");

enum class State { LoggedIn, LoggedOut, AsBefore };
const struct {
  Reply answer;
  int result;
  State after;
} logins[] = {
    {success, ResultOk, State::LoggedIn},
    {answered("2"), ResultOk, State::LoggedIn},
    {refusal, ResultNotAUser, State::LoggedOut},
    {answered(""), ResultNotAUser, State::LoggedOut},
    {answered("NotPremiumAccount"), ResultNotPremiumAccount, State::LoggedOut},
    {answered("None"), ResultFailed, State::LoggedOut},
    {reply(200, message::envelope("<LoginResponse/>")), ResultFailed, State::LoggedOut},
    {reply(200, message::envelope("<LoginResponse><LoginResult xsi:nil=\"1\"/></LoginResponse>")), ResultFailed,
     State::LoggedOut},
    // A call that fails before an answer was read leaves the state, whatever broke it.
    {answered("Successful"), ResultFailed, State::AsBefore},
    {hangUp(std::string::npos), ResultFailed, State::AsBefore},
    {reply(200, ""), ResultFailed, State::AsBefore},
    {reply(302, "", "Location: /elsewhere\r\n"), ResultFailed, State::AsBefore},
    {reply(404, "busy"), ResultFailed, State::AsBefore},
};
TEST(Login, AnswersDecideTheState) {
  for (const auto& row : logins)
    for (const bool before : {true, false}) {
      SCOPED_TRACE(row.answer.bytes);
      ServiceUnderTest tested({before ? success : refusal, row.answer});
      EXPECT_TRUE(tested.service.currentUser().isNull());
      EXPECT_EQ(before ? ResultOk : ResultNotAUser, tested.service.login("first", "p"));
      EXPECT_EQ(before, tested.service.isUserLogon());
      EXPECT_EQ(row.result, tested.service.login("second", "p"));
      EXPECT_EQ(row.after == State::AsBefore ? before : row.after == State::LoggedIn, tested.service.isUserLogon());
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
}

TEST(Login, TwoServicesShareNothing) {
  const auto use = [](const char* user) {
    ServiceUnderTest tested({success});
    for (int call = 0; call < 100; ++call)
      EXPECT_EQ(ResultOk, tested.service.login(user, "p"));
    tested.expectRequest(element("Login", element("username", user) + "<pass>p</pass>"));
  };
  const std::unique_ptr<QThread> other(QThread::create(use, "ann"));
  other->start();
  use("bob");
  other->wait();
}

} // namespace
