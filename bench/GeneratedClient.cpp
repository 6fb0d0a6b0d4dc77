// The peer `generated`: makes the same conversions and calls as the plug-in, by the binding that the toolkit's
// generators make from the service's WSDL.
#include "bench/Harness.h"

#include <cstring>
#include <string>

#include <DesktopServiceSoap12.nsmap>
#include <soapH.h>

namespace {

std::wstring toWide(const QString& text) {
  std::wstring wide(static_cast<std::size_t>(text.size()), L'\0');
  wide.resize(static_cast<std::size_t>(text.toWCharArray(wide.data())));
  return wide;
}

QString fromWide(const std::wstring* text) { return text ? QString::fromStdWString(*text) : QString(); }

QByteArray fromBlock(const xsd__base64Binary* block) {
  return block ? QByteArray(reinterpret_cast<const char*>(block->__ptr), block->__size) : QByteArray();
}

bool succeeded(const dsns__DesktopLoginResponseClass* login) {
  return login && login->DesktopLoginValue == dsns__DesktopLoginEnumerators__Success;
}

template <class Result> bool accessible(const Result* result) {
  return result && succeeded(result->DesktopLoginResponseObject) &&
         result->DesktopMapAccess == dsns__DesktopMapAccess__Success;
}

/// A block in the context with a copy of the bytes, which are freed with this object.
class Block {
public:
  Block(struct soap* soap, const QByteArray& bytes)
      : m_bytes(new unsigned char[static_cast<std::size_t>(bytes.size())]),
        m_block(soap_new_xsd__base64Binary(soap, -1)) {
    memcpy(m_bytes.get(), bytes.constData(), static_cast<std::size_t>(bytes.size()));
    m_block->__ptr = m_bytes.get();
    m_block->__size = bytes.size();
  }
  xsd__base64Binary* get() const { return m_block; }

private:
  std::unique_ptr<unsigned char[]> m_bytes;
  xsd__base64Binary* m_block; // owned by the context
};

/// The description of a map that a request carries, and everything that it points to.
class Description {
public:
  Description(struct soap* soap, const MapInfo& map)
      : m_id(map.mapID().toString().toLatin1()), m_name(toWide(map.mapName())), m_author(toWide(map.mapAuthor())),
        m_description(toWide(map.mapDescription())), m_thumbnail(soap, map.mapThumbnail()) {
    m_record = soap_new_dsns__DesktopInfoClass(soap, -1);
    m_record->MapId = m_id.data();
    m_record->Version = map.version();
    m_record->Author = &m_author;
    m_record->Description = &m_description;
    m_record->IsPublished = map.mapPublished();
    m_record->LastModified = map.mapModificationDate().toSecsSinceEpoch();
    m_record->MapName = &m_name;
    m_record->Thumbnail = m_thumbnail.get();
  }
  dsns__DesktopInfoClass* get() const { return m_record; }

private:
  QByteArray m_id;
  std::wstring m_name;
  std::wstring m_author;
  std::wstring m_description;
  Block m_thumbnail;
  dsns__DesktopInfoClass* m_record; // owned by the context
};

class GeneratedPeer : public bench::Peer {
public:
  explicit GeneratedPeer(const char* endpoint) : m_soap(soap_new()), m_endpoint(endpoint) {}
  GeneratedPeer(const GeneratedPeer&) = delete;
  GeneratedPeer& operator=(const GeneratedPeer&) = delete;
  ~GeneratedPeer() override { soap_free(m_soap); }

  int login(const QString& user, const QString& password) override {
    const Cleaner cleaner{m_soap};
    m_user = toWide(user);
    m_password = toWide(password);
    auto* request = withCredentials(soap_new__dsns__Login(m_soap, -1));
    auto* response = soap_new__dsns__LoginResponse(m_soap, -1);
    if (const int code = soap_call___dsns__Login(m_soap, m_endpoint, nullptr, request, *response))
      return code;
    return succeeded(response->LoginResult) ? 0 : 1;
  }

