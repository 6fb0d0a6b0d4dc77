// tarnwell-localservice: the map service on one machine. Exit status: 0, stopped or done; 1, it could not be done;
// 2, the command line cannot be meant.
#include "localservice/Administration.h"
#include "localservice/Description.h"
#include "localservice/Server.h"
#include "protocol/Deployment.h"

#include <csignal>
#include <exception>
#include <iostream>
#include <stdexcept>

namespace {

using namespace localservice;

/// Serves until the process is asked to stop.
void serve(const Options& options) {
  sigset_t stops;
  sigemptyset(&stops);
  sigaddset(&stops, SIGINT);
  sigaddset(&stops, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &stops, nullptr); // before there are threads: they inherit it
  const Server server(options);
  std::cout << server.endpoint() << std::endl;
  int signal = 0;
  sigwait(&stops, &signal);
}

void run(const Options& options) {
  if (options.help) {
    std::cout << helpText;
    return;
  }
  if (!options.describe.empty()) {
    std::cout << (options.describe == "wsdl" ? serviceDescription(TARNWELL_TEST_ENDPOINT) : protocolTables());
    return;
  }
  {
    Store store(options.database, options.readOnly);
    administer(store, options);
  }
  if (options.serve)
    serve(options);
}

} // namespace

int main(int argc, char** argv) {
  try {
    run(parseOptions(argc, argv));
    return 0;
  } catch (const std::invalid_argument& e) {
    std::cerr << "tarnwell-localservice: " << e.what() << " (--help tells more)\n";
    return 2;
  } catch (const std::exception& e) {
    std::cerr << "tarnwell-localservice: " << e.what() << '\n';
    return 1;
  }
}
