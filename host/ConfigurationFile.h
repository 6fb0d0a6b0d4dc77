// The configuration file: lines "key=value", sections "[NAME]", and comments, which begin with "#" or ";". One thread.
#pragma once

#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace tarnwell {

struct ConfigurationFile {
  struct Value {
    QString text;
    int line = 0; ///< from 1
  };
  QString path;
  /// In the order of the file.
  QStringList sections;
  /// Values by section, which is empty above the first heading, and key.
  QMap<QString, QMap<QString, Value>> values;
};

/// Reads the file; empty when it does not exist. A value is the text after the first "=" of its line as it stands
/// there, in UTF-8, without the blanks around it: no character has another meaning. Fails with a UsageError, which
/// names the line, for a line of any other form, a key that is not one of `keys` or that its section already has; with
/// a LocalError when the file cannot be read.
[[nodiscard]] ConfigurationFile readConfigurationFile(const QString& path, const QStringList& keys);

} // namespace tarnwell
