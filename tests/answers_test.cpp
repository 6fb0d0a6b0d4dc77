// Lists of known maps, written as random servers might write them and read back. Every value has to come back exactly,
// and a host gets the same, damaged answers included, whether the list is taken while it arrives or kept until the end.
// Answer N of a seed is the same on every machine.
//   answers_test SEED COUNT
#include "protocol/binding/Receiver.h"
#include "tests/HostOperations.h"
#include "tests/Random.h"
#include "tests/WireClient.h"

#include <QtCore/QDateTime>
#include <cstdio>
#include <sstream>

namespace {

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
        m_soap(m_random.of({"s:", "SOAP-ENV:", "e:"})), m_refers(m_random.once(2)) {}

  /// The whole answer of a listing.
  std::string answer(const std::string& operation) {
    std::ostringstream all; // what is random is made in the order in which it stands here
    all << declaration() << "<" << m_soap << "Envelope" << declared(m_soap, message::envelopeNamespace)
        << declared(m_prefix, TARNWELL_SERVICE_NAMESPACE) << " xmlns:u='urn:unknown'"
        << declared("i:", "http://www.w3.org/2001/XMLSchema-instance")
        << declared("x:", "http://www.w3.org/2001/XMLSchema") << ">" << space() << header() << "<" << m_soap << "Body>"
        << space() << tagged(operation + "Response", tagged(operation + "Result", result())) << m_independent
        << (m_random.once(6) ? "t]]<![CDATA[]]]]>" + unknown() : "") << space() << "</" << m_soap << "Body></" << m_soap
        << "Envelope>" << space();
    return all.str();
  }

  std::string expected;

private:
  std::string space() { return m_random.once(3) ? std::string(m_random.of({" ", "\n", "\r\n\t", "    "})) : ""; }
  std::string spaced(const std::string& value) { return joined({space(), value, space()}); }

  std::string result() {
    std::string entries, login;
    for (std::size_t count = m_random.below(4); count > 0; --count)
      entries += entry();
    const std::string value = m_random.of({"Success", "2", "Success", "2", "0", "-"});
    if (value != "-")
      login = tagged("DesktopLoginResponseObject", tagged("DesktopLoginValue", spaced(value)));
    expected = (value == "-" ? "no login" : value == "0" ? "login 0" : "login 2") + expected + " end";
    const std::string before = between(), list = tagged("DesktopInfoObjectList", entries);
    return before + (m_random.once(2) ? login + list : list + login);
  }

  std::string declaration() {
    m_isLatin = m_random.once(4);
    const std::string encoding = m_isLatin ? "iso-8859-1" : m_random.of({"utf-8", "UTF-8", "us-ascii"});
    const std::string equals = m_random.once(3) ? " = " : "=", quote = m_random.of({"'", "\""});
    if (!m_isLatin && m_random.once(4))
      return {};
    return joined({m_random.of({"", "", "\r\n \t", "\xEF\xBB\xBF"}), "<?xml version", equals, quote, "1.0", quote,
                   " encoding", equals, quote, encoding, quote, "?>", space()});
  }

