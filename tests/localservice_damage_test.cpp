// The local service under attack: broken requests, clients that stall, signals, and kills in the middle of a save.
#include "tests/LocalServiceFixture.h"
#include "tests/Table.h"

#include <QtCore/QDeadlineTimer>
#include <QtCore/QFileInfo>
#include <QtCore/QThread>
#include <csignal>
#include <list>

namespace {

/// Peak of the process's resident memory; sanitizers add their own.
[[maybe_unused]] long peakMebibytes(const QProcess& process) {
  const QByteArray status = contentOf(QString("/proc/%1/status").arg(process.processId()));
  return QRegularExpression("VmHWM:\\s+(\\d+)").match(status).captured(1).toLong() / 1024;
}

TEST_F(LocalServiceTest, AnswersEverythingThatIsNoRequest) {
  const std::string body = message::envelope("<Login><username>anna</username><pass>secretü</pass></Login>");
  const std::string soap11 = "http://schemas.xmlsoap.org/soap/envelope/", sender = "SOAP-ENV:Sender";
  const std::string chunked = "POST " + servicePath + " HTTP/1.1\r\n" + soapType + "Transfer-Encoding: chunked\r\n\r\n";
  const std::string chunks = chunked + "1\r\n<\r\n" +
                             QByteArray::number(static_cast<int>(body.size() - 1), 16).toStdString() + "\r\n" +
                             body.substr(1) + "\r\n";
  const auto with = [&body](const std::string& what, const std::string& by) { return post(replaced(body, what, by)); };
  const auto withHeader = [&with](const std::string& attribute) {
    return with("<soap:Body>", "<soap:Header><d:a soap:mustUnderstand='" + attribute + "'/></soap:Header><soap:Body>");
  };
  std::string attributes, elements, fields;
  for (int i = 0; i < 20000; ++i) {
    attributes += " a" + std::to_string(i) + "=''";
    fields += "X: y\r\n";
    elements += "<a b" + std::to_string(i) + "=''/>";
  }
  const bool open = true; // the client waits on
  const struct {
    const char* what;
    std::string bytes;
    int status;
    std::string outcome;
    bool isOpen = false;
  } rows[] = {
      {"a request", post(body), 200, "Success", open},
      {"with the absolute URI", post(body, soapType, "http://a:1" + servicePath), 200, "Success", open},
      {"in chunks", chunks + "0\r\n\r\n", 200, "Success", open},
      {"with more behind it", post(body) + "more", 200, "Success", open},
      {"with other prefixes", with("<Login>", "<Login xmlns:dsns='urn:a' xmlns:SOAP-ENV='urn:b'>"), 200, "Success",
       open},
      {"of an older schema", with("2001/XMLSchema-instance", "1999/XMLSchema-instance"), 200, "Success", open},
      {"after an invitation", post(body, soapType + "Expect: 100-continue\r\n"), 100, "Success", open},
      {"with a header to ignore", withHeader("false"), 200, "Success", open},
      {"with a header to understand", withHeader("true"), 500, "SOAP-ENV:MustUnderstand", open},
      {"nothing", "", 400, sender},
      {"noise", std::string("\0\1\377\r\n\r\n", 7), 400, sender},
      {"no HTTP", body, 400, sender},
      {"an HTTP reply", "HTTP/1.1 200 OK\r\n\r\n" + body, 400, sender},
      {"another method", "PUT " + servicePath + " HTTP/1.1\r\nContent-Length: 3\r\n\r\nabc", 405, sender, open},
      {"PATCH", "PATCH " + servicePath + " HTTP/1.1\r\nContent-Length: 3\r\n\r\nabc", 405, sender, open},
      {"GET", "GET " + servicePath + " HTTP/1.1\r\n\r\n", 405, sender, open},
      {"another path", post(body, soapType, "/other"), 404, sender, open},
      {"a long body nobody reads", post(std::string(8 << 20, ' '), soapType, "/other"), 404, sender, open},
      {"a long path", "POST /" + std::string(100000, 'a') + " HTTP/1.1\r\n\r\n", 414, sender, open},
      {"a long field", post(body, "X: " + std::string(100000, 'a') + "\r\n"), 431, sender, open},
      {"many fields", post(body, fields), 431, sender, open},
      {"compressed", post(body, soapType + "Content-Encoding: gzip\r\n"), 415, sender, open},
      {"a form", post(body, "Content-Type: text/plain\r\n"), 415, sender, open},
      {"without a type", post(body, ""), 415, sender, open},
      {"by a web page", post(body, soapType + "Origin: http://a\r\n"), 403, sender, open},
      {"without a length", "POST " + servicePath + " HTTP/1.1\r\n" + soapType + "\r\n" + body, 411, sender, open},
      {"two lengths", post(body, soapType + "Content-Length: 1\r\n"), 400, sender, open},
      {"length and chunks", post(body, soapType + "Transfer-Encoding: chunked\r\n"), 400, sender, open},
      {"too long", replaced(post(body), "Length: ", "Length: 9999999999"), 413, sender, open},
      {"too long a chunk", chunked + "280000000\r\n" + body, 413, sender, open},
      {"too long a text", with("anna", std::string(1 << 20, 'a')), 413, sender, open},
      {"too long an attribute", with("<Login>", "<Login a='" + std::string(1 << 20, 'a') + "'>"), 413, sender, open},
      {"many attributes", with("<Login>", "<Login" + attributes + ">"), 400, sender, open},
      {"many elements' attributes", with("<Login>", "<Login>" + elements), 413, sender, open},
      {"empty", post(""), 400, sender, open},
      {"no XML", post("{\"a\": 1}"), 400, sender, open},
      {"other XML", post("<a/>"), 400, sender, open},
      {"cut off in the header", post(body).substr(0, 20), 400, sender},
      {"cut off in the body", post(body).substr(0, post(body).size() - 1), 400, sender},
      {"XML cut off", post(body.substr(0, body.size() - 1)), 400, sender, open},
      {"chunks without an end", chunks, 400, sender},
      {"SOAP 1.1", with(message::envelopeNamespace, soap11), 500, "SOAP-ENV:VersionMismatch", open},
      {"no SOAP", with(message::envelopeNamespace, "urn:a"), 500, "SOAP-ENV:VersionMismatch", open},
      {"another namespace", with("<Login>", "<Login xmlns='urn:other'>"), 400, sender, open},
      {"an unknown operation", post(message::envelope("<Logout/>")), 400, sender, open},
      {"no operation", post(message::envelope("")), 400, sender, open},
      {"a wrong boolean", request("GetDesktopMapsList", "<IsPublished>maybe</IsPublished>"), 400, sender, open},
      {"deep", post(message::envelope("<a>" + std::string(200000, '<'))), 400, sender, open},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    const std::string answer = Connection(port(), row.bytes).answer(row.isOpen);
    EXPECT_EQ(answer.substr(0, 13), "HTTP/1.1 " + std::to_string(row.status) + " ");
    const bool isOld = row.what == std::string("SOAP 1.1");
    const std::string media = isOld ? "text/xml" : "application/soap+xml";
    EXPECT_NE(answer.find("\r\nContent-Type: " + media + "; charset=utf-8\r\n"), std::string::npos) << answer;
    EXPECT_EQ(answer.find("Access-Control"), std::string::npos);
    EXPECT_NE(answer.find("xmlns:SOAP-ENV=\"" + (isOld ? soap11 : message::envelopeNamespace) + "\""),
              std::string::npos);
    EXPECT_EQ(shown(answer).find(row.outcome), 0U) << answer;
    EXPECT_EQ(answer.find("1999"), std::string::npos) << answer;
  }
#ifndef __SANITIZE_ADDRESS__
  EXPECT_LT(peakMebibytes(process), 48) << "claims and floods cost memory";
#endif
  const std::string get = "GET " + servicePath + "?wsdl HTTP/1.1\r\nHost: here.example:81\r\n\r\n";
  const std::string description = Connection(port(), get).answer();
  EXPECT_NE(description.find("location=\"http://here.example:81" + servicePath + "\""), std::string::npos)
      << description;
  const std::string head = Connection(port(), replaced(get, "GET", "HEAD")).answer();
  EXPECT_EQ(head, description.substr(0, description.find("<?xml")));
}

TEST_F(LocalServiceTest, IsNotHeldUpByClientsThatStall) {
  const std::string half = post(std::string(100, ' ')).substr(0, 60);
  bool isFirst = false; // answered before a stalled one is given up, which a loaded machine may miss once
  for (int attempt = 0; attempt < 5 && !isFirst; ++attempt) {
    std::list<Connection> stalled;
    for (int i = 0; i < 200; ++i)
      stalled.emplace_back(port(), i % 10 == 0 ? half : "");
    EXPECT_EQ(call("Login"), "Success");
    isFirst = !stalled.front().waitForReadyRead(0);
  }
  EXPECT_TRUE(isFirst) << "waited for the stalled ones, which are given up after ten seconds";
}

TEST_F(LocalServiceTest, AnswersWhatHasArrivedWhenStopped) {
  std::list<Connection> arrived;
  for (int i = 0; i < 3; ++i)
    arrived.emplace_back(port(), request("Login"));
  const Connection stalled(port(), request("Login").substr(0, 60));
  ::kill(static_cast<pid_t>(process.processId()), SIGHUP);
  EXPECT_EQ(stop().status, 0);
  for (Connection& connection : arrived)
    EXPECT_EQ(shown(connection.answer()), "Success");

  start({"--delay", "60000"});
  const Connection slow(port(), request("Login"));
  process.terminate();
  QTcpSocket other;
  do { // until the first signal has arrived
    other.abort();
    other.connectToHost(QHostAddress::LocalHost, static_cast<quint16>(port()));
  } while (other.waitForConnected(patience));
  EXPECT_EQ(stop().status, -1) << "a second signal ends it at once, before it would end by itself";
  start({"--max-request", "1"});
  EXPECT_EQ(Connection(port(), post(std::string((1 << 20) + 1, ' '))).answer().substr(9, 3), "413");
}

TEST_F(LocalServiceTest, KeepsTheOldMapOrTheNewWhenKilled) {
  const auto map = [](int generation, const std::string& id = {}) {
    const std::string content(8 << 20, static_cast<char>('a' + generation));
    return element("DesktopInfo",
                   id + element("MapName", std::to_string(generation)) + element("MapContent", content)) +
           "<IsForced>true</IsForced>";
  };
  const QDeadlineTimer limit(patience);
  ASSERT_EQ(call("SaveDesktopMap", map(1)).substr(0, 15), "Success Success");
  const qint64 duration = patience - limit.remainingTime();
  const std::string id = element("MapId", identifier("1"));
  int kept = 1;
  for (int round = 0; round < 12; ++round) { // kills from the start of a save to its end
    Connection saving(port(), "");
    saving.write(QByteArray::fromStdString(request("SaveDesktopMap", map(kept + 1, id))));
    while (!QFileInfo::exists(path("db-journal")) && saving.state() == QTcpSocket::ConnectedState)
      saving.waitForReadyRead(1);
    EXPECT_EQ(QFile::permissions(path("db-journal")) & (QFile::ReadGroup | QFile::ReadOther), 0);
    QThread::msleep(static_cast<unsigned long>(duration * round / 10));
    process.kill();
    EXPECT_TRUE(process.waitForFinished(patience));
    start();
    const std::string found = call("GetDesktopMapContent", element("DesktopInfo", id));
    const std::string name = found.substr(24, found.find(' ', 24) - 24);
    ASSERT_TRUE(name == std::to_string(kept) || name == std::to_string(kept + 1)) << found.substr(0, 200);
    kept = std::stoi(name);
    ASSERT_NE(found.find("MapContent=" + std::string(8 << 20, static_cast<char>('a' + kept)) + " "), std::string::npos)
        << "a mixture of two maps";
  }
}

} // namespace
