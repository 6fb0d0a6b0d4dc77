// The peer `handwritten`: what a user without a SOAP library writes for these four operations, with libcurl for HTTP
// (one handle, so that it may keep the connection), pugixml for the answer, parsed in place, and Qt's base64. It finds
// elements by their local names and checks little.
#include "Deployment.h"
#include "bench/Harness.h"

#include <cstdlib>
#include <cstring>
#include <curl/curl.h>
#include <pugixml.hpp>
#include <string>

namespace {

const char* localName(const char* name) {
  const char* const colon = std::strchr(name, ':');
  return colon ? colon + 1 : name;
}

pugi::xml_node child(pugi::xml_node parent, const char* name) {
  for (const pugi::xml_node node : parent.children())
    if (std::strcmp(localName(node.name()), name) == 0)
      return node;
  return {};
}

QByteArray toBytes(const char* text) {
  return QByteArray::fromBase64(QByteArray::fromRawData(text, static_cast<int>(std::strlen(text))));
}

bool toFlag(const char* text) { return std::strcmp(text, "true") == 0; }

struct Field {
  const char* name;
  void (*set)(MapInfo& map, const char* text);
};

constexpr Field fields[] = {
    {"MapName", [](MapInfo& map, const char* text) { map.setMapName(QString::fromUtf8(text)); }},
    {"MapId", [](MapInfo& map, const char* text) { map.setMapID(QUuid(QLatin1String(text))); }},
    {"Author", [](MapInfo& map, const char* text) { map.setMapAuthor(QString::fromUtf8(text)); }},
    {"LastModified",
     [](MapInfo& map, const char* text) {
       map.setMapModificationDate(QDateTime::fromString(QLatin1String(text), Qt::ISODate));
     }},
    {"Description", [](MapInfo& map, const char* text) { map.setMapDescription(QString::fromUtf8(text)); }},
    {"Thumbnail", [](MapInfo& map, const char* text) { map.setMapThumbnail(toBytes(text)); }},
    {"IsPublished", [](MapInfo& map, const char* text) { map.setMapPublished(toFlag(text)); }},
    {"MapContent", [](MapInfo& map, const char* text) { map.setMapContent(toBytes(text)); }},
    {"Version", [](MapInfo& map, const char* text) { map.setVersion(std::strtof(text, nullptr)); }},
    {"Format_IsTwlx", [](MapInfo& map, const char* text) { map.setIsTWLX(toFlag(text)); }},
};

MapInfo toMap(pugi::xml_node description) {
  MapInfo map;
  for (const pugi::xml_node node : description.children())
    for (const Field& field : fields)
      if (std::strcmp(localName(node.name()), field.name) == 0) {
        field.set(map, node.child_value());
        break;
      }
  return map;
}

std::string element(const char* name, const std::string& content) {
  return std::string("<") + name + ">" + content + "</" + name + ">";
}

std::string element(const char* name, const QString& text) { return element(name, text.toHtmlEscaped().toStdString()); }

std::string element(const char* name, const QByteArray& bytes) { return element(name, bytes.toBase64().toStdString()); }

std::string describe(const MapInfo& map) {
  return element("DesktopInfo",
                 element("MapName", map.mapName()) + element("MapId", map.mapID().toString()) +
                     element("Author", map.mapAuthor()) +
                     element("LastModified", map.mapModificationDate().toString(Qt::ISODate)) +
                     "<Created>1970-01-01T00:00:00Z</Created>" + element("Description", map.mapDescription()) +
                     element("Thumbnail", map.mapThumbnail()) +
                     element("IsPublished", std::string(map.mapPublished() ? "true" : "false")) +
                     (map.mapContent().isEmpty() ? "" : element("MapContent", map.mapContent())) +
                     "<AllowInclusion>false</AllowInclusion>" + element("Version", QString::number(map.version())) +
                     "<Format_IsTwlx>false</Format_IsTwlx>");
}

class HandwrittenPeer : public bench::Peer {
public:
  explicit HandwrittenPeer(const char* endpoint) : m_curl(curl_easy_init()) {
    const auto append = +[](char* bytes, std::size_t size, std::size_t count, void* answer) {
      static_cast<std::string*>(answer)->append(bytes, size * count);
      return size * count;
    };
    curl_easy_setopt(m_curl, CURLOPT_URL, endpoint);
    curl_easy_setopt(m_curl, CURLOPT_WRITEFUNCTION, append);
    curl_easy_setopt(m_curl, CURLOPT_WRITEDATA, &m_answer);
    curl_easy_setopt(m_curl, CURLOPT_BUFFERSIZE, 256L << 10);
  }
  HandwrittenPeer(const HandwrittenPeer&) = delete;
  HandwrittenPeer& operator=(const HandwrittenPeer&) = delete;
  ~HandwrittenPeer() override { curl_easy_cleanup(m_curl); }

