// Every networked operation while memory, the system or the host's own threads fail: it changes everything or nothing,
// and the next operation works.
#include "service/CallMonitor.h"
#include "tests/FaultyCalls.h"
#include "tests/ServiceUnderTest.h"

#include <atomic>
#include <chrono>
#include <climits>
#include <csignal>
#include <future>
#include <pthread.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

/// Calls `run` while its calls meet `faults`.
template <class Run> auto meeting(Faults& faults, Run run) {
  Faults::meets = &faults;
  const auto result = run();
  Faults::meets = nullptr;
  return result;
}

/// The result of `operation`, whose calls meet `faults`, and all values of the host after it.
std::string outcome(const HostOperation& operation, Host& host, Faults& faults) {
  const int result = meeting(faults, [&] { return operation.call(host); });
  return std::to_string(result) + "\n" + host.seen();
}

/// Expects that `host` is usable: no descriptor is open; a listing sends the last login's user and succeeds.
void expectUsable(Host& host, const Faults& faults) {
  const HostOperation& listing = hostOperations()[2];
  // Never destroyed: at the end of the program its thread would use objects that are gone.
  static ScriptedService& server =
      *new ScriptedService(reply(200, replaced(listing.answer(), "<soap:Body>", "<soap:Header/><soap:Body>")));
  EXPECT_EQ(0U, faults.descriptors.count());
  host.setEndPoint(QString::fromStdString(server.url()));
  EXPECT_EQ(0, listing.call(host));
  const std::string user = host.currentUser() == host.word ? "word" : "";
  EXPECT_NE(std::string::npos, server.request().body.find("<dsns:username>" + user + "</dsns:username>"));
}

// Kind, position, whether all after it fail, error, bytes at once; the last three fail nothing.
const Faults modes[] = {{Faults::Memory, 0, false},        {Faults::Memory, 0, true},
                        {Faults::System, 0, false, EIO},   {Faults::System, 0, true, EIO},
                        {Faults::System, 0, false, EINTR}, {Faults::Waiting, 0, false, EINTR},
                        {Faults::None, 0, false, 0, 1},    {Faults::None, 0, false, 0, 3}};

TEST(Faults, EveryCallFailsOnce) {
  QFile::resize(savedFile(), 0); // as a file that cannot be opened is saved
  for (const HostOperation& operation : hostOperations())
    for (const std::string& answer : {operation.answer(), message::fault("soap:Receiver")}) {
      const ScriptedService server(reply(200, answer));
      Host untouched(server.url()), refused("http://127.0.0.1:1/"), reference(server.url());
      Faults none;
      std::vector<std::string> possible = {"1\n" + untouched.seen(), outcome(operation, refused, none),
                                           outcome(operation, reference, none)};
      reference.info.setMapAuthor(QString()); // the system could not look up the owner of the file
      if (reference.info.mapThumbnail() == reference.bytes)
        possible.push_back(possible[2][0] + ("\n" + reference.seen()));
      for (const Faults& mode : modes) {
        const bool isHarmless = mode.piece || mode.kind == Faults::Waiting;
        for (auto [position, reached] = std::pair(0L, true); reached; ++position) {
          SCOPED_TRACE(operation.name + ", mode " + std::to_string(&mode - modes) + ", " + std::to_string(position));
          Host host(server.url());
          Faults faults = mode;
          faults.position = position;
          std::string seen;
          std::thread([&] { seen = outcome(operation, host, faults); }).join(); // in a new one, Qt needs memory for it
          const auto end = isHarmless ? possible.begin() + 3 : possible.end();
          EXPECT_TRUE(std::count(possible.begin() + (isHarmless ? 2 : 0), end, seen)) << seen;
          expectUsable(host, faults);
          reached = faults.calls > position;
        }
      }
    }
}

// A thousand signals a second, without SA_RESTART, interrupt every wait. The two objects share nothing.
TEST(Faults, SignalsAndOtherThreadsInterruptNothing) {
  struct sigaction ignoring{};
  ignoring.sa_handler = [](int) {};
  sigaction(SIGUSR1, &ignoring, nullptr);
  for (const HostOperation& operation : hostOperations()) {
    const Reply answer = reply(200, operation.answer());
    const ScriptedService servers[]{ScriptedService(answer), ScriptedService(answer)};
    std::atomic<int> running = 2;
    const auto use = [&](std::size_t number) {
      Host host(servers[number].url());
      host.word = QString("user %1").arg(number);
      for (int call = 0; call < 100; ++call)
        EXPECT_EQ(0, operation.call(host)) << operation.name;
      --running;
    };
    std::thread users[] = {std::thread(use, 0), std::thread(use, 1)};
    for (; running > 0; std::this_thread::sleep_for(std::chrono::milliseconds(1)))
      for (std::thread& user : users)
        pthread_kill(user.native_handle(), SIGUSR1);
    for (std::thread& user : users)
      user.join();
    for (const Request& request : servers[0].requests())
      EXPECT_EQ(std::string::npos, request.body.find("user 1"));
  }
}

