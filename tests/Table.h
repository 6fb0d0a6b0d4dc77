// Tables of test data as text, so that a row is a line.
#pragma once

#include "tests/Random.h"

#include <QtCore/QStringList>
#include <string>
#include <vector>

/// The parts of `text` between `divider`, without the blanks around them.
inline std::vector<std::string> cells(const std::string& text, const char* divider = "|") {
  std::vector<std::string> parts;
  for (const QString& part : QString::fromStdString(text).split(divider))
    parts.push_back(part.trimmed().toStdString());
  return parts;
}

/// The rows of a table: its lines that are not empty, cells divided by "|".
inline std::vector<std::vector<std::string>> rows(const std::string& text) {
  std::vector<std::vector<std::string>> all;
  for (const std::string& line : cells(text, "\n"))
    if (!line.empty())
      all.push_back(cells(line));
  return all;
}

/// `text` with every `what` replaced.
inline std::string replaced(const std::string& text, const std::string& what, const std::string& by) {
  return QByteArray::fromStdString(text).replace(what.c_str(), by.c_str()).toStdString();
}

/// Random bytes, different in each call, that cannot be compressed.
inline std::string randomBytes(std::size_t size) {
  static Random random(1);
  std::string bytes;
  while (bytes.size() < size)
    bytes += static_cast<char>(random.next());
  return bytes;
}
