#include "service/TarnwellService.h"

#include "client/Containment.h"
#include "client/ContextObject.h"
#include "service/Conversions.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <cerrno>
#include <optional>
#include <pwd.h>
#include <sys/stat.h>

using namespace tarnwell;

namespace {

// What the host is told of each outcome. Without a default, so that a new value does not compile until it has a result;
// the wire's values are not bounded, and any other one is a failure.

constexpr ServiceResult resultOf(dsns__DesktopLoginEnumerators value) {
  switch (value) {
  case dsns__DesktopLoginEnumerators__Success:
    return ResultOk;
  case dsns__DesktopLoginEnumerators__NotAUser:
    return ResultNotAUser;
  case dsns__DesktopLoginEnumerators__NotPremiumAccount:
    return ResultNotPremiumAccount;
  case dsns__DesktopLoginEnumerators__DbError:
  case dsns__DesktopLoginEnumerators__None:
    break;
  }
  return ResultFailed;
}

constexpr ServiceResult resultOf(dsns__DesktopMapAccess value) {
  switch (value) {
  case dsns__DesktopMapAccess__Success:
    return ResultOk;
  case dsns__DesktopMapAccess__FileExists:
    return ResultFileExists;
  case dsns__DesktopMapAccess__NoAccess:
    return ResultNoAccess;
  case dsns__DesktopMapAccess__OngoingCollaboration:
    return ResultOngoingCollaboration;
  case dsns__DesktopMapAccess__MapRemoved:
    return ResultMapRemoved;
  case dsns__DesktopMapAccess__DbError:
  case dsns__DesktopMapAccess__None:
    break;
  }
  return ResultFailed;
}

/// The result of an answer by its login outcome.
template <class Result> int loginOutcome(const Result* result) {
  if (!result || !result->DesktopLoginResponseObject)
    return ResultFailed;
  return resultOf(result->DesktopLoginResponseObject->DesktopLoginValue);
}

/// The result of a map operation, in this order: by the call's code, by the login outcome, by the map-access outcome.
template <class Response, class Result> int mapOutcome(int code, const Response* response, Result* Response::*result) {
  if (code != SOAP_OK || !response)
    return ResultFailed;
  const int login = loginOutcome(response->*result);
  return login == ResultOk ? resultOf((response->*result)->DesktopMapAccess) : login;
}

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

/// Largest file that is uploaded, bytes: what a QByteArray holds.
constexpr qint64 largestFile = largestBlock;

/// All bytes of a file. None when it cannot be opened, which does not stop a save: the interface promises it. Null:
/// only part of it can be read, it is too large, or it is a device or a pipe, whose bytes may never end.
std::optional<QByteArray> contentOf(const QString& filePath) {
  struct stat status {};
  if (stat(QFile::encodeName(filePath).constData(), &status) == 0 &&
      (S_ISCHR(status.st_mode) || S_ISBLK(status.st_mode) || S_ISFIFO(status.st_mode)))
    return std::nullopt;
  QFile file(filePath);
  if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
    return QByteArray();
  if (file.size() > largestFile)
    return std::nullopt;
  QByteArray content = file.readAll();
  if (file.error() != QFileDevice::NoError || content.size() > largestFile)
    return std::nullopt;
  return content;
}

/// Whether the system has no name for a user, which QFileInfo::owner() tells by an empty text, as it does when it
/// fails.
bool isNameless(uint user) {
  passwd entry{}, *found = nullptr;
  char buffer[1024];
  const int error = getpwuid_r(user, &entry, buffer, sizeof buffer, &found);
  return !found && (error == 0 || error == ENOENT || error == ESRCH);
}

} // namespace

TarnwellService::TarnwellService() {
  if (context())
    setBlockMemory(context(), &m_downloads);
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
      response.release(); // stays in the context, as the login flag stays, deliberately: there was no answer
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
int TarnwellService::listMaps(Call call, dsns__CompleteDesktopResponse* Response::*result, bool withThumbnails,
                              QList<MapInfo>& maps) {
  return perform<int>(ResultFailed, [&]() -> int {
    const ContextObject<Response> response(context());
    if (call(response.get()) != SOAP_OK)
      return ResultFailed;
    const dsns__CompleteDesktopResponse* const answer = *response.*result;
    const int outcome = loginOutcome(answer);
    if (outcome != ResultOk || !answer->DesktopInfoObjectList)
      return outcome;
    QList<MapInfo> listed;
    listed.reserve(static_cast<int>(answer->DesktopInfoObjectList->DesktopInfoClass.size()));
    const MapInfo unfilled;
    AnswerValues values(m_downloads);
    for (dsns__DesktopInfoClass* description : answer->DesktopInfoObjectList->DesktopInfoClass) {
      if (!description)
        continue;
      listed.append(unfilled);
      fillListed(listed.last(), *description, withThumbnails, values);
    }
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
    const QFileInfo file(filePath);
    if (filePath.contains(QChar::Null) || file.isDir() || !file.exists())
      return ResultNoSuchFile;

    // First what may fail, then the host's record: it changes wholly or not at all.
    std::optional<QByteArray> content = contentOf(filePath);
    if (!content)
      return ResultFailed;
    const QDateTime modified = file.lastModified();
    const QString owner = file.owner();
    if (owner.isEmpty() && !isNameless(file.ownerId()))
      return ResultFailed;
    info.setMapModificationDate(modified);
    info.setMapContent(std::move(*content));
    info.setMapAuthor(owner);
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
                               dsns__MapActionResponse* Response::*result) {
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
bool TarnwellService::checkVersion(const QString& version, Call call, dsns__DesktopVersioningClass* Response::*result) {
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
    // The answer's result is deliberately not examined: that the service took the report is all that counts.
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
