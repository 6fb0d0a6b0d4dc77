#include "host/Diagnosis.h"

#include "Deployment.h"
#include "host/Text.h"

#include <QtCore/QDeadlineTimer>
#include <QtCore/QXmlStreamReader>
#include <QtNetwork/QNetworkProxy>
#include <QtNetwork/QTcpSocket>
#include <algorithm>

namespace tarnwell {

namespace {

constexpr int patience = 5000; // milliseconds to connect, and again for request and answer

constexpr char envelope[] = R"(<?xml version="1.0" encoding="UTF-8"?>
<e:Envelope xmlns:e="http://www.w3.org/2003/05/soap-envelope"><e:Body><%1 xmlns="%2"/></e:Body></e:Envelope>)";

QByteArray requestHead(const ServiceAddress& address, const ProxyLogin& login, const char* operation, qint64 size) {
  const QUrl& url = address.endpoint;
  const QString path = url.toString(QUrl::FullyEncoded | QUrl::RemoveScheme | QUrl::RemoveAuthority);
  QString head = QString("POST %1 HTTP/1.1\r\nHost: %2\r\n")
                     .arg(address.hasProxy() ? url.toString(QUrl::FullyEncoded)
                          : path.isEmpty()   ? "/"
                                             : path,
                          url.authority(QUrl::FullyEncoded));
  head += QString("Content-Type: application/soap+xml; charset=utf-8; action=\"%1%2\"\r\n")
              .arg(TARNWELL_SERVICE_NAMESPACE, operation);
  head += QString("Content-Length: %1\r\nConnection: close\r\n").arg(size);
  const QByteArray credentials = (login.user + ':' + login.password).toUtf8().toBase64();
  if (address.hasProxy() && !login.user.isEmpty())
    head += "Proxy-Authorization: Basic " + QString::fromLatin1(credentials) + "\r\n";
  return head.toUtf8() + "\r\n";
}

/// Writes the request, `body` extended by blanks to `size` bytes, and reads the answer until its end, 64 KiB or the
/// deadline. Stops writing when the answer comes before the request's end.
QByteArray exchange(QTcpSocket& socket, QByteArray head, QByteArray body, qint64 size) {
  constexpr int mostOfAnswer = 65536;
  constexpr int piece = 1 << 20;
  const QDeadlineTimer deadline(patience);
  const auto remaining = [&deadline] { return static_cast<int>(deadline.remainingTime()); };
  QByteArray answer;
  socket.write(head + body);
  for (size -= body.size(); size > 0 && !deadline.hasExpired(); size -= piece) {
    if (!socket.waitForBytesWritten(remaining()) || socket.bytesAvailable() > 0)
      break;
    socket.write(QByteArray(static_cast<int>(std::min<qint64>(size, piece)), ' '));
  }
  while (answer.size() < mostOfAnswer && (socket.bytesAvailable() > 0 || socket.waitForReadyRead(remaining())))
    answer += socket.readAll();
  return answer;
}

/// The reason of a SOAP fault in `answer`, "?" for one without; null when there is no fault.
QString faultIn(const QByteArray& answer) {
  const int start = answer.indexOf('<');
  QXmlStreamReader reader(start < 0 ? QByteArray() : answer.mid(start));
  bool isFault = false;
  while (!reader.atEnd()) {
    if (reader.readNext() != QXmlStreamReader::StartElement)
      continue;
    if (reader.name() == QLatin1String("Fault"))
      isFault = true;
    else if (isFault && (reader.name() == QLatin1String("Text") || reader.name() == QLatin1String("faultstring")))
      return reader.readElementText(QXmlStreamReader::SkipChildElements);
  }
  return isFault ? QString("?") : QString();
}

Diagnosis connectionFailure(const QTcpSocket& socket, const QString& peer) {
  switch (socket.error()) {
  case QAbstractSocket::HostNotFoundError:
    return {false, "nothing is known of the host of " + peer, "check the spelling, and this machine's network"};
  case QAbstractSocket::ConnectionRefusedError:
    return {false, peer + " refuses the connection", "check the port, and that the program behind it runs"};
  case QAbstractSocket::SocketTimeoutError:
    return {false, peer + " does not answer in time",
            "check the address and this machine's network, or try again later"};
  default:
    return {false, QString("cannot connect to %1: %2").arg(peer, printable(socket.errorString())), {}};
  }
}

Diagnosis noAnswer(const QTcpSocket& socket, const QString& peer) {
  if (socket.error() == QAbstractSocket::SocketTimeoutError)
    return {false, peer + " accepts the connection but does not answer in time", "try again later"};
  return {false, peer + " closes the connection without an answer", "check the port: is it that of the service?"};
}

/// The diagnosis by the answer's status line and content.
Diagnosis judge(const QByteArray& answer, const QString& peer, bool hasProxy) {
  if (!answer.startsWith("HTTP/1."))
    return {false, peer + " answers, but not with HTTP", "check the port: is it that of the service?"};
  const QString line = printable(QString::fromUtf8(answer.left(answer.indexOf('\n')))).trimmed().left(120);
  const int status = line.section(' ', 1, 1).toInt();
  const QString statusText = "HTTP status " + line.section(' ', 1);
  const QString fault = faultIn(answer);
  if (!fault.isNull())
    return {
        false,
        QString("asked again without a password, the service answers with the fault %1").arg(quoted(fault.left(500))),
        "tell the operators of the service"};
  const char* const proxyAdvice = "check --proxy-user and the password for the proxy";
  if (status == 407)
    return {false, "the proxy refuses: " + statusText, proxyAdvice};
  if (hasProxy && (status == 401 || status == 403))
    return {false, "the proxy or the server behind it refuses: " + statusText, proxyAdvice};
  if (status == 404)
    return {false, statusText, "check the path of the --endpoint"};
  if (status == 413)
    return {false, statusText, "the file is larger than the service or the proxy takes"};
  if (status < 200 || status > 299)
    return {false, statusText + (hasProxy ? ", from the proxy or the server behind it" : ""), "check the --endpoint"};
  if (!answer.contains("Envelope"))
    return {false, "the endpoint answers with " + statusText + ", but not with SOAP",
            "check the path of the --endpoint"};
  return {true, {}, {}};
}

} // namespace

Diagnosis diagnose(const ServiceAddress& address, const ProxyLogin& login, const char* operation, qint64 size) {
  const QString peer = QString("%1%2, port %3")
                           .arg(address.hasProxy() ? "the proxy " : "", quoted(address.peerHost()))
                           .arg(address.peerPort());
  QTcpSocket socket;
  socket.setProxy(QNetworkProxy::NoProxy);
  socket.connectToHost(address.peerHost(), static_cast<quint16>(address.peerPort()));
  if (!socket.waitForConnected(patience))
    return connectionFailure(socket, peer);
  const QByteArray body = QString(envelope).arg(operation, TARNWELL_SERVICE_NAMESPACE).toUtf8();
  size = std::max<qint64>(size, body.size());
  const QByteArray answer = exchange(socket, requestHead(address, login, operation, size), body, size);
  return answer.isEmpty() ? noAnswer(socket, peer) : judge(answer, peer, address.hasProxy());
}

} // namespace tarnwell
