// What a request is on the wire: envelope, HTTP header, proxy; and the client's settings behind it.
#include "client/STLDesktopService.h"
#include "tests/Table.h"
#include "tests/WireClient.h"
#include "tests/Xml.h"

#include <gtest/gtest.h>

namespace {

const std::string service = TARNWELL_SERVICE_NAMESPACE;
const std::string success = message::answer("Login", message::loginValue("Success"));

TEST(Request, LoginAsItTravels) {
  const ScriptedService server(reply(200, success));
  STLDesktopService client;
  client.setEndPoint(server.url());
  _dsns__LoginResponse response;
  ASSERT_EQ(0, client.login(L"ann & <bob>", L"\"\x1F600 \x00E9", &response));
  EXPECT_EQ(2, response.LoginResult->DesktopLoginValue);

  const Request request = server.request();
  EXPECT_EQ(canonical(message::request("<dsns:Login><dsns:username>ann &amp; &lt;bob&gt;</dsns:username>"
                                       "<dsns:pass>\"😀 é</dsns:pass></dsns:Login>")),
            canonical(request.body));
  EXPECT_EQ(0U, request.head.find("POST /service/desktopservice.asmx HTTP/1."));
  EXPECT_EQ("127.0.0.1:" + std::to_string(server.port()), request.header("Host"));
  EXPECT_EQ("application/soap+xml; charset=utf-8; action=\"" + service + "Login\"", request.header("Content-Type"));
  EXPECT_EQ("\"" + service + "Login\"", request.header("SOAPAction"));
  EXPECT_EQ(std::to_string(request.body.size()), request.header("Content-Length"));
  EXPECT_EQ("", request.header("Transfer-Encoding") + request.header("Proxy-Authorization"));

  EXPECT_EQ(0U, request.body.find("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<SOAP-ENV:Envelope "));
  const std::size_t tag = request.body.find("<SOAP-ENV:Envelope ") + 19;
  const std::vector<std::string> prefixes = {
      "xmlns:SOAP-ENV=\"http://www.w3.org/2003/05/soap-envelope\"",
      "xmlns:SOAP-ENC=\"http://www.w3.org/2003/05/soap-encoding\"",
      "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"",
      "xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\"",
      "xmlns:dsns2=\"" TARNWELL_TYPES_NAMESPACE "\"",
      "xmlns:dsns3=\"" + service + "DesktopServiceSoap\"",
      "xmlns:dsns=\"" + service + "\"",
      "xmlns:dsns4=\"" + service + "DesktopServiceSoap12\"",
  };
  EXPECT_EQ(prefixes, cells(request.body.substr(tag, request.body.find('>', tag) - tag), " "));
}

// Endpoint and action of a call ("-": none given), host, port and "Host" header, action sent.
const char* const destinations = R"(
- | - | test.tarnwell.example | 80 | test.tarnwell.example | http://tarnwell.example/service/Login
http://a.example/x      | urn:b | a.example             | 80 | a.example             | urn:b
http://a.example:80/x   | urn:b | a.example             | 80 | a.example             | urn:b
http://a.example:8080/x | - | a.example | 8080 | a.example:8080 | http://tarnwell.example/service/Login
)";
TEST(Request, EndpointAndActionHaveDefaults) {
  for (const auto& row : rows(destinations)) {
    WireClient client;
    client.reply = reply(200, success).bytes;
    const auto given = [](const std::string& cell) { return cell == "-" ? nullptr : cell.c_str(); };
    _dsns__Login login;
    _dsns__LoginResponse response;
    EXPECT_EQ(0, soap_call___dsns4__Login(client.soap, given(row[0]), given(row[1]), &login, &response)) << row[0];
    EXPECT_EQ(row[2] + " " + row[3], client.host + " " + std::to_string(client.port)) << row[0];
    EXPECT_EQ(row[4], client.request().header("Host")) << row[0];
    EXPECT_EQ("\"" + row[5] + "\"", client.request().header("SOAPAction")) << row[0];
  }
}

TEST(Request, DeclaresTheNamespacesOfItsContext) {
  const Namespace table[] = {{"SOAP-ENV", "http://schemas.xmlsoap.org/soap/envelope/", nullptr, nullptr},
                             {"SOAP-ENC", "http://schemas.xmlsoap.org/soap/encoding/", nullptr, nullptr},
                             {"dsns", "urn:other", nullptr, nullptr},
                             {nullptr, nullptr, nullptr, nullptr}};
  WireClient client;
  soap_set_namespaces(client.soap, table);
  client.login(success);
  EXPECT_EQ("text/xml; charset=utf-8", client.request().header("Content-Type"));
  EXPECT_NE(std::string::npos, client.sent.find("<SOAP-ENV:Envelope xmlns:SOAP-ENV=\"http://schemas.xmlsoap.org/soap/"
                                                "envelope/\" xmlns:SOAP-ENC=\"http://schemas.xmlsoap.org/soap/"
                                                "encoding/\" xmlns:dsns=\"urn:other\">"))
      << client.sent;
}

