// The local service under attack: broken requests, clients that stall, signals, and kills in the middle of a save.
#include "tests/LocalServiceFixture.h"
#include "tests/Table.h"

#include <QtCore/QDeadlineTimer>
#include <QtCore/QFileInfo>
#include <QtCore/QThread>
#include <SQLiteCpp/SQLiteCpp.h>
#include <csignal>
#include <list>
#include <thread>
#include <vector>

namespace {

/// Peak of the process's resident memory; sanitizers add their own.
[[maybe_unused]] long peakMebibytes(const QProcess& process) {
  const QByteArray status = contentOf(QString("/proc/%1/status").arg(process.processId()));
  return QRegularExpression("VmHWM:\\s+(\\d+)").match(status).captured(1).toLong() / 1024;
}

TEST_F(LocalServiceTest, AnswersEverythingThatIsNoRequest) {
  const std::string body = message::envelope("<Login><username>anna</username><pass>secretü</pass></Login>");
  const std::string soap11 = "http://schemas.xmlsoap.org/soap/envelope/", sender = "SOAP-ENV:Sender";
  const std::string understood = "SOAP-ENV:MustUnderstand", role = message::envelopeNamespace + "/role/";
  const std::string chunked = "POST " + servicePath + " HTTP/1.1\r\n" + soapType + "Transfer-Encoding: chunked\r\n\r\n";
  const std::string chunks = chunked + "1\r\n<\r\n" +
                             QByteArray::number(static_cast<int>(body.size() - 1), 16).toStdString() + "\r\n" +
                             body.substr(1) + "\r\n";
  const std::string badChunk = sender + " a chunk's size";
  const auto with = [&body](const std::string& what, const std::string& by) { return post(replaced(body, what, by)); };
  const auto withHeader = [&with](const std::string& attribute) {
    return with("<soap:Body>", "<soap:Header><d:a soap:mustUnderstand='" + attribute + "'/></soap:Header><soap:Body>");
  };
  std::string attributes, elements;
  for (int i = 0; i < 20000; ++i) {
    attributes += " a" + std::to_string(i) + "=''";
    elements += "<a b" + std::to_string(i) + "=''/>";
  }
  const struct {
    const char* what;
    std::string bytes;
    int status;
    std::string outcome;
    bool waits = true; // the client, with its connection open
  } rows[] = {
      {"a request", post(body), 200, "Success"},
      {"with the absolute URI", post(body, soapType, "http://a:1" + servicePath), 200, "Success"},
      {"with more behind it", post(body) + "more", 200, "Success"},
      {"with other prefixes", with("<Login>", "<Login xmlns:dsns='urn:a' xmlns:SOAP-ENV='urn:b'>"), 200, "Success"},
      {"of an older schema", with("2001/XMLSchema-instance", "1999/XMLSchema-instance"), 200, "Success"},
      {"after an invitation", post(body, soapType + "Expect: 100-continue\r\n"), 100, "Success"},
      {"with a header to ignore", withHeader("false"), 200, "Success"},
      {"with a header for others", withHeader("true' soap:role='urn:a"), 200, "Success"},
      {"with a header to understand", withHeader("true"), 500, understood + " the service understands no header"},
      {"with blanks in it", withHeader(" 1\t"), 500, understood},
      {"for the next", withHeader("1' soap:role='" + role + "next"), 500, understood},
      {"for the last", withHeader("1' soap:role='" + role + "ultimateReceiver"), 500, understood},
      {"nothing", "", 400, sender, false},
      {"noise", std::string("\0\1\377\r\n\r\n", 7), 400, sender, false},
      {"another method", "PUT " + servicePath + " HTTP/1.1\r\nContent-Length: 3\r\n\r\nabc", 405, sender},
      {"GET", "GET " + servicePath + " HTTP/1.1\r\n\r\n", 405, sender},
      {"another path", post(body, soapType, "/other"), 404, sender + " the service is at the path"},
      {"a host that is none", post(body, soapType + "Host: a\1b\r\n"), 400, sender + " the header field Host"},
      {"a long body nobody reads", post(std::string(8 << 20, ' '), soapType, "/other"), 404, sender},
      {"a long path", "POST /" + std::string(100000, 'a') + " HTTP/1.1\r\n\r\n", 414, sender},
      {"many fields", post(body, replaced(std::string(20000, '.'), ".", "X: a\r\n")), 431, sender},
      {"compressed", post(body, soapType + "Content-Encoding: gzip\r\n"), 415, sender + " compressed"},
      {"MTOM", post(body, "Content-Type: multipart/related; a=b\r\n"), 415, sender + " the content has to be"},
      {"without a type", post(body, ""), 415, sender},
      {"by a web page", post(body, soapType + "Origin: http://a\r\n"), 403, sender},
      {"without a length", "POST " + servicePath + " HTTP/1.1\r\n" + soapType + "\r\n" + body, 411, sender},
      {"two lengths", post(body, soapType + "Content-Length: 1\r\n"), 400, sender},
      {"length and chunks", post(body, soapType + "Transfer-Encoding: chunked\r\n"), 400, sender},
      {"too long", replaced(post(body), "Length: ", "Length: 9999999999"), 413, sender},
      {"a chunk without a size", chunked + "\r\n" + body, 400, badChunk},
      {"a size that is no number", replaced(chunks, "1\r\n", "1x\r\n") + "0\r\n\r\n", 400, badChunk},
      {"more than the chunk's size", replaced(chunks, "<\r\n", "<") + "0\r\n\r\n", 400, badChunk},
      {"a chunk with an extension", replaced(chunks, "1\r\n", "1 ;a=b\r\n") + "0\r\nA: b\r\n\r\n", 200, "Success"},
      {"one byte in chunks", chunked + "1\r\n<\r\n0\r\n\r\n", 400, sender},
      {"too long a chunk", chunked + "280000000\r\n" + body, 413, sender},
      {"too long a text", with("anna", std::string(1 << 20, 'a')), 413, sender + " a request has at most 256 KiB"},
      {"too long an attribute", with("<Login>", "<Login a='" + std::string(1 << 20, 'a') + "'>"), 413, sender},
      {"many attributes", with("<Login>", "<Login" + attributes + ">"), 400, sender},
      {"many elements' attributes", with("<Login>", "<Login>" + elements), 413, sender},
      {"empty", post(""), 400, sender},
      {"cut off in the header", post(body).substr(0, 20), 400, sender, false},
      {"cut off in the body", post(body).substr(0, post(body).size() - 1), 400, sender, false},
      {"XML cut off", post(body.substr(0, body.size() - 1)), 400, sender},
      {"chunks without an end", chunks, 400, sender, false},
      {"SOAP 1.1", with(message::envelopeNamespace, soap11), 500, "SOAP-ENV:VersionMismatch"},
      {"no SOAP", with(message::envelopeNamespace, "urn:a"), 500, "SOAP-ENV:VersionMismatch"},
      {"another namespace", with("<Login>", "<Login xmlns='urn:other'>"), 400, sender},
      {"an unknown operation", post(message::envelope("<Logout/>")), 400, sender},
      {"no operation", post(message::envelope("")), 400, sender},
      {"a wrong boolean", request("GetDesktopMapsList", "<IsPublished>maybe</IsPublished>"), 400, sender},
      {"deep", post(message::envelope("<a>" + std::string(200000, '<'))), 400, sender},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    const std::string answer = Connection(port(), row.bytes).answer(row.waits);
    EXPECT_EQ(answer.substr(0, 13), "HTTP/1.1 " + std::to_string(row.status) + " ");
    const bool isOld = row.what == std::string("SOAP 1.1");
    const std::string media = isOld ? "text/xml" : "application/soap+xml";
    EXPECT_NE(answer.find("\r\nContent-Type: " + media + "; charset=utf-8\r\n"), std::string::npos) << answer;
    EXPECT_EQ(answer.find("Access-Control"), std::string::npos);
    EXPECT_EQ(answer.find("\r\nAllow: GET, HEAD, POST\r\n") != std::string::npos, row.status == 405) << answer;
    EXPECT_NE(answer.find("xmlns:SOAP-ENV=\"" + (isOld ? soap11 : message::envelopeNamespace) + "\""),
              std::string::npos);
    EXPECT_EQ(shown(answer).find(row.outcome), 0U) << answer;
    EXPECT_EQ(answer.find("1999"), std::string::npos) << answer;
  }
#ifndef __SANITIZE_ADDRESS__
  EXPECT_LT(peakMebibytes(process), 48) << "claims and floods cost memory";
#endif
  const std::string get = "GET " + servicePath + "?wsdl HTTP/1.1\r\n", host = "Host: here.example:81\r\n\r\n";
  const std::string own = Connection(port(), get + "\r\n").answer();
  EXPECT_NE(own.find("location=\"" + endpoint.toStdString() + "\""), std::string::npos) << own;
  const std::string description = Connection(port(), get + host).answer();
  EXPECT_NE(description.find("location=\"http://here.example:81" + servicePath + "\""), std::string::npos)
      << description;
  EXPECT_EQ(Connection(port(), "HEAD" + get.substr(3) + host).answer(),
            description.substr(0, description.find("<?xml")));
}

/// Calls `run` with each number below `clients`, all at the same time.
template <class Run> void atOnce(int clients, Run run) {
  std::vector<std::thread> threads;
  for (int client = 0; client < clients; ++client)
    threads.emplace_back(run, client);
  for (std::thread& thread : threads)
    thread.join();
}

TEST_F(LocalServiceTest, SharesItsFileWithOtherProcesses) {
  LocalService other(path("db"));
  const auto content = [](int client, int round) {
    return std::string(static_cast<std::size_t>(4000 + 4000 * client), static_cast<char>('a' + round));
  };
  const int clients = 8, lastRound = 14;
  atOnce(clients + 1, [&](int client) {
    for (int round = 0; round <= lastRound; ++round) {
      if (client == clients) {
        EXPECT_EQ(administer({"--update-version", "2", "--update-url", "a", "--list-accounts"}).count('\n'), 3);
        continue;
      }
      const std::string save = saving(std::to_string(client), content(client, round));
      EXPECT_EQ(shown(Connection((client % 2 ? other : *this).port(), save).answer()).substr(0, 15), "Success Success");
    }
  });
  for (int client = 0; client < clients; ++client) {
    const std::string loaded = Connection(port(), loading(std::to_string(client))).answer();
    EXPECT_NE(loaded.find('>' + content(client, lastRound) + '<'), std::string::npos) << client;
  }
  SQLite::Database file(path("db").toStdString());
  EXPECT_EQ(file.execAndGet("PRAGMA integrity_check").getString(), "ok");
}

TEST_F(LocalServiceTest, BoundsTheMemoryOfAllRequests) {
  EXPECT_EQ(stop().status, 0);
  start({"--max-memory", "8"});
  const std::string content(8 << 20, 'A');
  const int clients = 8;
  atOnce(clients, [&](int client) {
    const std::string whole = saving(std::to_string(client), content);
    EXPECT_EQ(shown(Connection(port(), whole).answer()).substr(0, 15), "Success Success");
  });
  std::vector<std::string> loads;
  for (int client = 0; client < clients; ++client)
    loads.push_back(loading(std::to_string(client)));
  atOnce(clients, [&](int client) {
    const std::string response = Connection(port(), loads[static_cast<std::size_t>(client)]).answer();
    EXPECT_NE(response.find('>' + content + '<'), std::string::npos);
  });
#ifndef __SANITIZE_ADDRESS__
  EXPECT_LT(peakMebibytes(process), 48) << "64 MiB of requests, or of responses, were in memory at once";
#endif
}

TEST_F(LocalServiceTest, ServesSoManyClientsAtOnceAndNoMore) {
  std::list<Connection> stalled;
  for (int i = 0; i < 256; ++i)
    stalled.emplace_back(port(), request("Login").substr(0, i % 2 ? 60 : 0));
  Connection waiting(port(), request("Login"));
  const QString status = QString("/proc/%1/status").arg(process.processId());
  ASSERT_TRUE(QFile::exists(status)) << "without it, nobody sees the threads";
  const QDeadlineTimer limit(patience);
  while (!contentOf(status).contains("Threads:\t257\n")) { // a thread for each client, and the one that accepts them
    ASSERT_FALSE(limit.hasExpired()) << "one that stalls holds others up";
    QThread::yieldCurrentThread();
  }
  EXPECT_FALSE(waiting.waitForReadyRead(200)) << "is served beside 256 others";
  stalled.pop_front();
  EXPECT_EQ(shown(waiting.answer()), "Success");
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
  const auto content = [](const std::string& name) { return std::string(8 << 20, name[0]); };
  const QDeadlineTimer limit(patience);
  ASSERT_EQ(shown(Connection(port(), saving("a", content("a"))).answer()).substr(0, 15), "Success Success");
  const qint64 duration = patience - limit.remainingTime();
  const std::string id = identified(identifier("a")), load = loading("a");
  std::string kept = "a";
  for (int round = 0; round < 12; ++round) { // kills from the start of a save to its end
    const std::string next(1, static_cast<char>(kept[0] + 1));
    Connection connection(port(), "");
    connection.write(QByteArray::fromStdString(saving(next, content(next), id)));
    while (!QFileInfo::exists(path("db-journal")) && connection.state() == QTcpSocket::ConnectedState)
      connection.waitForReadyRead(1);
    EXPECT_EQ(QFile::permissions(path("db-journal")) & (QFile::ReadGroup | QFile::ReadOther), 0);
    QThread::msleep(static_cast<unsigned long>(duration * round / 10));
    process.kill();
    EXPECT_TRUE(process.waitForFinished(patience));
    start();
    const std::string found = shown(Connection(port(), load).answer());
    kept = found.find("MapName=" + next + " ") == 16 ? next : kept;
    ASSERT_EQ(found.find("MapName=" + kept + " "), 16U) << found.substr(0, 200);
    ASSERT_NE(found.find("MapContent=" + content(kept) + " "), std::string::npos) << "a mixture of two maps";
  }
}

} // namespace
