#include "host/ConfigurationFile.h"

#include "host/CommandResult.h"
#include "host/Text.h"

#include <QtCore/QFile>

namespace tarnwell {

namespace {

/// Adds line `number` to the file, whose latest section it belongs to. Returns what is wrong with it; empty: nothing.
QString addLine(ConfigurationFile& file, QString& section, const QString& line, int number, const QStringList& keys) {
  if (line.isEmpty() || line.startsWith('#') || line.startsWith(';'))
    return {};
  if (line.startsWith('[')) {
    section = line.mid(1, line.size() - 2).trimmed();
    if (!line.endsWith(']') || section.isEmpty())
      return "a heading is [NAME]";
    if (!file.sections.contains(section))
      file.sections += section;
    return {};
  }
  const QString key = line.section('=', 0, 0).trimmed();
  if (!line.contains('='))
    return QString("%1 is neither KEY=VALUE nor [NAME] nor a comment").arg(quoted(key));
  if (key == "password" || key == "proxy-password")
    return "passwords do not belong here; see password-command and TARNWELL_PASSWORD";
  if (!keys.contains(key))
    return QString("there is no key %1; the keys are %2").arg(quoted(key), keys.join(", "));
  if (file.values[section].contains(key))
    return QString("%1 is given twice").arg(quoted(key));
  file.values[section][key] = {line.section('=', 1).trimmed(), number};
  return {};
}

} // namespace

ConfigurationFile readConfigurationFile(const QString& path, const QStringList& keys) {
  ConfigurationFile read;
  read.path = path;
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly) && file.exists())
    fail(LocalError, QString("cannot read the configuration file %1: %2").arg(quoted(path), file.errorString()),
         "check its permissions");
  QString section;
  for (int number = 1; file.isOpen() && !file.atEnd(); number++) {
    const QString line = QString::fromUtf8(file.readLine()).trimmed(); // without a byte order mark at its start
    const QString mistake = addLine(read, section, line, number, keys);
    if (!mistake.isEmpty())
      fail(UsageError, QString("%1, line %2: %3").arg(quoted(path), QString::number(number), mistake),
           "correct the line; 'tarnwell config' shows the settings");
  }
  return read;
}

} // namespace tarnwell
