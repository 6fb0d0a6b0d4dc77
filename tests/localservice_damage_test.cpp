// The local service under attack: broken requests, clients that stall, and kills in the middle of a save.
#include "tests/LocalServiceFixture.h"
#include "tests/Messages.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QFileInfo>
#include <QtCore/QThread>
#include <atomic>
#include <cstring>
#include <list>
#include <thread>

namespace {

std::string post(const std::string& body, const std::string& fields = {}) {
  return "POST /service/desktopservice.asmx HTTP/1.1\r\n" + fields + "Content-Length: " + std::to_string(body.size()) +
         "\r\n\r\n" + body;
}

TEST_F(LocalServiceTest, AnswersEverythingThatIsNoRequest) {
  const std::string body = message::envelope("<Login><username>anna</username><pass>öffne dich</pass></Login>");
  const std::string sender = "SOAP-ENV:Sender", path = "/service/desktopservice.asmx";
  const auto replaced = [&](const char* what, const std::string& with) {
    return post(std::string(body).replace(body.find(what), std::strlen(what), with));
  };
  const struct {
    const char* what;
    std::string bytes;
    int status;
    std::string code;
  } rows[] = {
      {"a request", post(body), 200, ""},
      {"with the absolute URI", "POST http://a:1" + path + " HTTP/1.1\r\n\r\n" + body, 200, ""},
      {"in chunks",
       "POST " + path + " HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n1\r\n<\r\nfff\r\n" + body.substr(1), 200, ""},
      {"nothing", "", 400, sender},
      {"noise", std::string("\0\1\377\r\n\r\n", 7), 400, sender},
      {"no HTTP", body, 400, sender},
      {"an HTTP reply", "HTTP/1.1 200 OK\r\n\r\n" + body, 400, sender},
      {"another method", "PUT " + path + " HTTP/1.1\r\nContent-Length: 3\r\n\r\nabc", 405, sender},
      {"GET", "GET " + path + " HTTP/1.1\r\n\r\n", 405, sender},
      {"an unknown method", "FROB " + path + " HTTP/1.1\r\n\r\n", 405, sender},
      {"another path", "POST /other HTTP/1.1\r\n\r\n" + body, 404, sender},
      {"a long body nobody reads", "POST /other HTTP/1.1\r\n\r\n" + std::string(8 << 20, ' '), 404, sender},
      {"a long path", "POST /" + std::string(100000, 'a') + " HTTP/1.1\r\n\r\n", 414, sender},
      {"a long field", post(body, "X: " + std::string(100000, 'a') + "\r\n"), 431, sender},
      {"compressed", post(body, "Content-Encoding: gzip\r\n"), 400, sender},
      {"empty", post(""), 400, sender},
      {"no XML", post("{\"a\": 1}"), 400, sender},
      {"other XML", post("<a/>"), 400, sender},
      {"cut off in the header", post(body).substr(0, 20), 400, sender},
      {"cut off in the body", post(body).substr(0, body.size()), 400, sender},
      {"SOAP 1.1", replaced(message::envelopeNamespace.c_str(), "http://schemas.xmlsoap.org/soap/envelope/"), 500,
       "SOAP-ENV:VersionMismatch"},
      {"another namespace", replaced("<Login>", "<Login xmlns='urn:other'>"), 400, sender},
      {"an unknown operation", post(message::envelope("<Logout/>")), 400, sender},
      {"a response", post(message::envelope("<LoginResponse/>")), 400, sender},
      {"no operation", post(message::envelope("")), 400, sender},
      {"a wrong boolean",
       post(message::envelope("<GetDesktopMapsList><IsPublished>maybe</IsPublished></GetDesktopMapsList>")), 400,
       sender},
      {"a dangling reference", post(message::envelope("<SaveDesktopMap><DesktopInfo href='#a'/></SaveDesktopMap>")),
       400, sender},
      {"deep", post(message::envelope("<a>" + std::string(300000, '<'))), 400, sender},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    const std::string answer = Connection(port(), row.bytes).finish();
    EXPECT_EQ(answer.substr(0, 13), "HTTP/1.1 " + std::to_string(row.status) + " ");
    EXPECT_NE(answer.find("\r\nContent-Type: application/soap+xml; charset=utf-8\r\n"), std::string::npos);
    EXPECT_NE(answer.find("xmlns:SOAP-ENV=\"" + message::envelopeNamespace + "\""), std::string::npos);
    EXPECT_NE(answer.find(row.code.empty() ? ">Success<" : "<SOAP-ENV:Value>" + row.code + "<"), std::string::npos)
        << answer;
  }
  const std::string description = Connection(port(), "GET " + path + "?wsdl HTTP/1.1\r\n\r\n").finish();
  EXPECT_NE(description.find("location=\"" + endpoint.toStdString() + "\""), std::string::npos) << description;
}

TEST_F(LocalServiceTest, IsNotHeldUpByAStalledClient) {
  const std::string half = post(std::string(100, ' ')).substr(0, 60);
  std::list<Connection> stalled;
  for (int i = 0; i < 3; ++i)
    stalled.emplace_back(port(), half);
  QElapsedTimer timer;
  timer.start();
  EXPECT_EQ(call(Index::Login, by(L"anna")), "login 2");
  EXPECT_EQ(stop(), 0);
  EXPECT_LT(timer.elapsed(), 8000) << "waited for the stalled ones to be given up";
}

TEST_F(LocalServiceTest, KeepsTheOldMapOrTheNewWhenKilled) {
  const auto bytes = [](int generation) { return std::string(8 << 20, static_cast<char>('a' + generation)); };
  Map first(L"0", bytes(0));
  QElapsedTimer timer;
  timer.start();
  ASSERT_EQ(call(Index::SaveDesktopMap, by(L"anna", &first)).substr(0, 1), "2");
  const qint64 duration = timer.elapsed();
  const QByteArray id = identifier("0");
  int kept = 0;
  for (int round = 0; round < 12; ++round) { // kills from the start of a save to its end
    Map next(std::to_wstring(kept + 1), bytes(kept + 1));
    std::atomic<bool> isDone{false};
    std::thread saving([&] {
      call(Index::SaveDesktopMap, by(L"anna", &next.identified(id), true));
      isDone = true;
    });
    while (!isDone && !QFileInfo::exists(database() + "-journal"))
      QThread::yieldCurrentThread(); // ends with the call, which ends with the service's own time-out at the latest
    QThread::msleep(static_cast<unsigned long>(duration * round / 10));
    service.kill();
    EXPECT_TRUE(service.waitForFinished(patience));
    saving.join();
    start();
    Map wanted(L"", "");
    const std::string found = call(Index::GetDesktopMapContent, by(L"anna", &wanted.identified(id)));
    const std::string name = found.substr(20, found.find('\'', 20) - 20);
    ASSERT_TRUE(name == std::to_string(kept) || name == std::to_string(kept + 1)) << found.substr(0, 200);
    kept = std::stoi(name);
    ASSERT_NE(found.find("=8388608:" + bytes(kept) + " "), std::string::npos) << "a mixture of two maps";
  }
}

} // namespace
