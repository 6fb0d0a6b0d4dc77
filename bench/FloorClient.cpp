// The peer `limit`: does the whole job, from Qt values to Qt values, without any SOAP or XML library. It trusts the
// reply: it does not check namespaces or form, follows no references, ignores xsi:type, and knows the five predefined
// entities only. It computes the request's length, encodes and decodes base64 in the connection's buffer, and scans the
// reply once, tag by tag.
#include "Deployment.h"
#include "bench/FloorConnection.h"
#include "bench/Harness.h"
#include "protocol/binding/Base64.h"

#include <cstdlib>
#include <cstring>
#include <string_view>

namespace {

using bench::FloorConnection;

constexpr char envelopeStart[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<SOAP-ENV:Envelope xmlns:SOAP-ENV=\"http://www.w3.org/2003/05/soap-envelope\""
    " xmlns:SOAP-ENC=\"http://www.w3.org/2003/05/soap-encoding\""
    " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\""
    " xmlns:dsns2=\"" TARNWELL_TYPES_NAMESPACE "\" xmlns:dsns3=\"" TARNWELL_SERVICE_NAMESPACE "DesktopServiceSoap\""
    " xmlns:dsns=\"" TARNWELL_SERVICE_NAMESPACE "\" xmlns:dsns4=\"" TARNWELL_SERVICE_NAMESPACE
    "DesktopServiceSoap12\"><SOAP-ENV:Body>";
constexpr char envelopeEnd[] = "</SOAP-ENV:Body></SOAP-ENV:Envelope>";
constexpr char credentials[] = "<dsns:username>anna</dsns:username><dsns:pass>secret</dsns:pass>";

std::string element(const char* name, const std::string& text) {
  return std::string("<dsns:") + name + ">" + text + "</dsns:" + name + ">";
}

std::string element(const char* name, const QString& text) { return element(name, text.toHtmlEscaped().toStdString()); }

/// A request between the tags of its element: texts, with a map's blocks between them.
struct Request {
  std::string start = credentials;
  QByteArray thumbnail;
  std::string middle;
  QByteArray content;
  std::string end;
};

void describe(Request& request, const MapInfo& map) {
  request.start += "<dsns:DesktopInfo>" + element("MapName", map.mapName()) + element("MapId", map.mapID().toString()) +
                   element("Author", map.mapAuthor()) +
                   element("LastModified", map.mapModificationDate().toString(Qt::ISODate)) +
                   "<dsns:Created>1970-01-01T00:00:00Z</dsns:Created>" + element("Description", map.mapDescription()) +
                   "<dsns:Thumbnail>";
  request.thumbnail = map.mapThumbnail();
  request.content = map.mapContent();
  request.middle = "</dsns:Thumbnail>" + element("IsPublished", std::string(map.mapPublished() ? "true" : "false")) +
                   (map.mapContent().isEmpty() ? "" : "<dsns:MapContent>");
  request.end = std::string(map.mapContent().isEmpty() ? "" : "</dsns:MapContent>") +
                "<dsns:AllowInclusion>false</dsns:AllowInclusion>" +
                element("Version", QString::number(map.version())) +
                "<dsns:Format_IsTwlx>false</dsns:Format_IsTwlx></dsns:DesktopInfo>";
}

std::size_t base64Length(const QByteArray& bytes) {
  return tarnwell::base64::encodedSize(static_cast<std::size_t>(bytes.size()));
}

bool post(FloorConnection& connection, const std::string& host, const std::string& path, const std::string& name,
          const Request& request) {
  const std::string start = envelopeStart + ("<dsns:" + name + ">") + request.start;
  const std::string end = request.end + "</dsns:" + name + ">" + envelopeEnd;
  const std::size_t length = start.size() + base64Length(request.thumbnail) + request.middle.size() +
                             base64Length(request.content) + end.size();
  const std::string action = "\"" TARNWELL_SERVICE_NAMESPACE + name + "\"";
  connection.put("POST " + path + " HTTP/1.1\r\nHost: " + host +
                 "\r\nUser-Agent: limit\r\nContent-Type: application/soap+xml; charset=utf-8; action=" + action +
                 "\r\nContent-Length: " + std::to_string(length) + "\r\nConnection: close\r\nSOAPAction: " + action +
                 "\r\n\r\n");
  connection.put(start);
  connection.putBase64(request.thumbnail);
  connection.put(request.middle);
  connection.putBase64(request.content);
  connection.put(end);
  return connection.flush();
}

QString toText(std::string_view text) {
  QString result = QString::fromUtf8(text.data(), static_cast<int>(text.size()));
  if (text.find('&') != std::string_view::npos)
    result.replace("&lt;", "<")
        .replace("&gt;", ">")
        .replace("&quot;", "\"")
        .replace("&apos;", "'")
        .replace("&amp;", "&");
  return result;
}

int number(std::string_view digits) {
  int value = 0;
  for (const char digit : digits)
    value = value * 10 + digit - '0';
  return value;
}

/// "2012-03-04T05:06:07Z"
QDateTime toDate(std::string_view text) {
  if (text.size() < 19)
    return {};
  return QDateTime(QDate(number(text.substr(0, 4)), number(text.substr(5, 2)), number(text.substr(8, 2))),
                   QTime(number(text.substr(11, 2)), number(text.substr(14, 2)), number(text.substr(17, 2))), Qt::UTC);
}

QUuid toId(std::string_view text) { return QUuid(QLatin1String(text.data(), static_cast<int>(text.size()))); }

/// Appends the bytes of `text` behind the first `used` bytes of `bytes`. The caller has made room.
void decode(std::string_view text, QByteArray& bytes, int& used) {
  auto* to = reinterpret_cast<unsigned char*>(bytes.data()) + used;
  const std::size_t taken = tarnwell::base64::decodeGroups(text.data(), text.size(), to);
  const std::string_view rest = text.substr(taken);
  const QByteArray last = QByteArray::fromBase64(QByteArray::fromRawData(rest.data(), static_cast<int>(rest.size())));
  used += static_cast<int>(taken / 4 * 3);
  memcpy(bytes.data() + used, last.constData(), static_cast<std::size_t>(last.size()));
  used += last.size();
}

QByteArray room(long long characters) {
  return QByteArray(static_cast<int>(characters / 4 * 3 + 16), Qt::Uninitialized);
}

QByteArray toBytes(std::string_view text) {
  QByteArray bytes = room(static_cast<long long>(text.size()));
  int used = 0;
  decode(text, bytes, used);
  bytes.resize(used);
  return bytes;
}

/// The decoded bytes of the base64 text up to the next tag, decoded as they arrive; at most `limit` characters.
QByteArray receiveBytes(FloorConnection& connection, long long limit) {
  QByteArray bytes = room(limit);
  int used = 0;
  do {
    const auto unread = static_cast<std::size_t>(connection.end - connection.read);
    const auto* tag = static_cast<const char*>(memchr(connection.read, '<', unread));
    const std::size_t size = tag ? static_cast<std::size_t>(tag - connection.read) : unread & ~std::size_t{3};
    decode({connection.read, size}, bytes, used);
    connection.read += size;
    if (tag)
      break;
  } while (connection.receive());
  bytes.resize(used);
  return bytes;
}

/// The values that are read from a reply. `map` is the description that is being read; at its end it is appended to the
/// list.
struct Reply {
  bool loggedIn = false;
  bool accessible = false;
  bool described = false;
  MapInfo map;
};

struct Field {
  std::string_view name;
  void (*set)(Reply& reply, std::string_view text);
};

constexpr Field fields[] = {
    {"MapName", [](Reply& reply, std::string_view text) { reply.map.setMapName(toText(text)); }},
    {"MapId", [](Reply& reply, std::string_view text) { reply.map.setMapID(toId(text)); }},
    {"Author", [](Reply& reply, std::string_view text) { reply.map.setMapAuthor(toText(text)); }},
    {"LastModified", [](Reply& reply, std::string_view text) { reply.map.setMapModificationDate(toDate(text)); }},
    {"Description", [](Reply& reply, std::string_view text) { reply.map.setMapDescription(toText(text)); }},
    {"Thumbnail", [](Reply& reply, std::string_view text) { reply.map.setMapThumbnail(toBytes(text)); }},
    {"IsPublished", [](Reply& reply, std::string_view text) { reply.map.setMapPublished(text == "true"); }},
    {"Version", [](Reply& reply, std::string_view text) { reply.map.setVersion(strtof(text.data(), nullptr)); }},
    {"Format_IsTwlx", [](Reply& reply, std::string_view text) { reply.map.setIsTWLX(text == "true"); }},
    {"DesktopLoginValue", [](Reply& reply, std::string_view text) { reply.loggedIn = text == "Success"; }},
    {"DesktopMapAccess", [](Reply& reply, std::string_view text) { reply.accessible = text == "Success"; }},
};

std::string_view localName(std::string_view tag) {
  std::size_t begin = 0;
  std::size_t end = 0;
  for (; end < tag.size() && tag[end] != ' '; ++end) {
    if (tag[end] == ':')
      begin = end + 1;
  }
  return tag.substr(begin, end - begin);
}

const Field* findField(std::string_view name) {
  for (const Field& field : fields) {
    if (field.name == name)
      return &field;
  }
  return nullptr;
}

/// Stores the content of element `name`, up to its first tag. False when the reply ends before.
bool takeContent(FloorConnection& connection, std::string_view name, long long length, Reply& reply) {
  if (name == "MapContent") {
    reply.map.setMapContent(receiveBytes(connection, length));
    return true;
  }
  if (name == "DesktopInfoClass" || name == "DesktopInfo")
    reply.described = true;
  const Field* field = findField(name);
  if (!field)
    return true;
  const char* end = connection.find('<');
  if (!end)
    return false;
  field->set(reply, {connection.read, static_cast<std::size_t>(end - connection.read)});
  connection.read = end;
  return true;
}

/// Reads the HTTP header. Returns the length of the body, below 0 when the reply has none.
long long receiveHeader(FloorConnection& connection) {
  long long length = -1;
  while (const char* end = connection.find('\n')) {
    const bool last = end - connection.read <= 1;
    if (strncasecmp(connection.read, "Content-Length:", 15) == 0)
      length = atoll(connection.read + 15);
    connection.read = end + 1;
    if (last)
      return length;
  }
  return -1;
}

/// Reads a reply, appending each description of a list to `list`. False when it ends too early.
bool receiveReply(FloorConnection& connection, Reply& reply, QList<MapInfo>* list) {
  const long long length = receiveHeader(connection);
  const long long end = connection.position() + length;
  while (connection.position() < end) {
    const char* open = connection.find('<');
    if (!open)
      return false;
    connection.read = open + 1;
    const char* close = connection.find('>');
    if (!close)
      return false;
    const std::string_view tag(connection.read, static_cast<std::size_t>(close - connection.read));
    connection.read = close + 1;
    if (list && tag == "/DesktopInfoClass") {
      list->append(reply.map);
      reply.map = MapInfo();
    }
    const bool start = tag.front() != '/' && tag.back() != '/';
    if (start && !takeContent(connection, localName(tag), length, reply))
      return false;
  }
  return length >= 0;
}

class FloorPeer : public bench::Peer {
public:
  explicit FloorPeer(const char* endpoint) : m_buffer(new char[bench::bufferSize + 64]) {
    char host[64] = "";
    char path[1024] = "";
    if (sscanf(endpoint, "http://%63[0-9.]:%d%1023s", host, &m_port, path) != 3)
      fprintf(stderr, "endpoint: http://ADDRESS:PORT/PATH\n");
    m_host = host;
    m_path = path;
  }

  int login(const QString&, const QString&) override {
    Reply reply;
    return exchange("Login", Request(), reply, nullptr) ? 0 : 1;
  }

  int list(QList<MapInfo>& maps) override {
    Request request;
    request.end = "<dsns:IsPublished>true</dsns:IsPublished><dsns:behaviour></dsns:behaviour>";
    Reply reply;
    return exchange("GetMapsList_NEW_DESKTOP", request, reply, &maps) ? 0 : 1;
  }

  int get(MapInfo& map) override {
    Request request;
    describe(request, map);
    request.end += "<dsns:behaviour></dsns:behaviour>";
    Reply reply;
    if (!exchange("GetMapContent_NEW_DESKTOP", request, reply, nullptr) || !reply.accessible || !reply.described)
      return 1;
    bench::setDownloaded(map, reply.map);
    return 0;
  }

  int save(const QString& path, MapInfo& map, const QByteArray& thumbnail) override {
    if (!bench::setUploaded(map, path, thumbnail))
      return 1;
    Request request;
    describe(request, map);
    request.end += "<dsns:IsForced>true</dsns:IsForced><dsns:behaviour></dsns:behaviour>";
    Reply reply;
    if (!exchange("SaveMap_NEW_DESKTOP", request, reply, nullptr) || !reply.accessible || !reply.described)
      return 1;
    bench::setSaved(map, reply.map);
    return 0;
  }

private:
  bool exchange(const char* operation, const Request& request, Reply& reply, QList<MapInfo>* list) {
    FloorConnection connection(m_host, m_port, m_buffer.get());
    return post(connection, m_host + ":" + std::to_string(m_port), m_path, operation, request) &&
           receiveReply(connection, reply, list) && reply.loggedIn;
  }

  std::unique_ptr<char[]> m_buffer;
  std::string m_host;
  std::string m_path;
  int m_port = 0;
};

std::unique_ptr<bench::Peer> connect(const char* endpoint) { return std::make_unique<FloorPeer>(endpoint); }

} // namespace

int main(int argc, char** argv) { return bench::run(argc, argv, connect); }
