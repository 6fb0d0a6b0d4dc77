// The login outcome on the wire, and the login state of client and service.
#include "client/STLDesktopService.h"
#include "tests/Session.h"
#include "tests/WireClient.h"

namespace {

// What the login value's text, or the response element's content, is read as.
const char* const values = R"(
NotAUser => login 0 | NotPremiumAccount => login 1 | Success => login 2 | DbError => login 3 | None => login 4 | => login 0
2 => login 2 | 7 => login 7 | -1 => login -1 | success => error 4 | Yes => error 4 | Successful => error 4 | 2.0 => error 4
)";
const char* const contents = R"(
                                                                                                           | no login
<LoginResult xsi:nil="true"/>                                                                              | no login
<LoginResult/>                                                                                             | login 0
<LoginResult><DesktopLoginValue xsi:nil="true"/></LoginResult>                                             | login 0
<LoginResult><a><b/></a><DesktopLoginValue>None</DesktopLoginValue><c/></LoginResult>                      | login 4
<LoginResult><DesktopLoginValue>Success</DesktopLoginValue><DesktopLoginValue>x</DesktopLoginValue></LoginResult> | login 2
<a/><LoginResult><x:DesktopLoginValue>3</x:DesktopLoginValue><d:DesktopLoginValue>2</d:DesktopLoginValue></LoginResult> | login 2
<LoginResult xsi:type="d:DesktopLoginResponseClass"><DesktopLoginValue>2</DesktopLoginValue></LoginResult> | login 2
<LoginResult href="#r"/></LoginResponse><d:DesktopLoginResponseClass id="r"><DesktopLoginValue>Success</DesktopLoginValue></d:DesktopLoginResponseClass> | login 2
<LoginResult enc:ref="r"/></LoginResponse><d:DesktopLoginResponseClass id="r"><DesktopLoginValue>Success</DesktopLoginValue></d:DesktopLoginResponseClass> | login 2
<d:DesktopLoginResponseClass id="r"><DesktopLoginValue>DbError</DesktopLoginValue></d:DesktopLoginResponseClass><LoginResult href="#r"/> | login 3
<LoginResult><DesktopLoginValue href="#v"/></LoginResult></LoginResponse><d:DesktopLoginEnumerators id="v">Success</d:DesktopLoginEnumerators> | login 2
)";

std::string answered(const std::string& value) { return message::answer("Login", message::loginValue(value)); }
const Reply success = reply(200, answered("Success")), refusal = reply(200, answered("NotAUser"));

/// Reads `body` as the answer of a login, and follows what it does to the login state.
void expectLogin(const std::string& body, const std::string& read) {
  SCOPED_TRACE(body);
  WireClient client;
  for (client.piece = 0; client.piece <= 5; ++client.piece)
    EXPECT_EQ(read, client.login(body)) << "in pieces of " << client.piece;

  const int result = read == "login 2" ? 0 : read == "login 0" ? 4 : read == "login 1" ? 5 : 1;
  for (const bool before : {true, false}) {
    Session session({before ? success : refusal, reply(200, body)});
    EXPECT_EQ(before ? 0 : 4, session.service.login("first", "p"));
    EXPECT_EQ(before, session.service.isUserLogon());
    EXPECT_EQ(result, session.service.login("second", "p"));
    EXPECT_EQ(read.find("error") == 0 ? before : result == 0, session.service.isUserLogon());
    EXPECT_EQ("second", session.service.currentUser());
    session.service.logout();
    EXPECT_FALSE(session.service.isUserLogon());
    EXPECT_EQ("second", session.service.currentUser());
    EXPECT_EQ(2U, session.server.requests().size());
  }
}

TEST(Login, AnswersDecideTheState) {
  for (const auto& row : rows(values))
    for (const std::string& cell : row)
      expectLogin(answered(cells(cell, "=>")[0]), cells(cell, "=>")[1]);
  for (const auto& row : rows(contents)) {
    const bool open = row[0].find("</LoginResponse>") == std::string::npos;
    expectLogin(message::envelope("<LoginResponse>" + row[0] + (open ? "</LoginResponse>" : "")), row[1]);
  }
}

// A call that fails before an answer was read leaves the state, whatever broke it.
TEST(Login, FailedCallsLeaveTheState) {
  std::vector<Reply> failures = {hangUp(0),
                                 hangUp(100),
                                 hangUp(std::string::npos),
                                 success.closeAfter(17),
                                 success.closeAfter(300),
                                 reply(500, message::fault("soap:Receiver"))};
  for (const char* body : {"", "<a>", "busy"})
    failures.insert(failures.end(), {reply(200, body), reply(302, body, "Location: /elsewhere\r\n"), reply(404, body)});
  std::vector<Reply> script = {success};
  for (const Reply& failure : failures)
    script.insert(script.end(), {failure, success});
  Session session(script);
  EXPECT_TRUE(session.service.currentUser().isNull());
  session.service.logout();
  EXPECT_FALSE(session.service.isUserLogon());
  ASSERT_EQ(ResultOk, session.service.login("ann", "p"));
  for (const Reply& failure : failures) {
    SCOPED_TRACE(failure.bytes);
    EXPECT_EQ(ResultFailed, session.service.login("bob", "wrong"));
    EXPECT_TRUE(session.service.isUserLogon());
    EXPECT_EQ("bob", session.service.currentUser());
    EXPECT_EQ(ResultOk, session.service.login("ann", "p"));
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
  client.setLoginResult(false);
  EXPECT_FALSE(client.loginSucces());
}

TEST(Login, OutcomesAsResults) {
  TarnwellService service;
  const int logins[] = {4, 5, 0, 1, 1, 1}, accesses[] = {1, 6, 0, 1, 7, 9, 10, 1};
  for (int value = 0; value < 6; ++value)
    EXPECT_EQ(logins[value], service.loginResult(value, value)) << value;
  for (int value = 0; value < 8; ++value)
    EXPECT_EQ(accesses[value], service.mapAccess(value)) << value;
  for (const int value : {-1, -2147483647 - 1, 2147483647, 258})
    EXPECT_EQ(11, 10 * service.loginResult(2, value) + service.mapAccess(value)) << value;
}

// Two services share nothing: one waits for its answer while the other logs in.
TEST(Login, TwoServicesAreIndependent) {
  Session slow({success.stall()}), fast({success});
  int result = -1;
  std::thread waiting([&] { result = slow.service.login("a", "p"); });
  EXPECT_EQ(ResultOk, fast.service.login("b", "p"));
  slow.server.release();
  waiting.join();
  EXPECT_EQ(ResultOk, result);
  EXPECT_EQ("ab", slow.service.currentUser() + fast.service.currentUser());
}

} // namespace
