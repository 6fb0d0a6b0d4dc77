// A request on the wire: envelope, HTTP header, proxy; and the client's settings.
#include "protocol/schema/Namespaces.h"
#include "tests/ServiceUnderTest.h"
#include "tests/WireClient.h"

namespace {

const std::string success = message::answer("Login", message::loginValue("Success"));

/// The start of an envelope that declares the namespaces of `table`.
std::string envelopeOf(const Namespace* table) {
  std::string start = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<SOAP-ENV:Envelope";
  for (const Namespace* row = table; row->id; ++row)
    start += " xmlns:" + std::string(row->id) + "=\"" + row->ns + "\"";
  return start + ">";
}

TEST(Request, LoginAsItTravels) {
  ServiceUnderTest tested({reply(200, success)});
  ASSERT_EQ(ResultOk, tested.service.login("ann & <bob>", "\"😀 é"));
  tested.expectRequest("<Login><username>ann &amp; &lt;bob&gt;</username><pass>\"😀 é</pass></Login>");
  const Request request = tested.server.request();
  const std::string action = TARNWELL_SERVICE_NAMESPACE "Login";
  EXPECT_EQ(0U, request.head.find("POST /service/desktopservice.asmx HTTP/1."));
  EXPECT_EQ("127.0.0.1:" + std::to_string(tested.server.port()), request.header("Host"));
  EXPECT_EQ("application/soap+xml; charset=utf-8; action=\"" + action + "\"", request.header("Content-Type"));
  EXPECT_EQ("\"" + action + "\"", request.header("SOAPAction"));
  EXPECT_EQ(std::to_string(request.body.size()), request.header("Content-Length"));
  EXPECT_EQ("", request.header("Transfer-Encoding") + request.header("Proxy-Authorization"));
  EXPECT_EQ(0U, request.body.find(envelopeOf(tarnwell::namespaceTable))) << request.body;
}

TEST(Request, EndpointActionAndNamespacesHaveDefaults) {
  WireClient client;
  client.reply = reply(200, success).bytes;
  const auto sent = [&client](const char* endpoint, const char* action) {
    _dsns__Login login;
    _dsns__LoginResponse response;
    EXPECT_EQ(0, soap_call___dsns4__Login(client.soap, endpoint, action, &login, &response));
    return client.request().header("Host") + " " + client.request().header("SOAPAction");
  };
  EXPECT_EQ("test.tarnwell.example \"" TARNWELL_SERVICE_NAMESPACE "Login\"", sent(nullptr, nullptr));
  EXPECT_EQ("a.example \"urn:b\"", sent("http://a.example:80/x", "urn:b"));
  EXPECT_EQ("a.example:8080 \"urn:b\"", sent("http://a.example:8080/x", "urn:b"));
  STLDesktopService service;
  EXPECT_STREQ("http://test.tarnwell.example/service/desktopservice.asmx", service.proxy.soap_endpoint);
  service.setProxySettings("", 1, "", "", false);
  EXPECT_EQ(8080, service.proxy.soap->proxy_port);

  const Namespace table[] = {{"SOAP-ENV", "http://schemas.xmlsoap.org/soap/envelope/", nullptr, nullptr},
                             {"SOAP-ENC", "http://schemas.xmlsoap.org/soap/encoding/", nullptr, nullptr},
                             {"dsns", "urn:other", nullptr, nullptr},
                             {nullptr, nullptr, nullptr, nullptr}};
  soap_set_namespaces(client.soap, table);
  client.login(success);
  EXPECT_EQ("text/xml; charset=utf-8", client.request().header("Content-Type"));
  EXPECT_EQ(0U, client.request().body.find(envelopeOf(table))) << client.sent;
}

TEST(Request, ThroughAProxy) {
  const QString user(500, 'u'), fits(260, 'p'), tooLong(261, 'p');
  for (const auto& row : {std::pair<QString, QString>("jö", "a:b😀"), {"", ""}, {user, fits}, {user, tooLong}}) {
    SCOPED_TRACE(std::to_string(row.first.size()) + " and " + std::to_string(row.second.size()) + " characters");
    const ScriptedService proxy(reply(200, success));
    ServiceUnderTest tested({reply(200, success)});
    const std::string host = "127.0.0.1:" + std::to_string(tested.server.port());
    const auto basic = [&](const QString& password) {
      return "Basic " + (row.first + ":" + password).toUtf8().toBase64().toStdString();
    };
    tested.service.setProxySettings("127.0.0.1", proxy.port(), row.first, row.second, true);
    EXPECT_EQ(ResultOk, tested.service.login("", ""));
    EXPECT_EQ(row.second == tooLong ? "" : basic(row.second), proxy.request().header("Proxy-Authorization"));
    EXPECT_EQ(0U, proxy.request().head.find("POST " + tested.server.url() + " "));
    EXPECT_EQ(host, proxy.request().header("Host"));
    tested.service.setProxyPassword("short");
    EXPECT_EQ(ResultOk, tested.service.login("", ""));
    EXPECT_EQ(basic("short"), proxy.request().header("Proxy-Authorization"));
    EXPECT_TRUE(tested.server.requests().empty());
    tested.service.setProxySettings("127.0.0.1", 1, "x", "y", false);
    EXPECT_EQ(ResultOk, tested.service.login("", ""));
    EXPECT_EQ(host, tested.server.request().header("Host"));
    EXPECT_EQ("", tested.server.request().header("Proxy-Authorization"));
    tested.service.setProxyHost("127.0.0.1");
    tested.service.setProxyPort(proxy.port());
    tested.service.setProxyUser("user");
    tested.service.setProxyPassword("word");
    EXPECT_EQ(ResultOk, tested.service.login("", "")) << "the single setters switch the proxy on again";
    EXPECT_EQ("Basic dXNlcjp3b3Jk", proxy.request().header("Proxy-Authorization"));
  }
}

TEST(Request, HeaderOfAnAnswerIsCarriedOver) {
  WireClient client;
  const std::string header = "<soap:Header><d:Any soap:mustUnderstand=\"true\"><soap:Fault/></d:Any><x/></soap:Header>";
  const auto carriesOne = [&](const std::string& answered) {
    EXPECT_EQ("login 2", client.login(answered));
    return client.request().body.find("<SOAP-ENV:Header></SOAP-ENV:Header><SOAP-ENV:Body>") != std::string::npos;
  };
  EXPECT_FALSE(carriesOne(message::envelope(message::response("Login", message::loginValue("Success")), header)));
  EXPECT_TRUE(carriesOne(success));
  EXPECT_TRUE(carriesOne(success)) << "although the last answer had none";
  soap_destroy(client.soap);
  soap_end(client.soap);
  EXPECT_FALSE(carriesOne(success)) << "after the context was cleaned";
}

} // namespace