TEST(Request, ThroughAProxy) {
  const std::string user(500, 'u'), fits(260, 'p'), tooLong(261, 'p');
  const struct {
    std::string user, password;
    bool useProxy, authorized;
  } cases[] = {{"ann", "a:bé", true, true},      {"", "", true, true},
               {user, fits, true, true},         {user, tooLong, true, false},
               {user, user + user, true, false}, {"ann", "p", false, false}};
  for (const auto& row : cases) {
    SCOPED_TRACE(std::to_string(row.user.size()) + " and " + std::to_string(row.password.size()) + " characters");
    const ScriptedService server(reply(200, success)), proxy(reply(200, success));
    STLDesktopService client;
    client.setEndPoint(server.url());
    client.setProxySettings("127.0.0.1", proxy.port(), row.user, row.password, row.useProxy);
    _dsns__LoginResponse response;
    EXPECT_EQ(0, client.login(L"", L"", &response));
    EXPECT_EQ(row.useProxy ? 1U : 0U, proxy.requests().size());
    const Request request = row.useProxy ? proxy.request() : server.request();
    const auto basic = [&](const std::string& password) {
      return "Basic " + QByteArray::fromStdString(row.user + ":" + password).toBase64().toStdString();
    };
    EXPECT_EQ(row.authorized ? basic(row.password) : "", request.header("Proxy-Authorization"));
    EXPECT_EQ(0U, request.head.find("POST " + (row.useProxy ? server.url() : "/service/desktopservice.asmx") + " "));
    EXPECT_EQ("127.0.0.1:" + std::to_string(server.port()), request.header("Host"));
    EXPECT_EQ(canonical(message::request("<dsns:Login><dsns:username/><dsns:pass/></dsns:Login>")),
              canonical(request.body));
    client.setProxyPassword("short");
    EXPECT_EQ(0, client.login(L"", L"", &response));
    EXPECT_EQ(row.useProxy ? basic("short") : "", proxy.request().header("Proxy-Authorization"));
  }
}

TEST(Request, HeaderOfAnAnswerIsCarriedOver) {
  WireClient client;
  const std::string plain = canonical(message::request("<dsns:Login/>"));
  const std::string carried = canonical(message::request("<dsns:Login/>", "<SOAP-ENV:Header/>"));
  const std::string header = "<soap:Header><d:Any soap:mustUnderstand=\"true\"><soap:Fault/></d:Any><x/></soap:Header>";
  const auto sent = [&](const std::string& answered) {
    EXPECT_EQ("login 2", client.login(answered));
    return canonical(client.request().body);
  };
  EXPECT_EQ(plain, sent(message::envelope(message::response("Login", message::loginValue("Success")), header)));
  EXPECT_EQ(carried, sent(success));
  EXPECT_EQ(carried, sent(success)) << "although the last answer had none";
  soap_destroy(client.soap);
  soap_end(client.soap);
  EXPECT_EQ(plain, sent(success)) << "after the context was cleaned";
}

TEST(Client, UpdateCheckTakesANullResponse) {
  const ScriptedService server(reply(200, message::answer("CheckDesktopVersion", "<Path>p</Path>")));
  STLDesktopService client;
  client.setEndPoint(server.url());
  EXPECT_EQ(0, client.checkForUpdate(L"1", 2, nullptr));
}

TEST(Settings, ReachTheContext) {
  STLDesktopService client;
  const auto proxy = [soap = client.proxy.soap] {
    const auto text = [](const char* value) { return value ? "'" + std::string(value) + "' " : "null "; };
    return text(soap->proxy_host) + text(soap->proxy_userid) + text(soap->proxy_passwd) +
           std::to_string(soap->proxy_port);
  };
  const std::string path = ".tarnwell.example/service/desktopservice.asmx";
  EXPECT_EQ("http://test" + path, client.proxy.soap_endpoint);
  EXPECT_EQ(0, client.proxy.soap->imode | client.proxy.soap->omode);
  EXPECT_EQ("null null null 8080", proxy());
  client.setProxySettings("h", 1, "", "p", true);
  EXPECT_EQ("'h' '' 'p' 1", proxy());
  client.setProxySettings("ignored", 2, "u", "q", false);
  EXPECT_EQ("null null null 8080", proxy());
  client.setProxyPort(-1);
  EXPECT_EQ("null null null -1", proxy());
  client.setProxyHost("a name that needs memory of its own");
  client.setProxyUser("u");
  client.setProxyPassword("");
  client.setProxyPort(70000);
  EXPECT_EQ("'a name that needs memory of its own' 'u' '' 70000", proxy());
  client.setEndPoint("not a url");
  EXPECT_STREQ("not a url", client.proxy.soap_endpoint);
  client.setEndPoint("");
  EXPECT_EQ("http://www" + path, client.proxy.soap_endpoint);
}

} // namespace
