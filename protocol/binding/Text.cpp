#include "protocol/binding/Text.h"

#include "protocol/runtime/RuntimeInternals.h"

#include <charconv>
#include <cstring>
#include <utility>

namespace tarnwell {
namespace {

constexpr unsigned lastCodePoint = 0x10ffff;

void appendUtf8(std::string& text, unsigned c) {
  const int more = c < 0x80 ? 0 : c < 0x800 ? 1 : c < 0x10000 ? 2 : 3; // bytes behind the first
  const unsigned mark = more == 0 ? 0 : 0xff00U >> (more + 1) & 0xff;
  text.push_back(static_cast<char>(mark | c >> 6 * more));
  for (int i = more - 1; i >= 0; --i)
    text.push_back(static_cast<char>(0x80 | (c >> 6 * i & 0x3f)));
}

/// Characters between "&" and ";" that are looked at.
constexpr std::size_t longestReference = 12;

/// The number in "#128512" or "#x1F600"; 0 if it is none.
unsigned characterNumber(std::string_view name) {
  if (name.empty() || name.front() != '#')
    return 0;
  const bool hexadecimal = name.size() > 1 && (name[1] == 'x' || name[1] == 'X');
  const char* const first = name.data() + (hexadecimal ? 2 : 1);
  const char* const last = name.data() + name.size();
  unsigned number = 0;
  const auto [end, failure] = std::from_chars(first, last, number, hexadecimal ? 16 : 10);
  return failure == std::errc() && end == last && number <= lastCodePoint ? number : 0;
}

/// Appends the character of "&name;": one of XML's five names or a character's number (XML 1.0 section 4.1). False: it
/// is neither.
bool appendReference(std::string& text, std::string_view name) {
  static constexpr std::pair<std::string_view, char> entities[] = {
      {"lt", '<'}, {"gt", '>'}, {"amp", '&'}, {"quot", '"'}, {"apos", '\''}};
  for (const auto& [entity, character] : entities)
    if (name == entity) {
      text.push_back(character);
      return true;
    }
  const unsigned number = characterNumber(name);
  if (number != 0)
    appendUtf8(text, number);
  return number != 0;
}

/// Copies `text`, its references resolved. False: it has something else behind a "&".
bool appendResolved(std::string& out, std::string_view text) {
  for (;;) {
    const std::size_t reference = text.find('&');
    out.append(text, 0, reference);
    if (reference == text.npos)
      return true;
    text.remove_prefix(reference + 1);
    const std::size_t end = text.substr(0, longestReference + 1).find(';');
    if (end == text.npos || !appendReference(out, text.substr(0, end)))
      return false;
    text.remove_prefix(end + 1);
  }
}

/// Collects character data byte by byte: the way that works for everything, across buffers. Functions return false when
/// they fail, with the context's error set.
class Collector {
public:
  Collector(struct soap* soap, std::string& out) : m_soap(soap), m_out(out) {}

  /// Up to the end tag of the element that is open, whose "</" is given back to the runtime.
  bool run() {
    char c = 0;
    for (int depth = 0; depth >= 0;)
      if (!next(c) || !take(c, depth))
        return false;
    soap_unget(m_soap, endTagMark);
    return true;
  }

private:
  bool fail(int error) {
    if (!m_soap->error)
      m_soap->error = error;
    return false;
  }

  bool next(char& c) {
    const soap_wchar got = soap_get1(m_soap);
    c = static_cast<char>(got);
    return static_cast<int>(got) != EOF || fail(SOAP_EOF);
  }

  bool take(char c, int& depth) {
    if (c == '<')
      return markup(depth);
    if (c == '&')
      return reference();
    append(c);
    return true;
  }

  /// Bytes of a message in ISO 8859-1 become UTF-8.
  void append(char c) {
    if (m_soap->mode & SOAP_ENC_LATIN)
      appendUtf8(m_out, static_cast<unsigned char>(c));
    else
      m_out.push_back(c);
  }

  /// What follows "<": an end tag lowers the depth, a start tag raises it, anything else leaves it.
  bool markup(int& depth) {
    char first = 0;
    if (!next(first))
      return false;
    if (first == '!')
      return declaration();
    if (first == '?')
      return skipPast("?>");
    if (first == '/' && depth-- == 0)
      return true;
    m_out.push_back('<');
    append(first);
    char quote = '\0';
    for (char c = 0, last = 0; next(c); last = c) {
      append(c);
      if (c == '>' && !quote) {
        depth += first != '/' && last != '/' ? 1 : 0;
        return true;
      }
      if (!quote && (c == '"' || c == '\''))
        quote = c;
      else if (c == quote)
        quote = '\0';
    }
    return false;
  }

  /// "<!--comment-->" is left out, "<![CDATA[characters]]>" is not, of other declarations only the end is looked for.
  bool declaration() {
    std::string start;
    for (char c = 0; c != '>';) {
      if (!next(c))
        return false;
      start.push_back(c);
      if (start == "--")
        return skipPast("-->");
      if (start == "[CDATA[")
        return copyPast("]]>");
    }
    return true;
  }

