#include "protocol/binding/Text.h"

#include "protocol/soap/RuntimeInternals.h"

#include <charconv>
#include <cstring>
#include <utility>

namespace tarnwell {
namespace {

constexpr unsigned lastCodePoint = 0x10ffff;

void appendUtf8(std::string& text, unsigned c) {
  char bytes[4];
  std::size_t size = 0;
  if (c < 0x80)
    bytes[size++] = static_cast<char>(c);
  if (c >= 0x80 && c < 0x800)
    bytes[size++] = static_cast<char>(0xc0 | c >> 6);
  if (c >= 0x800 && c < 0x10000)
    bytes[size++] = static_cast<char>(0xe0 | c >> 12);
  if (c >= 0x10000) {
    bytes[size++] = static_cast<char>(0xf0 | c >> 18);
    bytes[size++] = static_cast<char>(0x80 | (c >> 12 & 0x3f));
  }
  if (c >= 0x800)
    bytes[size++] = static_cast<char>(0x80 | (c >> 6 & 0x3f));
  if (c >= 0x80)
    bytes[size++] = static_cast<char>(0x80 | (c & 0x3f));
  text.append(bytes, size);
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

/// Collects character data byte by byte: the way that works for everything, across buffers.
class Collector {
public:
  Collector(struct soap* soap, std::string& out) : m_soap(soap), m_out(out) {}

  /// Up to the end tag of the element that is open, whose "</" is given back to the runtime.
  int run() {
    for (int depth = 0; depth >= 0;) {
      const int c = next();
      if (c == EOF)
        return truncated();
      if (take(c, depth))
        return m_soap->error;
    }
    soap_unget(m_soap, endTagMark);
    return SOAP_OK;
  }

private:
  int next() { return static_cast<int>(soap_get1(m_soap)); }
  int truncated() { return m_soap->error = m_soap->error ? m_soap->error : SOAP_EOF; }

  int take(int c, int& depth) {
    if (c == '<')
      return markup(depth);
    if (c == '&')
      return reference();
    return character(c);
  }

  /// Bytes of a message in ISO 8859-1 become UTF-8.
  int character(int c) {
    if (c >= 0x80 && m_soap->mode & SOAP_ENC_LATIN)
      appendUtf8(m_out, static_cast<unsigned>(c));
    else
      m_out.push_back(static_cast<char>(c));
    return SOAP_OK;
  }

  /// What follows "<": an end tag lowers the depth, a start tag raises it, anything else leaves it.
  int markup(int& depth) {
    const int c = next();
    if (c == '!')
      return declaration();
    if (c == '?')
      return skipPast("?>");
    if (c == '/' && depth-- == 0)
      return SOAP_OK;
    m_out.push_back('<');
    m_out.push_back(static_cast<char>(c));
    const bool empty = copyTag();
    if (c != '/' && !empty)
      ++depth;
    return m_soap->error;
  }

  /// Copies the rest of a tag; tells whether it ends with "/>". A failure shows in the context's error.
  bool copyTag() {
    int quote = 0;
    for (int last = 0;;) {
      const int c = next();
      if (c == EOF) {
        truncated();
        return false;
      }
      m_out.push_back(static_cast<char>(c));
      if (c == '>' && !quote)
        return last == '/';
      if (c == '"' || c == '\'')
        quote = !quote ? c : quote == c ? 0 : quote;
      last = c;
    }
  }

  /// "<!--comment-->" is left out, "<![CDATA[characters]]>" is not, of other declarations only the end is looked for.
  int declaration() {
    std::string start;
    while (start.size() < 7 && start != "--") {
      const int c = next();
      if (c == EOF)
        return truncated();
      start.push_back(static_cast<char>(c));
      if (c == '>')
        return SOAP_OK;
    }
    if (start == "[CDATA[")
      return section();
    return skipPast(start == "--" ? "-->" : ">");
  }

  int section() {
    const std::size_t begin = m_out.size();
    for (;;) {
      const int c = next();
      if (c == EOF)
        return truncated();
      character(c);
      if (c == '>' && m_out.size() - begin >= 3 && m_out.compare(m_out.size() - 3, 3, "]]>") == 0) {
        m_out.resize(m_out.size() - 3);
        return SOAP_OK;
      }
    }
  }

  int skipPast(std::string_view end) {
    std::string tail;
    while (tail != end) {
      const int c = next();
      if (c == EOF)
        return truncated();
      if (tail.size() == end.size())
        tail.erase(0, 1);
      tail.push_back(static_cast<char>(c));
    }
    return SOAP_OK;
  }

  /// What follows "&", up to ";".
  int reference() {
    std::string name;
    for (int c = next(); c != ';'; c = next()) {
      if (c == EOF)
        return truncated();
      if (name.size() == longestReference)
        return m_soap->error = SOAP_SYNTAX_ERROR;
      name.push_back(static_cast<char>(c));
    }
    return appendReference(m_out, name) ? SOAP_OK : m_soap->error = SOAP_SYNTAX_ERROR;
  }

  struct soap* m_soap;
  std::string& m_out;
};

/// Whether XML can carry the code point at all (XML 1.0 section 2.2), as itself or as a reference.
constexpr bool isXmlCharacter(unsigned c) {
  return c >= 0x20 ? c < 0xd800 || (c >= 0xe000 && c < 0xfffe) || (c >= 0x10000 && c <= lastCodePoint)
                   : c == '\t' || c == '\n' || c == '\r';
}

/// Collects output in pieces of a bounded size.
class TextOut {
public:
  explicit TextOut(struct soap* soap) : m_soap(soap) {}

  /// One code point, escaped.
  int put(unsigned c) {
    if (m_text.size() >= 1000 && flush())
      return m_soap->error;
    if (c == '&')
      m_text += "&amp;";
    else if (c == '<')
      m_text += "&lt;";
    else if (c == '>')
      m_text += "&gt;";
    else if (c == '\r')
      m_text += "&#xD;";
    else
      appendUtf8(m_text, isXmlCharacter(c) ? c : 0xfffd);
    return SOAP_OK;
  }

  int flush() {
    const int result = soap_send_raw(m_soap, m_text.data(), m_text.size());
    m_text.clear();
    return result;
  }

private:
  struct soap* m_soap;
  std::string m_text;
};

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
  if (Collector(soap, m_collected).run())
    return soap->error;
  m_text = m_collected;
  return SOAP_OK;
}

std::string_view Content::trimmed() const {
  constexpr std::string_view blanks = " \t\r\n";
  const std::size_t first = m_text.find_first_not_of(blanks);
  return first == m_text.npos ? std::string_view() : m_text.substr(first, m_text.find_last_not_of(blanks) + 1 - first);
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
  TextOut out(soap);
  for (const wchar_t c : wide)
    if (out.put(static_cast<unsigned>(c)))
      return soap->error;
  return out.flush();
}

int writeText(struct soap* soap, std::string_view utf8) {
  std::wstring wide;
  decodeUtf8(utf8, wide);
  return writeText(soap, wide);
}

} // namespace tarnwell
