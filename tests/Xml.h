// XML documents in a form in which equal trees are equal texts: for comparing what was sent with what should have been.
#pragma once

#include <QtCore/QXmlStreamReader>

#include <algorithm>
#include <string>
#include <vector>

/// One line per element and text, indented by depth, with names in the form "{namespace}local" and attributes sorted.
/// Prefixes, namespace declarations and the spelling of texts leave no trace. A malformed document ends with a line
/// that says so.
inline std::string canonical(const std::string& document) {
  QXmlStreamReader reader(QByteArray::fromStdString(document));
  const auto name = [](const auto& item) {
    return "{" + item.namespaceUri().toString().toStdString() + "}" + item.name().toString().toStdString();
  };
  std::string lines;
  std::string indent;
  while (!reader.atEnd()) {
    reader.readNext();
    if (reader.isEndElement())
      indent.resize(indent.size() - 1);
    if (reader.isCharacters() && !indent.empty())
      lines += indent + "\"" + reader.text().toString().toStdString() + "\"\n";
    if (!reader.isStartElement())
      continue;
    std::vector<std::string> attributes;
    for (const QXmlStreamAttribute& attribute : reader.attributes())
      attributes.push_back(" " + name(attribute) + "=\"" + attribute.value().toString().toStdString() + "\"");
    std::sort(attributes.begin(), attributes.end());
    lines += indent + name(reader);
    for (const std::string& attribute : attributes)
      lines += attribute;
    lines += "\n";
    indent += " ";
  }
  return reader.hasError() ? lines + "malformed: " + reader.errorString().toStdString() + "\n" : lines;
}
