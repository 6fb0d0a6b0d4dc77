#include "host/Connection.h"

#include "host/Password.h"
#include "host/Plugin.h"
#include "host/Text.h"

namespace tarnwell {

namespace {

struct Proxy {
  QString host;
  int port = 0;
};

/// "HOST:PORT", an IPv6 address in brackets or not.
Outcome parseProxy(const QString& text, Proxy& proxy) {
  const int colon = text.lastIndexOf(':');
  bool isNumber = false;
  proxy.port = text.mid(colon + 1).toInt(&isNumber);
  proxy.host = text.left(colon);
  if (proxy.host.startsWith('[') && proxy.host.endsWith(']'))
    proxy.host = proxy.host.mid(1, proxy.host.size() - 2);
  if (colon < 1 || !isNumber || proxy.port < 1 || proxy.port > 65535 || proxy.host.contains('/')) {
    return failure(UsageError, QString("%1 is no proxy address").arg(quoted(text)),
                   "give host and port, as in --proxy proxy.example:3128");
  }
  return {};
}

Outcome useProxy(const QCommandLineParser& options, ITarnwellService& service) {
  Proxy proxy;
  Outcome parsed = parseProxy(options.value("proxy"), proxy);
  if (parsed.failed())
    return parsed;
  const QString user = options.value("proxy-user");
  if (user.isEmpty()) {
    // Not setProxySettings, which sends credentials even when they are empty.
    service.setProxyHost(proxy.host);
    service.setProxyPort(proxy.port);
    return {};
  }
  QString password;
  Outcome read = readPassword("TARNWELL_PROXY_PASSWORD", QString("Password of %1 at the proxy: ").arg(user), password);
  if (!read.failed())
    service.setProxySettings(proxy.host, proxy.port, user, password, true);
  return read;
}

} // namespace

QList<QCommandLineOption> connectionOptions() {
  return {{"endpoint",
           "The service's URL; an empty text is the production service. Without this option: the test service.", "URL"},
          {"proxy", "HTTP proxy.", "HOST:PORT"},
          {"proxy-user", "User at the proxy; the password comes from TARNWELL_PROXY_PASSWORD or the terminal.", "NAME"},
          {"user", "User of the service; the password comes from TARNWELL_PASSWORD or the terminal.", "NAME"},
          {"plugin", "The plug-in. Without this option: libtarnwell.so beside this program or as installed.", "FILE"}};
}

Outcome openService(const QCommandLineParser& options, std::unique_ptr<ITarnwellService>& service) {
  if (options.isSet("proxy-user") && !options.isSet("proxy"))
    return failure(UsageError, "--proxy-user is of no use without --proxy");
  Outcome loaded = loadPlugin(options.value("plugin"), service);
  if (loaded.failed())
    return loaded;
  if (options.isSet("endpoint"))
    service->setEndPoint(options.value("endpoint"));
  return options.isSet("proxy") ? useProxy(options, *service) : Outcome();
}

} // namespace tarnwell
