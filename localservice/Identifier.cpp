#include "localservice/Identifier.h"

#include <QtCore/QUuid>

namespace localservice {

std::string canonicalIdentifier(const char* text) {
  const QString given = QString::fromUtf8(text).toLower();
  const QUuid identifier(given); // accepts a text with more characters after the identifier
  const bool isExact = given == identifier.toString() || given == identifier.toString(QUuid::WithoutBraces);
  return isExact && !identifier.isNull() ? identifier.toString(QUuid::WithoutBraces).toStdString() : std::string();
}

std::string freshIdentifier() { return QUuid::createUuid().toString(QUuid::WithoutBraces).toStdString(); }

} // namespace localservice
