// Lists of known maps, written as random servers might write them and read back. Every value has to come back exactly.
// Answer N of a seed is the same on every machine.
//   answers_test SEED COUNT
#include "tests/Random.h"
#include "tests/WireClient.h"

#include <QtCore/QDateTime>
#include <cstdio>

namespace {

enum Kind { Text, Guid, Time, Block, Bool, Float };
const struct {
  const char* name;
  Kind kind;
} members[] = {{"MapName", Text},        {"MapId", Guid},          {"Author", Text},      {"LastModified", Time},
               {"Created", Time},        {"Description", Text},    {"Thumbnail", Block},  {"IsPublished", Bool},
               {"MapContent", Block},    {"AllowInclusion", Bool}, {"Version", Float},    {"Preview", Block},
               {"OldTwlxBackUp", Block}, {"Format_IsTwlx", Bool},  {"Format_Type", Text}, {"Format_Version", Text},
               {"Format_Header", Text}};

/// A list's elements are made in their order, the operands of "+" in any order.
std::string joined(std::initializer_list<std::string> parts) {
  std::string all;
  for (const std::string& part : parts)
    all += part;
  return all;
}

/// Writes one answer, and what show() makes of the values in it.
class Server {
public:
  explicit Server(Random random)
      : m_random(random), m_prefix(m_random.of({"", "p:", "d:", "dsns:"})),
        m_soap(m_random.of({"s:", "SOAP-ENV:", "e:"})) {}

  /// The whole answer with its HTTP header.
  Reply answer() {
    const std::string start = declaration();
    std::string entries;
    for (std::size_t count = m_random.below(4); count > 0; --count)
      entries += map();
    std::string children[] = {
        tagged("DesktopInfoObjectList", entries),
        tagged("DesktopLoginResponseObject", tagged("DesktopLoginValue", spaced(m_random.of({"Success", "2"}))))};
    if (m_random.once(2))
      std::swap(children[0], children[1]);
    const std::string result = tagged("GetMapsList_NEW_DESKTOPResponse",
                                      tagged("GetMapsList_NEW_DESKTOPResult", between() + children[0] + children[1]));
    expected = "login 2" + expected + " end";
    const std::string end = m_soap + "Body></" + m_soap + "Envelope>";
    const std::string body = joined({start, "<", m_soap, "Envelope", declared(), ">", space(), header(), "<", m_soap,
                                     "Body>", space(), result, m_independent, space(), "</", end, space()});
    const int status = m_random.once(8) ? 500 : 200;
    return m_random.once(2) ? reply(status, body) : chunks(1 + m_random.below(300), status, body);
  }

  std::string expected;

private:
  std::string space() { return m_random.once(3) ? std::string(m_random.of({" ", "\n", "\r\n\t", "    "})) : ""; }
  std::string spaced(const std::string& value) { return joined({space(), value, space()}); }

  std::string declaration() {
    m_isLatin = m_random.once(4);
    const std::string encoding = m_isLatin ? "iso-8859-1" : m_random.of({"utf-8", "UTF-8", "us-ascii"});
    const std::string equals = m_random.once(3) ? " = " : "=", quote = m_random.of({"'", "\""});
    if (!m_isLatin && m_random.once(4))
      return {};
    return joined(
        {"<?xml version", equals, quote, "1.0", quote, " encoding", equals, quote, encoding, quote, "?>", space()});
  }

  std::string declared() {
    const std::string pairs[] = {
        " xmlns:" + m_soap.substr(0, m_soap.size() - 1) + "='" + message::envelopeNamespace + "'",
        m_prefix.empty() ? " xmlns='" TARNWELL_SERVICE_NAMESPACE "'"
                         : " xmlns:" + m_prefix.substr(0, m_prefix.size() - 1) + "='" TARNWELL_SERVICE_NAMESPACE "'",
        " xmlns:i=\"http://www.w3.org/2001/XMLSchema-instance\"", " xmlns:x=\"http://www.w3.org/2001/XMLSchema\"",
        " xmlns:u='urn:unknown'"};
    std::string all;
    for (std::size_t i = 0, first = m_random.below(5); i < 5; ++i)
      all += pairs[(first + i) % 5];
    return all;
  }

  std::string header() {
    if (!m_random.once(3))
      return {};
    return joined({"<", m_soap, "Header>", between(), unknown(), between(), "</", m_soap, "Header>", space()});
  }

