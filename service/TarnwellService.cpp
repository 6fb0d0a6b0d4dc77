#include "service/TarnwellService.h"

#include "client/ContextObject.h"
#include "service/Conversions.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <iterator>

using namespace tarnwell;

namespace {

/// What the host is told of one outcome.
struct Outcome {
  int value;
  ServiceResult result;
};

constexpr Outcome loginOutcomes[] = {
    {dsns__DesktopLoginEnumerators__NotAUser, ResultNotAUser},
    {dsns__DesktopLoginEnumerators__NotPremiumAccount, ResultNotPremiumAccount},
    {dsns__DesktopLoginEnumerators__Success, ResultOk},
    {dsns__DesktopLoginEnumerators__DbError, ResultFailed},
    {dsns__DesktopLoginEnumerators__None, ResultFailed},
};

constexpr Outcome accessOutcomes[] = {
    {dsns__DesktopMapAccess__DbError, ResultFailed},
    {dsns__DesktopMapAccess__FileExists, ResultFileExists},
    {dsns__DesktopMapAccess__Success, ResultOk},
    {dsns__DesktopMapAccess__None, ResultFailed},
    {dsns__DesktopMapAccess__NoAccess, ResultNoAccess},
    {dsns__DesktopMapAccess__OngoingCollaboration, ResultOngoingCollaboration},
    {dsns__DesktopMapAccess__MapRemoved, ResultMapRemoved},
};

/// Whether the rows stand at the positions of their values, from 0 to `last`.
template <std::size_t count> constexpr bool isComplete(const Outcome (&table)[count], int last) {
  for (std::size_t i = 0; i < count; ++i)
    if (table[i].value != static_cast<int>(i))
      return false;
  return last == static_cast<int>(count) - 1;
}
static_assert(isComplete(loginOutcomes, dsns__DesktopLoginEnumerators__None));
static_assert(isComplete(accessOutcomes, dsns__DesktopMapAccess__MapRemoved));

/// The wire's values are not bounded: any other one is a failure.
template <std::size_t count> constexpr int resultOf(const Outcome (&table)[count], int value) {
  const auto index = static_cast<unsigned>(value);
  return index < count ? table[index].result : ResultFailed;
}

/// The result of an answer by its login outcome.
template <class Result> int loginOutcome(const Result* result) {
  if (!result || !result->DesktopLoginResponseObject)
    return ResultFailed;
  return resultOf(loginOutcomes, result->DesktopLoginResponseObject->DesktopLoginValue);
}

/// The result of a map operation, in this order: by the call's code, by the login outcome, by the map-access outcome.
template <class Response, class Result> int mapOutcome(int code, const Response* response, Result* Response::*result) {
  if (code != SOAP_OK || !response)
    return ResultFailed;
  const int login = loginOutcome(response->*result);
  return login == ResultOk ? resultOf(accessOutcomes, (response->*result)->DesktopMapAccess) : login;
}

MapInfo listedMap(const dsns__DesktopInfoClass& description, bool withThumbnail) {
  MapInfo map;
  map.setMapAuthor(fromWide(description.Author));
  map.setMapDescription(fromWide(description.Description));
  map.setMapModificationDate(fromSeconds(description.LastModified));
  map.setMapName(fromWide(description.MapName));
  map.setMapPublished(description.IsPublished);
  if (withThumbnail && description.Thumbnail)
    map.setMapThumbnail(fromBlock(*description.Thumbnail));
  map.setMapID(fromGuid(description.MapId));
  map.setVersion(description.Version);
  map.setIsTWLX(description.Format_IsTwlx);
  return map;
}

/// Both listings: `call(response)`, then one record per description appended.
template <class Response, class Call>
int listMaps(struct soap* context, Call call, dsns__CompleteDesktopResponse* Response::*result, bool withThumbnails,
             QList<MapInfo>& maps) try {
  const ContextObject<Response> response(context);
  if (call(response.get()) != SOAP_OK)
    return ResultFailed;
  const dsns__CompleteDesktopResponse* const answer = *response.*result;
  const int outcome = loginOutcome(answer);
  if (outcome != ResultOk || !answer->DesktopInfoObjectList)
    return outcome;
  QList<MapInfo> listed;
  listed.reserve(static_cast<int>(answer->DesktopInfoObjectList->DesktopInfoClass.size()));
  for (const dsns__DesktopInfoClass* description : answer->DesktopInfoObjectList->DesktopInfoClass)
    if (description)
      listed.append(listedMap(*description, withThumbnails));
  maps.append(listed); // at once, so that a failure leaves the host's list alone
  return ResultOk;
} catch (...) {
  return ResultFailed;
}

/// Deleting and renaming: `call(record, response)` with the description of `info` under `name`.
template <class Response, class Call>
int manageMap(struct soap* context, const MapInfo& info, const QString& name, Call call,
              dsns__MapActionResponse* Response::*result) try {
  const ContextObject<Response> response(context);
  const ContextObject<dsns__DesktopInfoClass> record(context);
  const RequestDescription description(record.get(), info, name, ManagedMapParts);
  return mapOutcome(call(record.get(), response.get()), response.get(), result);
} catch (...) {
  return ResultFailed;
}

/// All bytes of the file; none when it cannot be opened, which deliberately does not stop a save.
QByteArray contentOf(const QString& filePath) {
  QFile file(filePath);
  if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
    return QByteArray();
  return file.readAll();
}

} // namespace