  /// The declaration of the prefix of a name, or of the default namespace.
  static std::string declared(const std::string& prefix, const std::string& uri) {
    return " xmlns" + (prefix.empty() ? "" : ':' + prefix.substr(0, prefix.size() - 1)) + "='" + uri + '\'';
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

  /// An element that no type has, with content that is skipped.
  std::string unknown() {
    const std::string name = m_random.of({"u:ext", "u:MapName", "x:Author"}), own = m_prefix + "Author";
    const std::string content = m_random.of<std::string>(
        {"", "text", "<u:a/><u:b>1</u:b>", "<u:a><u:a/>&lt;/u:a&gt;</u:a>", "<!-- c -->", "&nbsp;<u:ext></u:ext>",
         "<u:a><![CDATA[line<br/>two]]></u:a>", "<u:a b='/>'/>", "<u:a b='>'>/></u:a>", "<![CDATA[</u:ext>]]>",
         "<u:a><!-- </u:a> --></u:a>", "<u:a><?p </u:a>?></u:a>", "]]<![CDATA[]]]]><![CDATA[>/>]]>", "<?p a?b > <?>",
         "a/>b", "<" + own + ">no</" + own + ">"});
    const std::string attributes = m_random.of<std::string>(
        {"", "", " a='1'", " a=\"x'y\"", " a=\"/>\" b='\"/>'", " " + m_soap + "mustUnderstand='false'"});
    return joined({"<", name, attributes, ">", content, "</", name, ">"});
  }

  std::string tagged(const std::string& name, const std::string& content, const std::string& attributes = {}) {
    const bool isOwn = m_random.once(12); // in a namespace of its own
    const std::string tag = (isOwn ? "q:" : m_prefix) + name;
    const std::string start = "<" + tag + (isOwn ? " xmlns:q=\"" TARNWELL_SERVICE_NAMESPACE "\"" : "") + attributes;
    if (content.empty() && m_random.once(2))
      return joined({between(), start, "/>", between()});
    return joined({between(), start, space(), ">", content, "</", tag, ">", between()});
  }

  /// A map, often by reference or followed by what no list has.
  std::string entry() {
    const std::string own = "DesktopInfoClass";
    if (m_random.once(12))
      return expected += " null", tagged(own, "", " i:nil='1'");
    const std::size_t start = expected.size();
    const std::string content = map();
    if (!m_refers || m_random.once(2))
      return tagged(own, content) + (m_random.once(4) ? unknown() : "");
    const std::string id = "m" + std::to_string(++m_ids), target = tagged(own, content, " id='" + id + "'");
    const std::string reference = tagged(own, "", " href='#" + id + "'");
    if (m_random.once(3)) {
      m_independent = target + m_independent; // before what its members refer to
      return reference;
    }
    expected += expected.substr(start);
    return m_random.once(2) ? reference + target : target + reference;
  }

  /// The content of a map.
  std::string map() {
    std::vector<std::string> children;
    expected += " {";
    const std::size_t start = expected.size();
    for (const tarnwell::Row& row : dsns__DesktopInfoClass::rows())
      if (!m_random.once(3))
        children.push_back(member(row.local, row.type));
    if (expected.size() > start)
      expected.erase(start, 1); // the blank before the first value
    expected += "}";
    for (std::size_t i = children.size(); i > 1; --i)
      std::swap(children[i - 1], children[m_random.below(i)]);
    std::string all;
    for (const std::string& child : children)
      all += child + (m_random.once(6) ? unknown() : "");
    return all + (m_random.once(8) ? "t]]<![CDATA[]]]]>" + unknown() : "");
  }

  /// An element with a value, often in a form of its own: nil, by reference, repeated with another value that is not
  /// read.
  std::string member(const std::string& name, int kind) {
    if (m_random.once(12))
      return tagged(name, m_random.once(3) ? unknown() : "", m_random.of({" i:nil='true'", " i:nil='1'"}));
    const std::string content = value(name, kind);
    const std::string own = kind == SOAP_TYPE_dsns2__guid ? "string" : tarnwell::localPart(tarnwell::typeOf(kind).name);
    std::string element;
    if (m_refers && m_random.once(8)) {
      const std::string id = "i" + std::to_string(++m_ids);
      m_independent += "<x:" + own + " id='" + id + "'>" + content + "</x:" + own + ">";
      element = tagged(name, "", " href='#" + id + "'");
    } else {
      const std::string type = own == "float" && m_random.once(3) ? "double" : own;
      element = tagged(name, content,
                       m_random.of<std::string>(
                           {"", "", "", " i:nil='false'", " a='b' xml:lang=\"en\"", " i:type='x:" + type + "'"}));
    }
    return m_random.once(10) ? element + tagged(name, unknown()) : element;
  }

  std::string expect(const std::string& name, const std::string& shown) {
    expected += " " + name + "=" + shown;
    return shown;
  }

  std::string value(const std::string& name, int kind) {
    if (kind == SOAP_TYPE_xsd__string)
      return text(name);
    if (kind == SOAP_TYPE_xsd__dateTime)
      return time(name);
    if (kind == SOAP_TYPE_xsd__base64Binary)
      return block(name);
    if (kind == SOAP_TYPE_dsns2__guid)
      return expect(name,
                    m_random.of({"67c8770b-44f1-410a-ab9a-f9b5446f13ee", "{67C8770B-44F1-410A-AB9A-F9B5446F13EE}"}));
    if (kind == SOAP_TYPE_xsd__boolean)
      return spaced(m_random.once(2) ? expect(name, "1") == "1" ? m_random.of({"true", "1"}) : ""
                                     : m_random.of({"false", "0"}));
    const double odd = static_cast<double>(m_random.below(4000)) / 4 - 500.125;
    expect(name, QString::number(odd, 'g', 9).toStdString());
    return spaced(QString::number(odd, m_random.of({'g', 'e', 'f', 'E'}), 9).toStdString());
  }

  std::string time(const std::string& name) {
    const qint64 seconds = static_cast<qint64>(1 + m_random.below(4000000000));
    expect(name, std::to_string(seconds));
    const int offset = m_random.once(2) ? 0 : (static_cast<int>(m_random.below(1440)) - 720) * 60;
    const QDateTime date = QDateTime::fromSecsSinceEpoch(seconds).toOffsetFromUtc(offset);
    return spaced(date.toString(Qt::ISODate).toStdString());
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
    const std::string escaped = c < 0x80 ? QString(QChar(c)).toHtmlEscaped().toStdString() : raw;
    switch (raw.empty() ? 1 : m_random.below(8)) {
    case 0:
      return "<![CDATA[" + raw + "]]>";
    case 1:
      return "&#" + zeros + std::to_string(c) + ";";
    case 2:
      return "&#x" + zeros + QString::number(c, 16).toStdString() + ";";
    default:
      return c == '<' || c == '>' || c == '&' || m_random.once(2) ? escaped : raw;
    }
  }

  Random m_random;
  const std::string m_prefix, m_soap;
  std::string m_independent; ///< elements behind the response that references lead to
  int m_ids = 0;
  const bool m_refers; ///< to elements elsewhere in the answer
  bool m_isLatin = false;
};

/// Result and values of a host that gets `answer` in pieces.
std::string outcome(const HostOperation& operation, const std::string& answer, std::size_t piece, bool takes) {
  Host host("http://service.example/");
  Wire wire(host.context());
  wire.reply = reply(200, answer).bytes;
  wire.piece = piece;
  if (!takes)
    tarnwell::setReceiver(host.context(), nullptr);
  const int result = operation.call(host);
  return std::to_string(result) + host.seen();
}

/// Damages every other answer. An id of the list makes every host read everything first.
bool isTheSameAsItArrives(const HostOperation& operation, const std::string& whole, std::size_t piece, Random& random) {
  std::string answer = whole;
  for (std::size_t count = random.below(2) * random.below(4); count > 0 && !answer.empty(); --count)
    if (const std::size_t at = random.below(answer.size()); random.once(4))
      answer.resize(at);
    else
      answer[at] = "<>/'&\0 x"[random.below(8)];
  std::string withId = answer;
  const std::size_t at = whole.find("DesktopInfoObjectList") + 21, end = whole.find('>', at) + 1;
  if (answer.compare(0, end, whole, 0, end) == 0)
    withId.insert(at, " id='l'");
  const std::string taken = outcome(operation, answer, piece, true);
  return taken == outcome(operation, answer, piece, false) && taken == outcome(operation, withId, piece, true);
}

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
    const HostOperation& operation = hostOperations()[1 + random.below(2)];
    Server server(random);
    const std::string answer = server.answer(operation.name);
    const int status = random.once(8) ? 500 : 200;
    client.reply = (random.once(2) ? reply(status, answer) : chunks(1 + random.below(300), status, answer)).bytes;
    const std::string read = client.ask(operation.name);
    const bool isSame = isTheSameAsItArrives(operation, answer, client.piece, random);
    if ((read == server.expected && isSame) || ++wrong > 3)
      continue;
    std::fprintf(stderr, "answer %llu in pieces of %zu:\n%s\nread:     %s\nexpected: %s\n%s\n\n",
                 static_cast<unsigned long long>(number), client.piece, client.reply.c_str(), read.c_str(),
                 server.expected.c_str(), isSame ? "" : "a host gets something else while it arrives");
  }
  std::printf("%s answers of seed %s: %llu wrong\n", arguments[2], arguments[1],
              static_cast<unsigned long long>(wrong));
  return wrong > 0 ? 1 : 0;
}
