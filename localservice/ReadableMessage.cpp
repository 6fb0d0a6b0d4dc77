#include "localservice/ReadableMessage.h"

#include <QtCore/QRegularExpression>
#include <QtCore/QString>
#include <algorithm>
#include <string_view>

namespace localservice {

namespace {

constexpr std::size_t longestHead = std::size_t{64} << 10; // bytes
constexpr std::size_t longestMarkup = 2000;                // bytes
constexpr std::size_t longestText = 200;                   // bytes
constexpr std::size_t keptText = 40;                       // bytes of a longer one

/// The element's name in a start or end tag: "soap:Body" of "<soap:Body a='b'>" and of "</soap:Body>".
std::string_view nameOf(std::string_view tag) {
  tag.remove_prefix(tag.substr(0, 2) == "</" ? 2 : 1);
  return tag.substr(0, tag.find_first_of(" \t\r\n/>"));
}

/// Whether the element's content can be a password. By a reference to its id, any element can be one.
bool isSecret(std::string_view tag) {
  const std::string_view name = nameOf(tag);
  return name.substr(name.find(':') + 1) == "pass" || tag.find("id=") != std::string_view::npos;
}

/// The characters that end the markup which begins like `piece`.
std::string_view endOf(std::string_view piece) {
  if (piece.substr(0, 9) == "<![CDATA[")
    return "]]>";
  return piece.substr(0, 4) == "<!--" ? "-->" : ">";
}

/// `text` up to `size` bytes and whole characters.
std::string cut(const std::string& text, std::size_t size) {
  while (size > 0 && size < text.size() && (text[size] & 0xc0) == 0x80)
    --size;
  return text.substr(0, size);
}

} // namespace

void ReadableMessage::add(const char* bytes, std::size_t size) {
  const std::size_t before = head.size();
  const bool wasWhole = isHeadWhole;
  addHead(bytes, size);
  const std::size_t taken = wasWhole ? 0 : head.size() - before;
  if (isHeadWhole)
    addBody(bytes + taken, size - taken);
}

void ReadableMessage::addHead(const char* bytes, std::size_t size) {
  for (const char c : std::string_view(bytes, size)) {
    if (isHeadWhole)
      return;
    head += c;
    isHeadWhole =
        head.size() >= longestHead || (c == '\n' && head.size() >= 4 && head.substr(head.size() - 4) == "\r\n\r\n");
  }
}

void ReadableMessage::addBody(const char* bytes, std::size_t size) {
  if (bodySize == 0 && size > 0)
    isOpaque = static_cast<unsigned char>(*bytes) >= 0xfe || *bytes == 0 || (size > 1 && bytes[1] == 0);
  bodySize += size;
  if (!isOpaque)
    std::for_each(bytes, bytes + size, [this](char c) { addCharacter(c); });
}

void ReadableMessage::addCharacter(char c) {
  const bool isCharacterData = isMarkup && endOf(piece).size() > 1;
  if (c == '<' && !isCharacterData) { // inside a tag it is an error: what follows is read as a tag of its own
    endPiece();
    isMarkup = true;
  }
  if (piece.size() < (isMarkup ? longestMarkup : longestText + 1))
    piece += static_cast<unsigned char>(c) < ' ' || c == 0x7f ? ' ' : c; // nothing that a terminal would obey
  ++pieceSize;
  std::copy(last + 1, last + 3, last);
  last[2] = c;
  if (!isMarkup || c != '>')
    return;
  const std::string_view end = endOf(piece);
  if (pieceSize >= end.size() && std::string_view(last + 3 - end.size(), end.size()) == end)
    endMarkup();
}

void ReadableMessage::endPiece() {
  if (isMarkup)
    endMarkup();
  else
    endText();
}

void ReadableMessage::endMarkup() {
  const std::string tag = std::exchange(piece, {});
  const std::size_t size = std::exchange(pieceSize, 0);
  isMarkup = false;
  const std::string length = " [" + std::to_string(size) + " bytes]";
  if (tag[1] == '!' && endOf(tag) != "]]>") { // a comment can contain a request, with its password
    body += masked.empty() ? "<!" + length + ">" : "";
    return;
  }
  const bool isEnd = tag.substr(0, 2) == "</";
  const bool isStart = !isEnd && tag[1] != '!' && tag[1] != '?';
  const bool isEmpty = isStart && last[1] == '/';
  const std::string name(nameOf(tag));
  if (!masked.empty() && name == masked && isEnd && maskedInside == 0)
    masked.clear();
  else if (!masked.empty() && name == masked && !isEmpty)
    maskedInside = isEnd ? maskedInside - 1 : maskedInside + 1;
  if (!masked.empty())
    return;
  depth -= isEnd && depth > 0 ? 1 : 0;
  if (!(isEnd && isAfterStartTag) && (isStart || isEnd))
    newLine();
  const bool isCut = size > tag.size();
  body += isCut ? cut(tag, keptText) + "..." + length : tag;
  depth += isStart && !isEmpty ? 1 : 0;
  isAfterStartTag = isStart && !isEmpty;
  if (!isAfterStartTag || !(isCut || isSecret(tag)))
    return;
  masked = name;
  maskedInside = 0;
  body += "***";
}

void ReadableMessage::endText() {
  const std::string text = std::exchange(piece, {});
  const std::size_t size = std::exchange(pieceSize, 0);
  if (!masked.empty() || text.find_first_not_of(' ') == std::string::npos)
    return;
  body += size > longestText ? cut(text, keptText) + "... [" + std::to_string(size) + " bytes]" : text;
}

void ReadableMessage::newLine() {
  if (!body.empty())
    body += '\n';
  body.append(2 * std::min<std::size_t>(depth, 40), ' ');
}

std::string ReadableMessage::text() {
  endPiece();
  if (isOpaque)
    body = "[" + std::to_string(bodySize) + " bytes that are not UTF-8]";
  QString shown = QString::fromUtf8(head.c_str());
  shown.replace(QRegularExpression("^((?:proxy-)?authorization|cookie):.*$",
                                   QRegularExpression::CaseInsensitiveOption | QRegularExpression::MultilineOption),
                "\\1: ***");
  shown.replace(QRegularExpression("//[^/@\\s]*@"), "//***@").remove('\r');
  return shown.toStdString() + body + '\n';
}

} // namespace localservice