  /// Reads past `end`, and copies what stands before it.
  bool copyPast(std::string_view end) {
    const std::size_t begin = m_out.size();
    for (char c = 0; next(c);) {
      append(c);
      const std::size_t size = m_out.size() - begin;
      if (c == end.back() && size >= end.size() && m_out.compare(m_out.size() - end.size(), end.size(), end) == 0) {
        m_out.resize(m_out.size() - end.size());
        return true;
      }
    }
    return false;
  }

  bool skipPast(std::string_view end) {
    const std::size_t begin = m_out.size();
    const bool found = copyPast(end);
    m_out.resize(begin);
    return found;
  }

  /// What follows "&", up to ";".
  bool reference() {
    std::string name;
    for (char c = 0; name.size() <= longestReference; name.push_back(c)) {
      if (!next(c))
        return false;
      if (c == ';')
        return appendReference(m_out, name) || fail(SOAP_SYNTAX_ERROR);
    }
    return fail(SOAP_SYNTAX_ERROR);
  }

  struct soap* m_soap;
  std::string& m_out;
};

/// Whether XML can carry the code point at all (XML 1.0 section 2.2), as itself or as a reference.
constexpr bool isXmlCharacter(unsigned c) {
  return c >= 0x20 ? c < 0xd800 || (c >= 0xe000 && c < 0xfffe) || (c >= 0x10000 && c <= lastCodePoint)
                   : c == '\t' || c == '\n' || c == '\r';
}

/// Appends one code point of element content.
void appendEscaped(std::string& text, unsigned c) {
  if (c == '&')
    text += "&amp;";
  else if (c == '<')
    text += "&lt;";
  else if (c == '>')
    text += "&gt;";
  else if (c == '\r')
    text += "&#xD;";
  else
    appendUtf8(text, isXmlCharacter(c) ? c : 0xfffd);
}

/// The code point that starts at `p`, whose sequence must end before `end`; moves `p` past it.
unsigned takeCodePoint(const unsigned char*& p, const unsigned char* end) {
  const unsigned first = *p++;
  if (first < 0xc0 || first >= 0xf8)
    return first;
  const int more = first < 0xe0 ? 1 : first < 0xf0 ? 2 : 3;
  if (end - p < more)
    return first;
  unsigned c = first & (0x3fU >> more);
  for (int i = 0; i < more; ++i) {
    if ((p[i] & 0xc0) != 0x80)
      return first;
    c = c << 6 | (p[i] & 0x3f);
  }
  if (c > lastCodePoint)
    return first;
  p += more;
  return c;
}

} // namespace

int Content::read(struct soap* soap) {
  m_text = {};
  if (!soap->body)
    return SOAP_OK;
  if (readsBuffer(soap) && !(soap->mode & SOAP_ENC_LATIN)) {
    // All of it in the buffer; with nothing in it to resolve, there is no copy.
    const std::string_view next = unread(soap);
    const std::size_t end = next.find('<');
    if (end != next.npos && end + 1 < next.size() && next[end + 1] == '/') {
      m_text = next.substr(0, end);
      const bool plain = m_text.find('&') == m_text.npos;
      if (plain || appendResolved(m_collected, m_text)) {
        skipUnread(soap, end);
        if (!plain)
          m_text = m_collected;
        return SOAP_OK;
      }
    }
  }
  m_collected.clear();
  if (!Collector(soap, m_collected).run())
    return soap->error;
  m_text = m_collected;
  return SOAP_OK;
}

std::string_view Content::trimmed() const {
  const auto isSpace = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
  std::string_view text = m_text;
  while (!text.empty() && isSpace(text.front()))
    text.remove_prefix(1);
  while (!text.empty() && isSpace(text.back()))
    text.remove_suffix(1);
  return text;
}

void decodeUtf8(std::string_view utf8, std::wstring& wide) {
  const unsigned char* p = reinterpret_cast<const unsigned char*>(utf8.data());
  const unsigned char* const end = p + utf8.size();
  unsigned char allBits = 0;
  for (const char c : utf8)
    allBits |= static_cast<unsigned char>(c);
  if (allBits < 0x80) {
    wide = std::wstring(p, end);
    return;
  }
  wide.resize(utf8.size());
  wchar_t* out = wide.data();
  while (p < end)
    *out++ = static_cast<wchar_t>(*p < 0x80 ? *p++ : takeCodePoint(p, end));
  wide.resize(static_cast<std::size_t>(out - wide.data()));
}

int writeText(struct soap* soap, const std::wstring& wide) {
  constexpr std::size_t pieceSize = 1000; // bytes: the text is not held a second time
  std::string piece;
  for (const wchar_t c : wide) {
    appendEscaped(piece, static_cast<unsigned>(c));
    if (piece.size() < pieceSize)
      continue;
    if (soap_send_raw(soap, piece.data(), piece.size()))
      return soap->error;
    piece.clear();
  }
  return soap_send_raw(soap, piece.data(), piece.size());
}

int writeText(struct soap* soap, std::string_view utf8) {
  std::wstring wide;
  decodeUtf8(utf8, wide);
  return writeText(soap, wide);
}

} // namespace tarnwell