  /// White space, comments and processing instructions, which mean nothing anywhere.
  std::string between() {
    return m_random.once(5) ? spaced(m_random.of({"<!-- a <b> \"c -->", "<?pi d='<'?>", "<!---->"})) : space();
  }

  /// An element that no type has, or content that is skipped.
  std::string unknown() {
    std::string content =
        m_random.of({"", "text", "<u:a/><u:b>1</u:b>", "<u:a><u:a/>&lt;/u:a&gt;</u:a>", "<!-- c -->"});
    if (m_random.once(3))
      content = m_random.of({"<u:a><![CDATA[line<br/>two]]></u:a>", "<u:a b='/>'/>", "<u:a b='>'>/></u:a>",
                             "<![CDATA[</u:ext>]]>", "<u:a><!-- </u:a> --></u:a>", "<u:a><?p </u:a>?></u:a>"});
    return "<u:ext" + std::string(m_random.of({"", " a='1'", " a=\"x'y\""})) + ">" + content + "</u:ext>";
  }

  std::string tagged(const std::string& name, const std::string& content, const std::string& attributes = {}) {
    const bool isOwn = m_random.once(12); // in a namespace of its own
    const std::string tag = (isOwn ? "q:" : m_prefix) + name;
    const std::string start = "<" + tag + (isOwn ? " xmlns:q=\"" TARNWELL_SERVICE_NAMESPACE "\"" : "") + attributes;
    if (content.empty() && m_random.once(2))
      return joined({between(), start, "/>", between()});
    return joined({between(), start, space(), ">", content, "</", tag, ">", between()});
  }

  std::string map() {
    std::vector<std::string> children;
    expected += " {";
    const std::size_t start = expected.size();
    for (const auto& [name, kind] : members)
      if (!m_random.once(3))
        children.push_back(member(name, kind));
    if (expected.size() > start)
      expected.erase(start, 1); // the blank before the first value
    expected += "}";
    for (std::size_t i = children.size(); i > 1; --i)
      std::swap(children[i - 1], children[m_random.below(i)]);
    std::string all;
    for (const std::string& child : children)
      all += child + (m_random.once(6) ? unknown() : "");
    return tagged("DesktopInfoClass", all);
  }

  /// An element with a value, often in a form of its own: nil, by reference, repeated with another value that is not
  /// read.
  std::string member(const std::string& name, Kind kind) {
    const bool isNil = m_random.once(12);
    if (isNil)
      return tagged(name, "", std::string(" i:nil='") + m_random.of({"true", "1"}) + "'");
    const std::string content = value(name, kind);
    const char* const types[] = {"x:string", "x:string", "x:dateTime", "x:base64Binary", "x:boolean", "x:float"};
    std::string element;
    if (m_random.once(8)) {
      const std::string id = "i" + std::to_string(++m_ids);
      m_independent += std::string("<") + types[kind] + " id='" + id + "'>" + content + "</" + types[kind] + ">";
      element = tagged(name, "", " href='#" + id + "'");
    } else {
      const char* const type = kind == Float && m_random.once(3) ? "x:double" : types[kind];
      element = tagged(name, content, m_random.once(6) ? " i:type='" + std::string(type) + "'" : "");
    }
    return m_random.once(10) ? element + tagged(name, unknown()) : element;
  }

  void expect(const std::string& name, const std::string& shown) { expected += " " + name + "=" + shown; }
  static std::string number(double value, int digits) { return QString::number(value, 'g', digits).toStdString(); }

  std::string value(const std::string& name, Kind kind) {
    switch (kind) {
    case Text:
      return text(name);
    case Guid: {
      const std::string id =
          m_random.of({"67c8770b-44f1-410a-ab9a-f9b5446f13ee", "{67C8770B-44F1-410A-AB9A-F9B5446F13EE}"});
      expect(name, id);
      return id;
    }
    case Time:
      return time(name);
    case Block:
      return block(name);
    case Bool: {
      const bool isTrue = m_random.once(2);
      if (isTrue)
        expect(name, "1");
      return spaced(isTrue ? m_random.of({"true", "1"}) : m_random.of({"false", "0"}));
    }
    case Float:
      break;
    }
    const double quarters = static_cast<double>(m_random.below(4000)) / 4 - 500;
    if (quarters != 0)
      expect(name, number(quarters, 9));
    return spaced(QString::number(quarters, m_random.of({'g', 'e', 'f', 'E'}), 9).toStdString());
  }

