#include "service/TarnwellService.h"

#include "client/Containment.h"
#include "client/ContextObject.h"
#include "service/Conversions.h"
#include "service/MapFile.h"
#include "service/Outcomes.h"

#include <QtCore/QScopeGuard>

using namespace tarnwell;

namespace {

/// Fills a new record from an answer's description.
void fillListed(MapInfo& map, dsns__DesktopInfoClass& description, bool withThumbnail, AnswerValues& values) {
  map.setMapAuthor(values.text(description.Author));
  map.setMapDescription(values.text(description.Description));
  map.setMapModificationDate(fromSeconds(description.LastModified));
  map.setMapName(values.text(description.MapName));
  map.setMapPublished(description.IsPublished);
  if (withThumbnail && description.Thumbnail)
    map.setMapThumbnail(values.bytes(*description.Thumbnail));
  map.setMapID(fromGuid(description.MapId));
  map.setVersion(description.Version);
  map.setIsTWLX(description.Format_IsTwlx);
}

} // namespace

TarnwellService::TarnwellService() {
  if (context())
    setReceiver(context(), &m_downloads);
}

/// One networked operation: frees what earlier ones left, then runs `body`. What that throws makes it `failed`.
template <class Result, class Body> Result TarnwellService::perform(Result failed, Body body) {
  return contain(failed, [&] {
    m_service.releaseObjects();
    m_downloads.clear(); // after the records that point to it
    return body();
  });
}

int TarnwellService::login(QString userName, QString password) {
  return perform<int>(ResultFailed, [&]() -> int {
    ContextObject<_dsns__LoginResponse> response(context());
    std::wstring wideName = toWide(userName);
    std::wstring widePassword = toWide(password);
    m_userName = userName; // with all that may throw before it: name, flag and credentials change together
    if (m_service.login(std::move(wideName), std::move(widePassword), response.get()) != SOAP_OK) {
      response.release(); // there was no answer: it stays in the context, and the login flag stays as it was
      return ResultFailed;
    }
    const dsns__DesktopLoginResponseClass* const answer = response->LoginResult;
    const int outcome = answer ? resultOf(answer->DesktopLoginValue) : ResultFailed;
    m_service.setLoginResult(outcome == ResultOk);
    return outcome;
  });
}

/// Both listings: `call(response)`, then one record per description appended.
template <class Response, class Call>
int TarnwellService::listMaps(Call call, dsns__CompleteDesktopResponse* Response::* result, bool withThumbnails,
                              QList<MapInfo>& maps) {
  return perform<int>(ResultFailed, [&]() -> int {
    const ContextObject<Response> response(context());
    QList<MapInfo> listed;
    const MapInfo unfilled;
    AnswerValues values(m_downloads);
    const auto list = [&](dsns__DesktopInfoClass& description) {
      listed.append(unfilled);
      fillListed(listed.last(), description, withThumbnails, values);
    };
    m_downloads.onDescription = list; // while the answer arrives, so that the context holds one description at a time
    const auto unset = qScopeGuard([this] { m_downloads.onDescription = nullptr; });
    if (call(response.get()) != SOAP_OK)
      return ResultFailed;
    const dsns__CompleteDesktopResponse* const answer = *response.*result;
    const int outcome = loginOutcome(answer);
    if (outcome != ResultOk || !answer->DesktopInfoObjectList)
      return outcome;
    for (dsns__DesktopInfoClass* description : answer->DesktopInfoObjectList->DesktopInfoClass) // what was not taken
      if (description)
        list(*description);
    maps.append(listed); // at once, so that a failure leaves the host's list alone
    return ResultOk;
  });
}

int TarnwellService::getDesktopMapsList(bool isPublished, QList<MapInfo>& maps) {
  using Response = _dsns__GetMapsList_USCORENEW_USCOREDESKTOPResponse;
  const auto call = [&](Response* response) { return m_service.getDesktopMapsList(isPublished, response); };
  return listMaps(call, &Response::GetMapsList_USCORENEW_USCOREDESKTOPResult, true, maps);
}

