#include "localservice/RequestLog.h"

#include "terminal/Printable.h"

#include <QtCore/QDateTime>
#include <QtCore/QStringList>
#include <cstdio>

namespace localservice {

void log(const LogEntry& entry) {
  const auto column = [](const std::string& text) {
    return text.empty() ? QString("-") : terminal::printable(QString::fromStdString(text));
  };
  const QStringList columns{QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs),
                            column(entry.client),
                            column(entry.operation),
                            column(entry.user),
                            column(entry.outcome),
                            QString("%1 ms").arg(entry.duration.count()),
                            QString("%1 bytes in").arg(entry.received),
                            QString("%1 bytes out").arg(entry.sent)};
  const QByteArray line = columns.join('\t').toUtf8() + '\n';
  std::fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), stderr); // one call: lines stay whole
}

} // namespace localservice