  int list(QList<MapInfo>& maps) override {
    const Cleaner cleaner{m_soap};
    auto* request = withCredentials(soap_new__dsns__GetMapsList_USCORENEW_USCOREDESKTOP(m_soap, -1));
    request->IsPublished = true;
    request->behaviour = &m_behaviour;
    auto* response = soap_new__dsns__GetMapsList_USCORENEW_USCOREDESKTOPResponse(m_soap, -1);
    if (const int code =
            soap_call___dsns__GetMapsList_USCORENEW_USCOREDESKTOP(m_soap, m_endpoint, nullptr, request, *response))
      return code;
    const auto* result = response->GetMapsList_USCORENEW_USCOREDESKTOPResult;
    if (!result || !succeeded(result->DesktopLoginResponseObject) || !result->DesktopInfoObjectList)
      return 1;
    for (const dsns__DesktopInfoClass* entry : result->DesktopInfoObjectList->DesktopInfoClass) {
      MapInfo map;
      map.setMapAuthor(fromWide(entry->Author));
      map.setMapDescription(fromWide(entry->Description));
      map.setMapID(QUuid(entry->MapId));
      map.setMapModificationDate(QDateTime::fromTime_t(static_cast<unsigned>(entry->LastModified)).toTimeSpec(Qt::UTC));
      map.setMapName(fromWide(entry->MapName));
      map.setMapPublished(entry->IsPublished);
      map.setMapThumbnail(fromBlock(entry->Thumbnail));
      map.setMapID(QUuid(QString::fromUtf8(entry->MapId)));
      map.setVersion(entry->Version);
      map.setIsTWLX(entry->Format_USCOREIsTwlx);
      maps.append(map);
    }
    return 0;
  }

  int get(MapInfo& map) override {
    const Cleaner cleaner{m_soap};
    const Description description(m_soap, map);
    auto* request = withCredentials(soap_new__dsns__GetMapContent_USCORENEW_USCOREDESKTOP(m_soap, -1));
    request->DesktopInfo = description.get();
    request->behaviour = &m_behaviour;
    auto* response = soap_new__dsns__GetMapContent_USCORENEW_USCOREDESKTOPResponse(m_soap, -1);
    if (const int code =
            soap_call___dsns__GetMapContent_USCORENEW_USCOREDESKTOP(m_soap, m_endpoint, nullptr, request, *response))
      return code;
    const auto* result = response->GetMapContent_USCORENEW_USCOREDESKTOPResult;
    if (!accessible(result) || !result->DesktopInfo)
      return 1;
    map.setMapContent(fromBlock(result->DesktopInfo->MapContent));
    map.setMapAuthor(fromWide(result->DesktopInfo->Author));
    map.setVersion(result->DesktopInfo->Version);
    map.setIsTWLX(result->DesktopInfo->Format_USCOREIsTwlx);
    return 0;
  }

  int save(const QString& path, MapInfo& map, const QByteArray& thumbnail) override {
    const Cleaner cleaner{m_soap};
    if (!bench::setUploaded(map, path, thumbnail))
      return 1;
    const Description description(m_soap, map);
    const Block content(m_soap, map.mapContent());
    description.get()->MapContent = content.get();
    auto* request = withCredentials(soap_new__dsns__SaveMap_USCORENEW_USCOREDESKTOP(m_soap, -1));
    request->DesktopInfo = description.get();
    request->IsForced = true;
    request->behaviour = &m_behaviour;
    auto* response = soap_new__dsns__SaveMap_USCORENEW_USCOREDESKTOPResponse(m_soap, -1);
    if (const int code =
            soap_call___dsns__SaveMap_USCORENEW_USCOREDESKTOP(m_soap, m_endpoint, nullptr, request, *response))
      return code;
    const auto* result = response->SaveMap_USCORENEW_USCOREDESKTOPResult;
    if (!accessible(result) || !result->DesktopInfoClass)
      return 1;
    map.setMapID(QUuid(QString::fromUtf8(result->DesktopInfoClass->MapId)));
    map.setVersion(result->DesktopInfoClass->Version);
    return 0;
  }

private:
  /// Empties the context after an operation, so that the highest memory is that of one operation.
  struct Cleaner {
    struct soap* soap;
    ~Cleaner() {
      soap_destroy(soap);
      soap_end(soap);
    }
  };

  template <class Request> Request* withCredentials(Request* request) {
    request->username = &m_user;
    request->pass = &m_password;
    return request;
  }

  struct soap* m_soap;
  const char* m_endpoint;
  std::wstring m_user = L"anna";
  std::wstring m_password = L"secret";
  std::wstring m_behaviour;
};

std::unique_ptr<bench::Peer> connect(const char* endpoint) { return std::make_unique<GeneratedPeer>(endpoint); }

} // namespace

int main(int argc, char** argv) { return bench::run(argc, argv, connect); }