int TarnwellService::getDesktopMapsListLite(bool isPublished, QList<MapInfo>& maps) {
  using Response = _dsns__GetMapsListLite_USCORENEW_USCOREDESKTOPResponse;
  const auto call = [&](Response* response) { return m_service.getDesktopMapsListLite(isPublished, response); };
  return listMaps(call, &Response::GetMapsListLite_USCORENEW_USCOREDESKTOPResult, false, maps);
}

int TarnwellService::saveMap(QString filePath, MapInfo& info, QByteArray thumbnail, bool isForced) {
  using Response = _dsns__SaveMap_USCORENEW_USCOREDESKTOPResponse;
  return perform<int>(ResultFailed, [&]() -> int {
    // Both stay in the context until the next operation, also when there is nothing to send.
    dsns__DesktopInfoClass* const record = ContextObject<dsns__DesktopInfoClass>(context()).release();
    Response* const response = ContextObject<Response>(context()).release();
    MapFile file;
    if (const ServiceResult result = readMapFile(filePath, file); result != ResultOk)
      return result;
    // Nothing below fails before the host's record has changed wholly.
    info.setMapModificationDate(file.modified);
    info.setMapContent(std::move(file.content));
    info.setMapAuthor(file.owner);
    info.setMapThumbnail(thumbnail);

    const RequestDescription description(record, info, info.mapName(), UploadParts);
    const int code = m_service.saveMap(isForced, record, response);
    const int outcome = mapOutcome(code, response, &Response::SaveMap_USCORENEW_USCOREDESKTOPResult);
    if (outcome != ResultOk)
      return outcome;
    if (const auto* const saved = response->SaveMap_USCORENEW_USCOREDESKTOPResult->DesktopInfoClass) {
      info.setMapID(fromGuid(saved->MapId));
      info.setVersion(saved->Version);
      return ResultOk;
    }
    // A save without the stored map's description counts as failed, and is undone with what was just sent.
    ContextObject<_dsns__DeleteDesktopMapResponse> undone(context());
    if (m_service.deleteMap(record, undone.get()) != SOAP_OK)
      undone.release();
    return ResultFailed;
  });
}

int TarnwellService::getMap(MapInfo& info) {
  using Response = _dsns__GetMapContent_USCORENEW_USCOREDESKTOPResponse;
  return perform<int>(ResultFailed, [&]() -> int {
    // Both stay in the context until the next operation.
    dsns__DesktopInfoClass* const record = ContextObject<dsns__DesktopInfoClass>(context()).release();
    Response* const response = ContextObject<Response>(context()).release();
    const RequestDescription description(record, info, info.mapName(), DownloadParts);
    const int code = m_service.getMap(record, response);
    const int outcome = mapOutcome(code, response, &Response::GetMapContent_USCORENEW_USCOREDESKTOPResult);
    if (outcome != ResultOk)
      return outcome;
    const auto* const map = response->GetMapContent_USCORENEW_USCOREDESKTOPResult->DesktopInfo;
    if (!map || !map->MapContent)
      return ResultFailed;
    const QString author = fromWide(map->Author); // may throw: before the host's record changes
    info.setMapContent(m_downloads.take(*map->MapContent));
    info.setMapAuthor(author);
    info.setVersion(map->Version);
    info.setIsTWLX(map->Format_IsTwlx);
    return ResultOk;
  });
}

/// Deleting and renaming: `call(record, response)` with the description of `info` under `name`.
template <class Response, class Call>
int TarnwellService::manageMap(const MapInfo& info, const QString& name, Call call,
                               dsns__MapActionResponse* Response::* result) {
  return perform<int>(ResultFailed, [&] {
    const ContextObject<Response> response(context());
    const ContextObject<dsns__DesktopInfoClass> record(context());
    const RequestDescription description(record.get(), info, name, IdentifyingParts);
    return mapOutcome(call(record.get(), response.get()), response.get(), result);
  });
}

