#include "localservice/RequestLog.h"

#include "terminal/Printable.h"

#include <QtCore/QDateTime>
#include <QtCore/QStringList>
#include <cstdio>

namespace localservice {

std::string line(const LogEntry& entry) {
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
  return columns.join('\t').toStdString() + '\n';
}

void log(const LogEntry& entry) {
  const std::string text = line(entry);
  std::fwrite(text.data(), 1, text.size(), stderr); // one call: lines stay whole
}

} // namespace localservice
