#include "host/Diagnosis.h"

#include "Deployment.h"
#include "host/Text.h"

#include <QtCore/QRegularExpression>
#include <QtCore/QXmlStreamReader>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <netdb.h>

namespace tarnwell {

namespace {

/// What the body of a response says.
struct Content {
  bool isFault = false;
  /// The fault's reason.
  QString reason;
  /// "DbError" or "None": an outcome that has no result code of its own. Empty for any other.
  QString outcome;
};

Content contentOf(const QByteArray& response) {
  Content content;
  QString body = QString::fromUtf8(response.mid(response.indexOf("\r\n\r\n")));
  static const QRegularExpression chunkSize("\r\n[0-9A-Fa-f]+\r\n");
  body.remove(chunkSize);
  QXmlStreamReader reader(body.mid(body.indexOf('<')));
  while (!reader.atEnd()) {
    if (reader.readNext() != QXmlStreamReader::StartElement)
      continue;
    const auto name = reader.name();
    if (name == QLatin1String("Fault")) {
      content.isFault = true;
    } else if (content.isFault && (name == QLatin1String("Text") || name == QLatin1String("faultstring"))) {
      content.reason = reader.readElementText(QXmlStreamReader::SkipChildElements);
      break;
    } else if (name == QLatin1String("DesktopMapAccess") || name == QLatin1String("DesktopLoginValue")) {
      const QString value = reader.readElementText(QXmlStreamReader::SkipChildElements).trimmed();
      if (value == "DbError" || value == "None")
        content.outcome = value;
    }
  }
  return content;
}

constexpr char identifierAdvice[] =
    "if you named a map by its identifier, see with 'tarnwell list' whether it is there";

Diagnosis temporary(const QString& cause, const QString& advice) { return {cause, advice, true}; }

Diagnosis refused(const QString& cause, const QString& advice) { return {cause, advice, false, true}; }

Diagnosis withoutConnection(const CallTrace& trace, const QString& peer) {
  const char* const advice = "check the address and this machine's network, or try again later";
  if (trace.lookUpError != 0) {
    return {QString("nothing is known of the host of %1: %2").arg(peer, gai_strerror(trace.lookUpError)),
            "check the spelling, and this machine's network", trace.lookUpError == EAI_AGAIN};
  }
  if (trace.connectError == ECONNREFUSED)
    return temporary(peer + " refuses the connection", "check the port, and that the program behind it runs");
  if (trace.connectError == ETIMEDOUT)
    return temporary(peer + " does not answer in time", advice);
  if (trace.connectError != 0)
    return temporary(QString("cannot connect to %1: %2").arg(peer, std::strerror(trace.connectError)), advice);
  return temporary("the plug-in made no connection and does not tell why", "check that memory is free, and try again");
}

/// The diagnosis for an HTTP status; with an empty cause for one that says nothing by itself.
Diagnosis judgeStatus(const QString& statusLine, const Content& content, bool hasProxy) {
  const int status = statusLine.section(' ', 1, 1).toInt();
  QString text = "HTTP status " + statusLine.section(' ', 1);
  if (!content.reason.isEmpty())
    text += ", " + quoted(content.reason.left(500));
  const char* const proxyAdvice = "check --proxy-user and the password for the proxy";
  if (status == 407)
    return refused("the proxy refuses: " + text, proxyAdvice);
  if (hasProxy && (status == 401 || status == 403))
    return refused("the proxy or the server behind it refuses: " + text, proxyAdvice);
  if (status == 404)
    return refused(text, "check the path of the --endpoint");
  if (status == 413)
    return refused(text, "the file is larger than the service or the proxy takes");
  if (content.isFault || (status >= 200 && status <= 299))
    return {};
  text += hasProxy ? ", from the proxy or the server behind it" : "";
  return status < 500 ? refused(text, "check the --endpoint") : temporary(text, "try again later");
}

Diagnosis judge(const CallTrace& trace, const QString& peer, bool hasProxy) {
  const QByteArray& response = trace.response;
  if (!response.startsWith("HTTP/1."))
    return {peer + " answers, but not with HTTP", "check the port: is it that of the service?"};
  const QString line = printable(QString::fromUtf8(response.left(response.indexOf('\n')))).trimmed().left(120);
  const Content content = contentOf(response);
  const Diagnosis byStatus = judgeStatus(line, content, hasProxy);
  if (!byStatus.cause.isEmpty())
    return byStatus;
  if (content.isFault)
    return refused("the service answers with the fault " + quoted(content.reason.left(500)),
                   "tell the operators of the service");
  if (!response.contains("Envelope"))
    return {"the endpoint answers with HTTP status " + line.section(' ', 1) + ", but not with SOAP",
            "check the path of the --endpoint"};
  if (content.outcome == "DbError")
    return refused("the service answers \"DbError\": it could not read or change its data",
                   "its disk may be full; try again later, or tell its operators");
  if (content.outcome == "None")
    return {"the service answers \"None\": it does not know the map, or gives no reason", identifierAdvice, false, true,
            true};
  if (!response.contains("Envelope>")) // the end tag
    return temporary(peer + " breaks its response off", "try again");
  return {"the service answers, but its response does not have what the call needs", identifierAdvice, false, false,
          true};
}

} // namespace

Diagnosis diagnose(const CallTrace& trace, const ServiceAddress& address) {
  const QString peer = QString("%1%2, port %3")
                           .arg(address.hasProxy() ? "the proxy " : "", quoted(address.peerHost()))
                           .arg(address.peerPort());
  if (!trace.isConnected)
    return withoutConnection(trace, peer);
  if (!trace.response.isEmpty())
    return judge(trace, peer, address.hasProxy());
  return temporary(peer + " closes the connection " + (trace.isSent ? "without a response" : "during the request"),
                   "try again; if it happens again, check the port: is it that of the service?");
}

} // namespace tarnwell