TarnwellService::TarnwellService() { readIntoArrays(context()); }

int TarnwellService::login(QString userName, QString password) try {
  m_userName = userName;
  ContextObject<_dsns__LoginResponse> response(context());
  if (m_service.login(toWide(userName), toWide(password), response.get()) != SOAP_OK) {
    response.release(); // stays in the context, as the login flag stays, deliberately
    return ResultFailed;
  }
  const dsns__DesktopLoginResponseClass* const answer = response->LoginResult;
  const int outcome = answer ? loginResult(0, answer->DesktopLoginValue) : ResultFailed;
  m_service.setLoginResult(outcome == ResultOk);
  return outcome;
} catch (...) {
  return ResultFailed;
}

int TarnwellService::getDesktopMapsList(bool isPublished, QList<MapInfo>& maps) {
  using Response = _dsns__GetMapsList_USCORENEW_USCOREDESKTOPResponse;
  const auto call = [&](Response* response) { return m_service.getDesktopMapsList(isPublished, response); };
  return listMaps(context(), call, &Response::GetMapsList_USCORENEW_USCOREDESKTOPResult, true, maps);
}

int TarnwellService::getDesktopMapsListLite(bool isPublished, QList<MapInfo>& maps) {
  using Response = _dsns__GetMapsListLite_USCORENEW_USCOREDESKTOPResponse;
  const auto call = [&](Response* response) { return m_service.getDesktopMapsListLite(isPublished, response); };
  return listMaps(context(), call, &Response::GetMapsListLite_USCORENEW_USCOREDESKTOPResult, false, maps);
}

int TarnwellService::saveMap(QString filePath, MapInfo& info, QByteArray thumbnail, bool isForced) try {
  using Response = _dsns__SaveMap_USCORENEW_USCOREDESKTOPResponse;
  // Both stay in the context, deliberately, also when there is nothing to send.
  dsns__DesktopInfoClass* const record = ContextObject<dsns__DesktopInfoClass>(context()).release();
  Response* const response = ContextObject<Response>(context()).release();
  const QFileInfo file(filePath);
  if (file.isDir() || !file.exists())
    return ResultNoSuchFile;

  info.setMapModificationDate(file.lastModified());
  info.setMapContent(contentOf(filePath));
  info.setMapAuthor(file.owner());
  info.setMapThumbnail(thumbnail);

  const RequestDescription description(record, info, info.mapName(), SavedMapParts);
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
} catch (...) {
  return ResultFailed;
}

