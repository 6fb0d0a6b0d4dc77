// XML documents in a form in which equal trees are equal texts: for comparing what was sent with what should have been.
#pragma once

#include <QtCore/QXmlStreamReader>

#include <string>

/// One line per tag and text: names follow their namespace, an attribute its element. Prefixes, namespace declarations
/// and the spelling of texts leave no trace. A malformed document ends with a line that says so.
inline std::string canonical(const std::string& document) {
  QXmlStreamReader reader(QByteArray::fromStdString(document));
  QString lines;
  while (!reader.atEnd()) {
    reader.readNext();
    lines += reader.tokenString() + " " + reader.namespaceUri().toString() + reader.name().toString() +
             reader.text().toString();
    for (const QXmlStreamAttribute& attribute : reader.attributes())
      lines +=
          " " + attribute.namespaceUri().toString() + attribute.name().toString() + "=" + attribute.value().toString();
    lines += "\n";
  }
  return (lines + (reader.hasError() ? "malformed: " + reader.errorString() : "")).toStdString();
}
