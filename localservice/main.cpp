// tarnwell-localservice: the map service on one machine. Exit status: 0, done or stopped by a signal; 1, failed; 2, the
// command line is wrong.
#include "localservice/Administration.h"
#include "localservice/Server.h"
#include "terminal/Utf8.h"

#include <QtCore/QCoreApplication>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <malloc.h>
#include <stdexcept>
#include <sys/signalfd.h>

namespace {

using namespace localservice;

/// Serves until SIGINT or SIGTERM. A second signal has its default effect: it ends the process at once.
void serve(const Options& options, const DatabaseFile& file) {
  std::signal(SIGHUP, SIG_IGN);
  std::signal(SIGPIPE, SIG_IGN); // when the reader of the log has closed it
  // With a fixed threshold, free() returns blocks of 1 MiB and more to the system; otherwise malloc raises it. Less
  // than that stays at the end of the heap: the next request would get it back page by page.
  mallopt(M_MMAP_THRESHOLD, 1 << 20);
  mallopt(M_TRIM_THRESHOLD, 1 << 20);
  sigset_t stops;
  sigemptyset(&stops);
  sigaddset(&stops, SIGINT);
  sigaddset(&stops, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &stops, nullptr); // before the first thread starts: threads inherit the mask
  const int stop = signalfd(-1, &stops, SFD_CLOEXEC);

  Server server(options, file);
  if (server.isReachableFromOutside())
    std::cerr << "tarnwell-localservice: other machines can reach this service, and all traffic is readable\n";
  std::cout << server.endpoint() << '\n' << std::flush;
  server.serve(stop);
  signalfd_siginfo received;
  static_cast<void>(!read(stop, &received, sizeof received)); // or unblocking would deliver it
  pthread_sigmask(SIG_UNBLOCK, &stops, nullptr);
  if (!server.finish())
    std::_Exit(EXIT_SUCCESS);
}

OpenMode openModeOf(const Options& options, bool serves) {
  if (options.isSet("read-only"))
    return OpenMode::Read;
  return serves || createsDatabase(options) ? OpenMode::Create : OpenMode::Change;
}

void run(const Options& options) {
  std::signal(SIGXFSZ, SIG_IGN); // a file that may not grow is an error, not the end of the process
  const std::string information = options.information();
  if (!information.empty()) {
    std::cout << information;
    return;
  }
  const bool serves = options.isSet("listen") || options.isSet("port") || !asksForAdministration(options);
  const DatabaseFile file(options.text("db"), openModeOf(options, serves));
  Store store(file);
  store.open(); // and keeps it open, because a database in memory exists only while it is open
  administer(store, options);
  if (serves)
    serve(options, file);
}

} // namespace

int main(int argc, char** argv) {
  terminal::useUtf8();
  const QCoreApplication application(argc, argv);
  try {
    run(Options(QCoreApplication::arguments()));
    return 0;
  } catch (const std::invalid_argument& e) {
    std::cerr << "tarnwell-localservice: " << e.what() << " (--help tells more)\n";
    return 2;
  } catch (const std::exception& e) {
    std::cerr << "tarnwell-localservice: " << e.what() << '\n';
    return 1;
  }
}