int TarnwellService::getMap(MapInfo& info) try {
  using Response = _dsns__GetMapContent_USCORENEW_USCOREDESKTOPResponse;
  // Both stay in the context, deliberately.
  dsns__DesktopInfoClass* const record = ContextObject<dsns__DesktopInfoClass>(context()).release();
  Response* const response = ContextObject<Response>(context()).release();
  const RequestDescription description(record, info, info.mapName(), FetchedMapParts);
  const int code = m_service.getMap(record, response);
  const int outcome = mapOutcome(code, response, &Response::GetMapContent_USCORENEW_USCOREDESKTOPResult);
  if (outcome != ResultOk)
    return outcome;
  const auto* const map = response->GetMapContent_USCORENEW_USCOREDESKTOPResult->DesktopInfo;
  if (!map || !map->MapContent)
    return ResultFailed;
  info.setMapContent(fromBlock(*map->MapContent));
  info.setMapAuthor(fromWide(map->Author));
  info.setVersion(map->Version);
  info.setIsTWLX(map->Format_IsTwlx);
  return ResultOk;
} catch (...) {
  return ResultFailed;
}

int TarnwellService::deleteMap(MapInfo& info) {
  using Response = _dsns__DeleteDesktopMapResponse;
  const auto call = [this](auto* record, Response* response) { return m_service.deleteMap(record, response); };
  return manageMap(context(), info, info.mapName(), call, &Response::DeleteDesktopMapResult);
}

int TarnwellService::renameMap(MapInfo& info, const QString& newName) {
  using Response = _dsns__RenameDesktopMapResponse;
  const auto call = [this](auto* record, Response* response) { return m_service.renameMap(record, response); };
  return manageMap(context(), info, newName, call, &Response::RenameDesktopMapResult);
}

bool TarnwellService::checkForUpdates(QString version, int liveUpdateType) {
  using Response = _dsns__CheckDesktopVersionResponse;
  const auto call = [&](Response* response) {
    return m_service.checkForUpdate(toWide(version), liveUpdateType, response);
  };
  return checkVersion(call, &Response::CheckDesktopVersionResult);
}

bool TarnwellService::checkForUpdatesExtended(QString version, int liveUpdateType, int applicationUpdateType) {
  using Response = _dsns__CheckDesktopVersionExtendedResponse;
  const auto call = [&](Response* response) {
    return m_service.checkForUpdateExtended(toWide(version), liveUpdateType, applicationUpdateType, response);
  };
  return checkVersion(call, &Response::CheckDesktopVersionExtendedResult);
}

template <class Response, class Call>
bool TarnwellService::checkVersion(Call call, dsns__DesktopVersioningClass* Response::*result) {
  try {
    const ContextObject<Response> response(context());
    const bool answered = call(response.get()) == SOAP_OK;
    const dsns__DesktopVersioningClass* const setup = answered ? *response.*result : nullptr;
    if (setup && setup->Path && setup->Version) {
      m_setupUrl = fromWide(setup->Path);
      m_setupVersion = fromWide(setup->Version);
    }
  } catch (...) { // like a failed call: what is stored stays and decides
  }
  return !m_setupUrl.isEmpty() && !m_setupVersion.isEmpty();
}

bool TarnwellService::sendCrashReport(const QString& subject, const QString& message, const QString& fileName,
                                      QByteArray attachment) try {
  if (!context())
    return false;
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
  // The answer's result is deliberately not examined.
  return soap_call___dsns4__SendFeedbackWithAttachment(context(), m_service.proxy.soap_endpoint, nullptr, request.get(),
                                                       response.get()) == SOAP_OK;
} catch (...) {
  return false;
}

int TarnwellService::loginResult(int, int loginValue) const { return resultOf(loginOutcomes, loginValue); }

int TarnwellService::mapAccess(int access) const { return resultOf(accessOutcomes, access); }
