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

constexpr bool isSurrogate(unsigned c) { return c >= 0xd800 && c < 0xe000; }

/// The number in "#128512" or "#x1F600"; 0 if it is none of a character.
unsigned characterNumber(std::string_view name) {
  if (name.empty() || name.front() != '#')
    return 0;
  const bool hexadecimal = name.size() > 1 && (name[1] == 'x' || name[1] == 'X');
  const char* const first = name.data() + (hexadecimal ? 2 : 1);
  const char* const last = name.data() + name.size();
  unsigned number = 0;
  const auto [end, failure] = std::from_chars(first, last, number, hexadecimal ? 16 : 10);
  return failure == std::errc() && end == last && number <= lastCodePoint && !isSurrogate(number) ? number : 0;
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
    const std::size_t end = text.find(';');
    if (end == text.npos || !appendReference(out, text.substr(0, end)))
      return false;
    text.remove_prefix(end + 1);
  }
}

/// Whether XML can carry the code point at all (XML 1.0 section 2.2), as itself or as a reference.
constexpr bool isXmlCharacter(unsigned c) {
  return c >= 0x20 ? !isSurrogate(c) && (c < 0xfffe || c >= 0x10000) && c <= lastCodePoint
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

/// What is kept of the content of an element.
enum class Keep {
  Text,   ///< character data, nested elements as literal markup
  Markup, ///< everything, as it stands
  Nothing,
};

/// Reads content byte by byte: the way that works for everything, across buffers. Functions return false when they
/// fail, with the context's error set.
class Collector {
public:
  Collector(struct soap* soap, std::string& out, Keep keep) : m_soap(soap), m_out(out), m_keep(keep) {}

  /// Up to the end tag of the element that is open, whose "</" is given back to the runtime.
  bool run() {
    int depth = 0;
    if (!takePeeked(depth))
      return false;
    char c = 0;
    while (depth >= 0)
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

  /// What the runtime has looked at before: the start tag of an element that is skipped, a character of a text or the
  /// beginning of a tag, and the CDATA section around it.
  bool takePeeked(int& depth) {
    depth = m_soap->peeked && *m_soap->tag && m_soap->body ? 1 : 0;
    m_soap->peeked = 0;
    m_soap->error = SOAP_OK;
    while (m_soap->ahead || m_soap->cdata) {
      const soap_wchar c = soap_get(m_soap);
      if (static_cast<int>(c) == EOF)
        return fail(SOAP_EOF);
      if (c == startTagMark)
        return markup(depth);
      if (c == endTagMark && depth-- == 0)
        return true;
      if (m_keep != Keep::Markup)
        continue;
      constexpr soap_wchar firstMark = -6;
      if (c >= firstMark && c < endTagMark)
        m_out.push_back("'\">"[c - firstMark]);
      else if (c < 0x80) // negative: it was a reference
        appendEscaped(m_out, static_cast<unsigned>(c) & 0x7fffffff);
      else
        append(static_cast<char>(c));
    }
    return true;
  }

  bool take(char c, int& depth) {
    if (c == '<')
      return markup(depth);
    if (c == '&' && m_keep == Keep::Text)
      return reference();
    append(c);
    return true;
  }

  /// Bytes of a message in ISO 8859-1 become UTF-8.
  void append(char c) {
    if (m_keep == Keep::Nothing)
      return;
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
      return section("<?", "?>");
    if (first == '/' && depth-- == 0)
      return true;
    append('<');
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

  /// "<!--comment-->", "<![CDATA[characters]]>"; of other declarations only the end is looked for.
  bool declaration() {
    std::string start = "<!";
    for (char c = 0; c != '>';) {
      if (!next(c))
        return false;
      start.push_back(c);
      if (start == "<!--")
        return section(start, "-->");
      if (start == "<![CDATA[")
        return section(start, "]]>", true);
    }
    return true;
  }

  /// Reads past `end`. A text keeps what stands before it if `isText`.
  bool section(std::string_view start, std::string_view end, bool isText = false) {
    const std::size_t begin = m_out.size();
    if (m_keep == Keep::Markup)
      m_out += start;
    std::string last(end.size(), '\0');
    for (char c = 0; next(c);) {
      append(c);
      last.erase(0, 1).push_back(c);
      if (last != end)
        continue;
      if (m_keep == Keep::Text)
        m_out.resize(isText ? m_out.size() - end.size() : begin);
      return true;
    }
    return false;
  }

  /// What follows "&", up to ";".
  bool reference() {
    std::string name;
    for (char c = 0; c != '<'; name.push_back(c)) {
      if (!next(c))
        return false;
      if (c == ';')
        return appendReference(m_out, name) || fail(SOAP_SYNTAX_ERROR);
    }
    return fail(SOAP_SYNTAX_ERROR);
  }

  struct soap* m_soap;
  std::string& m_out;
  const Keep m_keep;
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
  constexpr unsigned smallest[] = {0, 0x80, 0x800, 0x10000};
  if (c < smallest[more] || isSurrogate(c) || c > lastCodePoint)
    return first;
  p += more;
  return c;
}

/// The start tag that was peeked at. The values of its attributes are in ISO 8859-1, as the runtime keeps them.
std::string startTag(const struct soap* soap) {
  std::string text = '<' + std::string(soap->tag);
  for (const struct soap_attribute* attribute = soap->attributes; attribute; attribute = attribute->next) {
    text += ' ' + std::string(attribute->name) + "=\"";
    for (const char* c = attribute->value; c && *c; ++c)
      if (*c == '"')
        text += "&quot;";
      else
        appendEscaped(text, static_cast<unsigned char>(*c));
    text += '"';
  }
  return text + (soap->body ? ">" : "/>");
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
  if (!Collector(soap, m_collected, Keep::Text).run())
    return soap->error;
  m_text = m_collected;
  return SOAP_OK;
}

int skipElement(struct soap* soap, std::string* markup) {
  const std::string tag = soap->tag;
  soap->error = SOAP_OK;
  if (!tag.empty()) {
    soap->peeked = 0;
    if (markup)
      *markup = startTag(soap);
    if (!soap->body)
      return SOAP_OK;
    ++soap->level;
  }
  std::string nothing;
  if (!Collector(soap, markup ? *markup : nothing, markup ? Keep::Markup : Keep::Nothing).run())
    return soap->error;
  if (tag.empty())
    return SOAP_OK;
  if (markup)
    *markup += "</" + tag + '>';
  return soap_element_end_in(soap, nullptr);
}

int skipToEnd(struct soap* soap, const char* tag) {
  std::string nothing;
  if (!(soap->mode & SOAP_XML_STRICT) && !Collector(soap, nothing, Keep::Nothing).run())
    return soap->error;
  return soap_element_end_in(soap, tag);
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