  int login(const QString&, const QString&) override { return succeeded(call("Login", "")) ? 0 : 1; }

  int list(QList<MapInfo>& maps) override {
    const pugi::xml_node result =
        call("GetMapsList_NEW_DESKTOP", "<IsPublished>true</IsPublished><behaviour></behaviour>");
    if (!succeeded(child(result, "DesktopLoginResponseObject")))
      return 1;
    for (const pugi::xml_node description : child(result, "DesktopInfoObjectList").children())
      maps.append(toMap(description));
    return 0;
  }

  int get(MapInfo& map) override {
    const pugi::xml_node result = call("GetMapContent_NEW_DESKTOP", describe(map) + "<behaviour></behaviour>");
    if (!succeeded(child(result, "DesktopLoginResponseObject")))
      return 1;
    const MapInfo got = toMap(child(result, "DesktopInfo"));
    bench::setDownloaded(map, got);
    return 0;
  }

  int save(const QString& path, MapInfo& map, const QByteArray& thumbnail) override {
    if (!bench::setUploaded(map, path, thumbnail))
      return 1;
    const pugi::xml_node result =
        call("SaveMap_NEW_DESKTOP", describe(map) + "<IsForced>true</IsForced><behaviour></behaviour>");
    if (!succeeded(child(result, "DesktopLoginResponseObject")))
      return 1;
    bench::setSaved(map, toMap(child(result, "DesktopInfoClass")));
    return 0;
  }

private:
  static bool succeeded(pugi::xml_node login) {
    return std::strcmp(child(login, "DesktopLoginValue").child_value(), "Success") == 0;
  }

  /// The result element of the answer; null when the call failed.
  pugi::xml_node call(const std::string& operation, const std::string& arguments) {
    const std::string body =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?><s:Envelope xmlns:s=\"http://www.w3.org/2003/05/soap-envelope\">"
        "<s:Body><" +
        operation + " xmlns=\"" TARNWELL_SERVICE_NAMESPACE "\"><username>anna</username><pass>secret</pass>" +
        arguments + "</" + operation + "></s:Body></s:Envelope>";
    const std::string type =
        "Content-Type: application/soap+xml; charset=utf-8; action=\"" TARNWELL_SERVICE_NAMESPACE + operation + "\"";
    curl_slist* const headers = curl_slist_append(curl_slist_append(nullptr, type.c_str()), "Expect:");
    curl_easy_setopt(m_curl, CURLOPT_HTTPHEADER, headers);
    curl_easy_setopt(m_curl, CURLOPT_POSTFIELDS, body.data());
    curl_easy_setopt(m_curl, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
    m_answer.clear();
    const CURLcode code = curl_easy_perform(m_curl);
    curl_slist_free_all(headers);
    if (code != CURLE_OK || !m_document.load_buffer_inplace(m_answer.data(), m_answer.size()))
      return {};
    const pugi::xml_node response =
        child(child(child(m_document, "Envelope"), "Body"), (operation + "Response").c_str());
    return child(response, (operation + "Result").c_str());
  }

  CURL* m_curl;
  std::string m_answer;
  pugi::xml_document m_document;
};

std::unique_ptr<bench::Peer> connect(const char* endpoint) { return std::make_unique<HandwrittenPeer>(endpoint); }

} // namespace

int main(int argc, char** argv) { return bench::run(argc, argv, connect); }