int TarnwellService::deleteMap(MapInfo& info) {
  using Response = _dsns__DeleteDesktopMapResponse;
  const auto call = [this](auto* record, Response* response) { return m_service.deleteMap(record, response); };
  return manageMap(info, info.mapName(), call, &Response::DeleteDesktopMapResult);
}

int TarnwellService::renameMap(MapInfo& info, const QString& newName) {
  using Response = _dsns__RenameDesktopMapResponse;
  const auto call = [this](auto* record, Response* response) { return m_service.renameMap(record, response); };
  return manageMap(info, newName, call, &Response::RenameDesktopMapResult);
}

/// Both version checks: `call(version, response)`, the answer's texts stored if both are there. Returns whether texts
/// are stored, of this check or of an earlier one.
template <class Response, class Call>
bool TarnwellService::checkVersion(const QString& version, Call call,
                                   dsns__DesktopVersioningClass* Response::* result) {
  perform(false, [&] {
    const ContextObject<Response> response(context());
    const bool answered = call(toWide(version), response.get()) == SOAP_OK;
    const dsns__DesktopVersioningClass* const setup = answered ? *response.*result : nullptr;
    if (!setup || !setup->Path || !setup->Version)
      return false;
    QString url = fromWide(setup->Path), newVersion = fromWide(setup->Version); // may throw: before either is stored
    m_setupUrl.swap(url);
    m_setupVersion.swap(newVersion);
    return true;
  });
  return !m_setupUrl.isEmpty() && !m_setupVersion.isEmpty();
}

bool TarnwellService::checkForUpdates(QString version, int liveUpdateType) {
  using Response = _dsns__CheckDesktopVersionResponse;
  const auto call = [&](std::wstring text, Response* response) {
    return m_service.checkForUpdate(std::move(text), liveUpdateType, response);
  };
  return checkVersion(version, call, &Response::CheckDesktopVersionResult);
}

bool TarnwellService::checkForUpdatesExtended(QString version, int liveUpdateType, int applicationUpdateType) {
  using Response = _dsns__CheckDesktopVersionExtendedResponse;
  const auto call = [&](std::wstring text, Response* response) {
    return m_service.checkForUpdateExtended(std::move(text), liveUpdateType, applicationUpdateType, response);
  };
  return checkVersion(version, call, &Response::CheckDesktopVersionExtendedResult);
}

bool TarnwellService::sendCrashReport(const QString& subject, const QString& message, const QString& fileName,
                                      QByteArray attachment) {
  if (!context())
    return false;
  return perform(false, [&] {
    std::wstring subjectText = toWide(subject);
    std::wstring messageText = toWide(message);
    std::wstring fileNameText = toWide(fileName);
    const ContextObject<_dsns__SendFeedbackWithAttachment> request(context());
    const ContextObject<_dsns__SendFeedbackWithAttachmentResponse> response(context());
    const ContextObject<xsd__base64Binary> block(context());
    lendBytes(attachment, *block);
    request->subject = &subjectText;
    request->message = &messageText;
    request->bytes = block.get();
    request->filename = &fileNameText;
    // The answer's result is not examined, because only that the service took the report counts.
    return soap_call___dsns4__SendFeedbackWithAttachment(context(), m_service.proxy.soap_endpoint, nullptr,
                                                         request.get(), response.get()) == SOAP_OK;
  });
}

void TarnwellService::set(void (STLDesktopService::*setter)(std::string), const QString& text) {
  contain(false, [&] {
    (m_service.*setter)(text.toStdString());
    return true;
  });
}

void TarnwellService::setProxySettings(QString host, int port, QString user, QString password, bool useProxy) {
  contain(false, [&] {
    m_service.setProxySettings(host.toStdString(), port, user.toStdString(), password.toStdString(), useProxy);
    return true;
  });
}

int TarnwellService::loginResult(int, int loginValue) {
  return resultOf(static_cast<dsns__DesktopLoginEnumerators>(loginValue));
}

int TarnwellService::mapAccess(int access) { return resultOf(static_cast<dsns__DesktopMapAccess>(access)); }
