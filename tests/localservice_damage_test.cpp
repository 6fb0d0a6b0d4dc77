// The local service under attack: broken requests, clients that stall, signals, and kills in the middle of a save.
#include "tests/LocalServiceFixture.h"
#include "tests/Messages.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QFileInfo>
#include <QtCore/QThread>
#include <atomic>
#include <csignal>
#include <cstring>
#include <list>
#include <thread>

namespace {

const std::string path = "/service/desktopservice.asmx";
const std::string type = "Content-Type: application/soap+xml; charset=utf-8\r\n";

std::string post(const std::string& body, const std::string& fields = type, const std::string& target = path) {
  return "POST " + target + " HTTP/1.1\r\n" + fields + "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" +
         body;
}

std::string replaced(std::string text, const std::string& what, const std::string& with) {
  return text.replace(text.find(what), what.size(), with);
}

/// Peak of the process's resident memory; sanitizers have their own on top.
[[maybe_unused]] long peakMebibytes(const QProcess& process) {
  QFile status(QString("/proc/%1/status").arg(process.processId()));
  EXPECT_TRUE(status.open(QIODevice::ReadOnly));
  return QRegularExpression("VmHWM:\\s+(\\d+)").match(status.readAll()).captured(1).toLong() / 1024;
}

TEST_F(LocalServiceTest, AnswersEverythingThatIsNoRequest) {
  const std::string body = message::envelope("<Login><username>anna</username><pass>öffne dich</pass></Login>");
  const std::string soap11 = "http://schemas.xmlsoap.org/soap/envelope/", sender = "SOAP-ENV:Sender";
  const std::string chunked = "POST " + path + " HTTP/1.1\r\n" + type + "Transfer-Encoding: chunked\r\n\r\n";
  const std::string chunks = chunked + "1\r\n<\r\n" +
                             QByteArray::number(static_cast<int>(body.size() - 1), 16).toStdString() + "\r\n" +
                             body.substr(1) + "\r\n";
  const auto with = [&body](const std::string& what, const std::string& by) { return post(replaced(body, what, by)); };
  const auto withHeader = [](const std::string& attribute) {
    return post(
        message::envelope("<Login/>", "<soap:Header><d:a soap:mustUnderstand='" + attribute + "'/></soap:Header>"));
  };
  std::string attributes, elements, fields;
  for (int i = 0; i < 20000; ++i) {
    attributes += " a" + std::to_string(i) + "=''";
    fields += "X: y\r\n";
    elements += "<a b" + std::to_string(i) + "=''/>";
  }
  const bool open = true; // the client goes on waiting
  const struct {
    const char* what;
    std::string bytes;
    int status;
    std::string code;
    bool isOpen = false;
  } rows[] = {
      {"a request", post(body), 200, "", open},
      {"with the absolute URI", post(body, type, "http://a:1" + path), 200, "", open},
      {"in chunks", chunks + "0\r\n\r\n", 200, "", open},
      {"with more behind it", post(body) + "more", 200, "", open},
      {"with other prefixes", with("<Login>", "<Login xmlns:dsns='urn:a' xmlns:SOAP-ENV='urn:b'>"), 200, "", open},
      {"of an older schema", with("2001/XMLSchema-instance", "1999/XMLSchema-instance"), 200, "", open},
      {"after an invitation", post(body, type + "Expect: 100-continue\r\n"), 100, "", open},
      {"with a header to ignore", withHeader("false"), 200, "", open},
      {"with a header to understand", withHeader("true"), 500, "SOAP-ENV:MustUnderstand", open},
      {"nothing", "", 400, sender},
      {"noise", std::string("\0\1\377\r\n\r\n", 7), 400, sender},
      {"no HTTP", body, 400, sender},
      {"an HTTP reply", "HTTP/1.1 200 OK\r\n\r\n" + body, 400, sender},
      {"another method", "PUT " + path + " HTTP/1.1\r\nContent-Length: 3\r\n\r\nabc", 405, sender, open},
      {"PATCH", "PATCH " + path + " HTTP/1.1\r\nContent-Length: 3\r\n\r\nabc", 405, sender, open},
      {"GET", "GET " + path + " HTTP/1.1\r\n\r\n", 405, sender, open},
      {"an unknown method", "FROB " + path + " HTTP/1.1\r\n\r\n", 405, sender, open},
      {"another path", post(body, type, "/other"), 404, sender, open},
      {"a long body nobody reads", post(std::string(8 << 20, ' '), type, "/other"), 404, sender, open},
      {"a long path", "POST /" + std::string(100000, 'a') + " HTTP/1.1\r\n\r\n", 414, sender, open},
      {"a long field", post(body, "X: " + std::string(100000, 'a') + "\r\n"), 431, sender, open},
      {"many fields", post(body, fields), 431, sender, open},
      {"compressed", post(body, type + "Content-Encoding: gzip\r\n"), 415, sender, open},
      {"a form", post(body, "Content-Type: text/plain\r\n"), 415, sender, open},
      {"without a type", post(body, ""), 415, sender, open},
      {"by a web page", post(body, type + "Origin: http://a\r\n"), 403, sender, open},
      {"without a length", "POST " + path + " HTTP/1.1\r\n" + type + "\r\n" + body, 411, sender, open},
      {"two lengths", post(body, type + "Content-Length: 1\r\n"), 400, sender, open},
      {"length and chunks", post(body, type + "Transfer-Encoding: chunked\r\n"), 400, sender, open},
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
      {"a response", post(message::envelope("<LoginResponse/>")), 400, sender, open},
      {"no operation", post(message::envelope("")), 400, sender, open},
      {"a wrong boolean",
       post(message::envelope("<GetDesktopMapsList><IsPublished>maybe</IsPublished></GetDesktopMapsList>")), 400,
       sender, open},
      {"an element in a block",
       post(message::envelope("<SendFeedbackWithAttachment><bytes>AAAA<b>AAAA</bytes></SendFeedbackWithAttachment>")),
       400, sender, open},
      {"an element within base64",
       post(message::envelope("<SendFeedbackWithAttachment><bytes>AAAA<b/>AAAA</bytes></SendFeedbackWithAttachment>")),
       400, sender, open},
      {"a dangling reference", post(message::envelope("<SaveDesktopMap><DesktopInfo href='#a'/></SaveDesktopMap>")),
       400, sender, open},
      {"deep", post(message::envelope("<a>" + std::string(200000, '<'))), 400, sender, open},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    QElapsedTimer timer;
    timer.start();
    const std::string answer = Connection(port(), row.bytes).answer(row.isOpen);
    EXPECT_LT(timer.elapsed(), 9000) << "waited for more than what the length says";
    EXPECT_EQ(answer.substr(0, 13), "HTTP/1.1 " + std::to_string(row.status) + " ");
    const bool isOld = std::strcmp(row.what, "SOAP 1.1") == 0;
    const std::string media = isOld ? "text/xml" : "application/soap+xml";
    EXPECT_NE(answer.find("\r\nContent-Type: " + media + "; charset=utf-8\r\n"), std::string::npos) << answer;
    EXPECT_EQ(answer.find("Access-Control"), std::string::npos);
    EXPECT_NE(answer.find("xmlns:SOAP-ENV=\"" + (isOld ? soap11 : message::envelopeNamespace) + "\""),
              std::string::npos);
    const std::string tag = isOld ? "<faultcode>" : "<SOAP-ENV:Value>";
    EXPECT_NE(answer.find(row.code.empty() ? "</dsns:DesktopLoginValue>" : tag + row.code + "<"), std::string::npos)
        << answer;
    EXPECT_EQ(answer.find("1999"), std::string::npos) << answer;
  }
#ifndef __SANITIZE_ADDRESS__
  EXPECT_LT(peakMebibytes(service), 48) << "claims and floods cost memory";
#endif
  const std::string get = "GET " + path + "?wsdl HTTP/1.1\r\nHost: here.example:81\r\n\r\n";
  const std::string description = Connection(port(), get).answer(true);
  EXPECT_NE(description.find("location=\"http://here.example:81" + path + "\""), std::string::npos) << description;
  const std::string head = Connection(port(), replaced(get, "GET", "HEAD")).answer(true);
  EXPECT_EQ(head, description.substr(0, description.find("<?xml")));
}

TEST_F(LocalServiceTest, IsNotHeldUpByClientsThatStall) {
  const std::string half = post(std::string(100, ' ')).substr(0, 60);
  std::list<Connection> stalled;
  for (int i = 0; i < 200; ++i)
    stalled.emplace_back(port(), i % 10 == 0 ? half : "");
  QElapsedTimer timer;
  timer.start();
  EXPECT_EQ(call("Login"), "login 2");
  EXPECT_LT(timer.elapsed(), 9000) << "waited for the stalled ones, which are given up after ten seconds";
}

TEST_F(LocalServiceTest, AnswersWhatHasArrivedWhenStopped) {
  const std::string body = message::envelope("<Login><username>anna</username><pass>öffne dich</pass></Login>");
  std::list<Connection> arrived;
  for (int i = 0; i < 10; ++i)
    arrived.emplace_back(port(), post(body));
  const Connection stalled(port(), post(body).substr(0, 60));
  ::kill(static_cast<pid_t>(service.processId()), SIGHUP);
  QElapsedTimer timer;
  timer.start();
  EXPECT_EQ(stop(), 0);
  EXPECT_LT(timer.elapsed(), 9000) << "waited for the stalled one to be given up";
  for (Connection& connection : arrived)
    EXPECT_NE(connection.answer(true).find(">Success<"), std::string::npos);

  start({"--delay", "60000"});
  const Connection slow(port(), post(body));
  service.terminate();
  QThread::msleep(200);
  service.terminate();
  timer.start();
  EXPECT_TRUE(service.waitForFinished(patience));
  EXPECT_LT(timer.elapsed(), 4500) << "a second signal ends it at once";
  start({"--max-request", "1"});
  EXPECT_EQ(Connection(port(), post(std::string((1 << 20) + 1, ' '))).answer(true).substr(9, 3), "413");
}

TEST_F(LocalServiceTest, KeepsTheOldMapOrTheNewWhenKilled) {
  const auto bytes = [](int generation) { return std::string(8 << 20, static_cast<char>('a' + generation)); };
  Map first(L"0", bytes(0));
  QElapsedTimer timer;
  timer.start();
  ASSERT_EQ(call("SaveDesktopMap", {L"anna", &first}).substr(0, 1), "2");
  const qint64 duration = timer.elapsed();
  const QByteArray id = identifier("0");
  int kept = 0;
  for (int round = 0; round < 12; ++round) { // kills from the start of a save to its end
    Map next(std::to_wstring(kept + 1), bytes(kept + 1), id);
    std::atomic<bool> isDone{false};
    std::thread saving([&] {
      call("SaveDesktopMap", {L"anna", &next, true});
      isDone = true;
    });
    while (!isDone && !QFileInfo::exists(database() + "-journal"))
      QThread::yieldCurrentThread(); // ends with the call, which ends with the service's own time-out at the latest
    EXPECT_EQ(QFile::permissions(database() + "-journal") & (QFile::ReadGroup | QFile::ReadOther), 0);
    QThread::msleep(static_cast<unsigned long>(duration * round / 10));
    service.kill();
    EXPECT_TRUE(service.waitForFinished(patience));
    saving.join();
    start();
    Map wanted(L"", "", id);
    const std::string found = call("GetDesktopMapContent", {L"anna", &wanted});
    const std::string name = found.substr(20, found.find('\'', 20) - 20);
    ASSERT_TRUE(name == std::to_string(kept) || name == std::to_string(kept + 1)) << found.substr(0, 200);
    kept = std::stoi(name);
    ASSERT_NE(found.find("=8388608:" + bytes(kept) + " "), std::string::npos) << "a mixture of two maps";
  }
}

} // namespace