TEST(Faults, SettingsThatFailStandAsBefore) {
  void (TarnwellService::* const settings[])(QString) = {nullptr, &Host::setEndPoint, &Host::setProxyHost,
                                                         &Host::setProxyUser, &Host::setProxyPassword};
  const ScriptedService proxy(reply(200, hostOperations()[2].answer()));
  for (const auto set : settings)
    for (auto [position, reached] = std::pair(0L, true); reached; ++position) {
      Host host("http://service.example/");
      host.setProxySettings("127.0.0.1", proxy.port(), "user", "password", true);
      const QString other(100, 'o');
      Faults faults{Faults::Memory, position};
      meeting(faults, [&] {
        set ? (host.*set)(other) : host.setProxySettings(other, 1, other, other, true);
        return 0;
      });
      reached = faults.calls > position;
      if (reached) {
        EXPECT_EQ(0, hostOperations()[2].call(host));
        EXPECT_EQ("Basic dXNlcjpwYXNzd29yZA==", proxy.request().header("Proxy-Authorization"));
      }
    }
}

TEST(Faults, ClientTellsAnException) {
  STLDesktopService client;
  _dsns__CheckDesktopVersionResponse response;
  Faults faults{Faults::Memory};
  EXPECT_EQ(-1, meeting(faults, [&] { return client.checkForUpdate(L"1", 1, &response); }));
}

// They do not use other descriptors either: without a socket, the runtime would use the standard streams.
TEST(Faults, ImpossibleEndpointsFailWithoutASocket) {
  const std::string endpoints = "soap.udp://127.0.0.1:9/|ftp://127.0.0.1/|127.0.0.1/|https://127.0.0.1/|http:///x|"
                                "http://:80/|http://|http:/127.0.0.1/|http://127.0.0.1/a\r\nb: c|"
                                "http://127.0.0.1/ http://127.0.0.1/|http://127.0.0.1/\x7f|x|:|file:///etc/passwd|"
                                "http://127.0.0.1:99181/|http://127.0.0.1:0|http://127.0.0.1:/|http://127.0.0.1:80x/|"
                                "http://[::1]:65536/|http://u:p@127.0.0.1:70000/|http://u:p@/|http://127.0.0.1/a@b";
  const auto expectFailure = [](const std::string& endpoint, int proxyPort) {
    Host host(endpoint);
    host.setProxySettings("127.0.0.1", proxyPort, "", "", proxyPort != 0);
    Faults faults{Faults::System, LONG_MAX};
    EXPECT_EQ('1', outcome(hostOperations()[0], host, faults)[0]) << endpoint << " " << proxyPort;
    EXPECT_EQ(0, faults.calls) << endpoint << " " << proxyPort;
  };
  for (const std::string& endpoint : cells(endpoints))
    expectFailure(endpoint, 0);
  for (const int port : {65536, -1})
    expectFailure("http://127.0.0.1/", port);
  const ScriptedService good(reply(200, hostOperations()[0].answer()));
  Host host(replaced(good.url(), "http://", "HTTP://u:p@"));
  EXPECT_EQ(0, hostOperations()[0].call(host));
}

TEST(Faults, AFileThatIsTooLargeIsNotRead) {
  const QTemporaryDir folder;
  const QString path = folder.filePath("large");
  ASSERT_TRUE(QFile(path).open(QIODevice::WriteOnly));
  ASSERT_TRUE(QFile::resize(path, static_cast<qint64>(tarnwell::largestBlock) + 1)); // without blocks on the disk
  Host host("http://127.0.0.1:1/");
  Faults faults{Faults::System, LONG_MAX};
  EXPECT_EQ(ResultFailed, meeting(faults, [&] { return host.saveMap(path, host.info, host.bytes, true); }));
  EXPECT_EQ(1, faults.calls) << "it is opened";
  EXPECT_EQ(show(known()), show(host.info));
}

TEST(Faults, CancelledThreadsLeaveAUsableObject) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the sanitizer takes a forced unwinding for a use of memory out of scope";
#endif
  for (const HostOperation& operation : hostOperations())
    for (auto [position, reached] = std::pair(0L, true); reached; position += 3) {
      const ScriptedService server(reply(200, operation.answer()));
      Host host(server.url());
      Faults faults{Faults::Cancelled, position, false, 0, 16};
      std::thread([&] { outcome(operation, host, faults); }).join();
      reached = faults.calls > position;
      EXPECT_TRUE(!reached || host.maps.size() == 1) << operation.name << " " << position;
      expectUsable(host, faults);
    }
}

TEST(CallMonitor, EndsTheWatchedCallAlone) {
  ASSERT_EQ(0, access("/proc/thread-self/syscall", R_OK)) << "without it, the monitor finds no connection";
  std::future<int> other, watched; // both return when the service ends
  const ScriptedService silent(Reply{"", std::string::npos, true});
  tarnwell::CallMonitor monitor(silent.port());
  const auto call = [url = silent.url()] { return hostOperations()[0].call(*std::make_unique<Host>(url)); };
  other = std::async(std::launch::async, call);
  watched = std::async(std::launch::async, [&] {
    const tarnwell::CallMonitor::Watch watch(monitor);
    return call();
  });
  while (silent.requests().empty())
    sched_yield();
  const Request either = silent.request();
  while (static_cast<std::size_t>(monitor.progress().acknowledged) != either.head.size() + 4 + either.body.size())
    sched_yield();
  int status = -1;
  if (const pid_t forked = fork(); forked == 0)
    _exit(monitor.endCall() ? 1 : 0);
  else
    waitpid(forked, &status, 0);
  EXPECT_EQ(0, status) << "a forked process ends the call";
  EXPECT_TRUE(monitor.endCall());
  EXPECT_EQ(ResultFailed, watched.get());
  EXPECT_FALSE(monitor.endCall());
  EXPECT_EQ(std::future_status::timeout, other.wait_for(std::chrono::milliseconds(100)));
}

} // namespace
