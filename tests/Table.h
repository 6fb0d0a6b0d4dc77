// Tables of test data as text, so that a row is a line.
#pragma once

#include <algorithm>
#include <random>
#include <sstream>
#include <string>
#include <vector>

/// The parts of `text` between `divider`, without the blanks around them.
inline std::vector<std::string> cells(const std::string& text, const std::string& divider = "|") {
  std::vector<std::string> parts;
  for (std::size_t at = 0, end = 0; end != std::string::npos; at = end + divider.size()) {
    end = text.find(divider, at);
    const std::string part = text.substr(at, end - at);
    const std::size_t first = part.find_first_not_of(' ');
    parts.push_back(first == std::string::npos ? "" : part.substr(first, part.find_last_not_of(' ') + 1 - first));
  }
  return parts;
}

/// The rows of a table: its lines that are not empty, cells divided by "|".
inline std::vector<std::vector<std::string>> rows(const std::string& text) {
  std::vector<std::vector<std::string>> all;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);)
    if (!line.empty())
      all.push_back(cells(line));
  return all;
}

/// `text` with every `what` replaced.
inline std::string replaced(const std::string& text, const std::string& what, const std::string& by) {
  std::string made;
  std::size_t from = 0;
  for (std::size_t at; (at = text.find(what, from)) != std::string::npos; from = at + what.size())
    made.append(text, from, at - from) += by;
  return made.append(text, from);
}

/// Bytes as of a packed file, others with every call.
inline std::string randomBytes(std::size_t size) {
  static std::mt19937 random(1);
  std::string bytes(size, '\0');
  std::generate(bytes.begin(), bytes.end(), [] { return static_cast<char>(random()); });
  return bytes;
}