  std::string time(const std::string& name) {
    const qint64 seconds = static_cast<qint64>(m_random.below(4000000000));
    if (seconds != 0)
      expect(name, number(static_cast<double>(seconds), 17));
    const int minutes = static_cast<int>(m_random.below(1440)) - 720;
    const auto zone = m_random.once(2) ? Qt::UTC : Qt::OffsetFromUTC;
    return spaced(QDateTime::fromSecsSinceEpoch(seconds, zone, minutes * 60).toString(Qt::ISODate).toStdString());
  }

  std::string block(const std::string& name) {
    QByteArray bytes;
    for (std::size_t size = m_random.below(m_random.once(10) ? 5000 : 20); size > 0; --size)
      bytes.append(static_cast<char>(m_random.next()));
    expect(name, std::to_string(bytes.size()) + ":" + bytes.toStdString());
    const std::string encoded = bytes.toBase64().toStdString();
    const std::size_t line = m_random.once(3) ? 4 * (1 + m_random.below(20)) : encoded.size() + 1;
    std::string lines;
    for (std::size_t at = 0; at < encoded.size(); at += line)
      lines += encoded.substr(at, line) + (line > encoded.size() ? "" : "\r\n");
    return spaced(lines);
  }

  /// A text of random characters, each in one of its spellings.
  std::string text(const std::string& name) {
    static const char32_t characters[] = U"ab <>&\"']\n\u00e9\u00c3\u00a9\u65e5\u2028\U0001F600-!";
    std::string written, value;
    for (std::size_t size = m_random.below(m_random.once(10) ? 300 : 12); size > 0; --size) {
      const char32_t c = characters[m_random.below(std::size(characters) - 1)];
      const std::string raw = QString::fromUcs4(&c, 1).toStdString();
      value += raw;
      written += spelt(static_cast<unsigned>(c), raw);
      if (m_random.once(20))
        written += m_random.of({"<!-- x -->", "<?y z?>", "<![CDATA[]]>"});
    }
    expect(name, "'" + value + "'");
    return written;
  }

  std::string spelt(unsigned c, std::string raw) {
    if (m_isLatin && c >= 0x80)
      raw = c < 0x100 ? std::string(1, static_cast<char>(c)) : "";
    const std::string zeros(m_random.once(3) ? 20 : m_random.below(3), '0');
    const std::pair<unsigned, const char*> names[] = {
        {'<', "&lt;"}, {'>', "&gt;"}, {'&', "&amp;"}, {'"', "&quot;"}, {'\'', "&apos;"}};
    switch (raw.empty() ? 1 : m_random.below(8)) {
    case 0:
      return "<![CDATA[" + raw + "]]>";
    case 1:
      return "&#" + zeros + std::to_string(c) + ";";
    case 2:
      return "&#x" + zeros + QString::number(c, 16).toStdString() + ";";
    default:
      break;
    }
    for (const auto& [character, reference] : names)
      if (c == character && (c == '<' || c == '>' || c == '&' || m_random.once(2)))
        return reference;
    return raw;
  }

  Random m_random;
  const std::string m_prefix, m_soap;
  std::string m_independent; ///< elements behind the response that references lead to
  int m_ids = 0;
  bool m_isLatin = false;
};

} // namespace

int main(int count, char** arguments) {
  if (count != 3)
    return std::fprintf(stderr, "usage: answers_test SEED COUNT\n"), 2;
  const std::uint64_t seed = std::stoull(arguments[1]), answers = std::stoull(arguments[2]);
  std::uint64_t wrong = 0;
  for (std::uint64_t number = 0; number < answers; ++number) {
    Random random(Random(seed).next() + number);
    WireClient client;
    client.piece = random.once(2) ? 0 : 1 + random.below(40);
    Server server(random);
    client.reply = server.answer().bytes;
    const std::string read = client.list();
    if (read == server.expected || ++wrong > 3)
      continue;
    std::fprintf(stderr, "answer %llu in pieces of %zu:\n%s\nread:     %s\nexpected: %s\n\n",
                 static_cast<unsigned long long>(number), client.piece, client.reply.c_str(), read.c_str(),
                 server.expected.c_str());
  }
  std::printf("%s answers of seed %s: %llu wrong\n", arguments[2], arguments[1],
              static_cast<unsigned long long>(wrong));
  return wrong > 0 ? 1 : 0;
}
