// tarnwell-localservice: the map service on one machine. Exit status: 0, stopped or done; 1, it could not be done;
// 2, the command line cannot be followed.
#include "localservice/Administration.h"
#include "localservice/Server.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QTextCodec>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <malloc.h>
#include <stdexcept>
#include <sys/signalfd.h>

namespace {

using namespace localservice;

/// Serves until the process is asked to stop. A second signal ends it at once, as without this program's doing.
void serve(const Options& options) {
  std::signal(SIGHUP, SIG_IGN);
  std::signal(SIGPIPE, SIG_IGN); // of a log that nobody reads any more
  // Big blocks go back to the system when they are freed; without this, malloc begins to keep them.
  mallopt(M_MMAP_THRESHOLD, 1 << 20);
  sigset_t stops;
  sigemptyset(&stops);
  sigaddset(&stops, SIGINT);
  sigaddset(&stops, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &stops, nullptr); // before there are threads: they inherit it
  const int stop = signalfd(-1, &stops, SFD_CLOEXEC);

  Server server(options);
  if (server.isReachableFromOutside())
    std::cerr << "tarnwell-localservice: other machines can reach this service, and all traffic is readable\n";
  std::cout << server.endpoint() << std::endl;
  server.serve(stop);
  signalfd_siginfo received;
  static_cast<void>(!read(stop, &received, sizeof received)); // so that it is not delivered now
  pthread_sigmask(SIG_UNBLOCK, &stops, nullptr);
  if (!server.finish())
    std::_Exit(EXIT_SUCCESS);
}

void run(const Options& options) {
  if (!options.information.empty()) {
    std::cout << options.information;
    return;
  }
  Store store(options.database, options.readOnly            ? Access::Read
                                : options.createsDatabase() ? Access::Create
                                                            : Access::Change);
  store.open(); // and stays open, since a database in memory goes with its last user
  administer(store, options);
  if (options.serve)
    serve(options);
}

} // namespace

int main(int argc, char** argv) {
  // Arguments and file names are UTF-8 whatever the locale says: with LANG=C, Qt 5 would lose all but ASCII.
  QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
  const QCoreApplication application(argc, argv);
  try {
    run(parseOptions(QCoreApplication::arguments()));
    return 0;
  } catch (const std::invalid_argument& e) {
    std::cerr << "tarnwell-localservice: " << e.what() << " (--help tells more)\n";
    return 2;
  } catch (const std::exception& e) {
    std::cerr << "tarnwell-localservice: " << e.what() << '\n';
    return 1;
  }
}
