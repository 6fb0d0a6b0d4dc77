#include "localservice/Handlers.h"

#include "localservice/Identifier.h"
#include "protocol/binding/Text.h"

#include <cstring>
#include <new>
#include <type_traits>

namespace localservice {

namespace {

using tarnwell::OperationIndex;

/// One call of an operation.
struct Call {
  Store& store;
  struct soap* soap;
  OperationIndex index;
};

// The user name in a request; null for a request without one.
template <class Request> const std::wstring* userOf(const Request&, ...) { return nullptr; }
template <class Request> auto userOf(const Request& request, int) -> decltype(request.username) {
  return request.username;
}

template <class T> T* create(const Call& call) {
  void* const object = tarnwell::instantiate(call.soap, -1, tarnwell::typeOf(tarnwell::typeNumber<T>), nullptr);
  if (!object)
    throw std::bad_alloc();
  return static_cast<T*>(object);
}

// From requests to the store: texts and bytes are views of memory that the context owns.

const char* utf8(const Call& call, const std::wstring* text) {
  return text ? soap_wchar2s(call.soap, text->c_str()) : nullptr;
}

Bytes bytesOf(const xsd__base64Binary* block) {
  if (!block)
    return {};
  const auto size = static_cast<std::size_t>(block->__size);
  return {size != 0 ? static_cast<const void*>(block->__ptr) : "", size};
}

MapRecord recordOf(const Call& call, const dsns__DesktopInfoClass& info) {
  MapRecord map;
  map.id = info.MapId;
  map.name = utf8(call, info.MapName);
  map.author = utf8(call, info.Author);
  map.description = utf8(call, info.Description);
  map.formatType = utf8(call, info.Format_Type);
  map.formatVersion = utf8(call, info.Format_Version);
  map.formatHeader = utf8(call, info.Format_Header);
  map.lastModified = info.LastModified;
  map.isPublished = info.IsPublished;
  map.allowInclusion = info.AllowInclusion;
  map.isTwlx = info.Format_IsTwlx;
  map.thumbnail = bytesOf(info.Thumbnail);
  map.preview = bytesOf(info.Preview);
  map.backup = bytesOf(info.OldTwlxBackUp);
  map.content = bytesOf(info.MapContent);
  return map;
}

// From the store to answers: texts and bytes are copies that the context owns.

std::wstring* wide(const Call& call, const char* text) {
  if (!text)
    return nullptr;
  auto* const copy = create<std::wstring>(call);
  tarnwell::decodeUtf8(text, *copy);
  return copy;
}

xsd__base64Binary* blockOf(const Call& call, Bytes bytes) {
  if (!bytes.data)
    return nullptr;
  auto* const block = create<xsd__base64Binary>(call);
  if (bytes.size == 0)
    return block;
  block->__ptr = static_cast<unsigned char*>(soap_malloc(call.soap, bytes.size));
  if (!block->__ptr)
    throw std::bad_alloc();
  std::memcpy(block->__ptr, bytes.data, bytes.size);
  block->__size = static_cast<int>(bytes.size);
  return block;
}

/// Name, author and description are empty when they were never given: clients rely on these elements.
dsns__DesktopInfoClass* infoOf(const Call& call, const MapRecord& map) {
  auto* const info = create<dsns__DesktopInfoClass>(call);
  info->MapId = soap_strdup(call.soap, map.id);
  info->MapName = wide(call, map.name ? map.name : "");
  info->Author = wide(call, map.author ? map.author : "");
  info->Description = wide(call, map.description ? map.description : "");
  info->Format_Type = wide(call, map.formatType);
  info->Format_Version = wide(call, map.formatVersion);
  info->Format_Header = wide(call, map.formatHeader);
  info->LastModified = map.lastModified;
  info->Created = map.created;
  info->Version = static_cast<float>(map.version);
  info->IsPublished = map.isPublished;
  info->AllowInclusion = map.allowInclusion;
  info->Format_IsTwlx = map.isTwlx;
  info->Thumbnail = blockOf(call, map.thumbnail);
  info->Preview = blockOf(call, map.preview);
  info->OldTwlxBackUp = blockOf(call, map.backup);
  info->MapContent = blockOf(call, map.content);
  return info;
}

/// The byte blocks of the maps in an operation's answer.
unsigned blocksOf(OperationIndex index) {
  switch (index) {
  case OperationIndex::GetMapsList_USCORENEW_USCOREDESKTOP:
  case OperationIndex::GetMapsList_USCORENEW_USCOREIPAD:
  case OperationIndex::GetDesktopMapsList:
    return Thumbnail;
  case OperationIndex::GetMapsListLite_USCORENEW_USCOREDESKTOP:
  case OperationIndex::GetMapsListLite_USCORENEW_USCOREIPAD:
  case OperationIndex::GetDesktopMapsListLite:
    return NoBlocks;
  case OperationIndex::GetDesktopMapPreview:
    return Thumbnail | Preview;
  default:
    return Content | Backup;
  }
}

// Every answer to a user has a login value; answers about one map also have an access value.

void setLogin(const Call&, dsns__DesktopLoginResponseClass& result, dsns__DesktopLoginEnumerators value) {
  result.DesktopLoginValue = value;
}

template <class Result> void setLogin(const Call& call, Result& result, dsns__DesktopLoginEnumerators value) {
  auto* const login = create<dsns__DesktopLoginResponseClass>(call);
  login->DesktopLoginValue = value;
  result.DesktopLoginResponseObject = login;
}

/// False: this kind of answer has no access value.
template <class Result> bool setAccess(Result& result, dsns__DesktopMapAccess value) {
  if constexpr (std::is_same_v<Result, dsns__GetMapResponse> || std::is_same_v<Result, dsns__MapActionResponse>) {
    result.DesktopMapAccess = value;
    return true;
  }
  return false;
}

/// Logs in with the credentials of `request` and, if the account may use the service, calls `act(user)`.
template <class Request, class Result, class Act>
void withAccount(const Call& call, const Request& request, Result& result, Act act) {
  setAccess(result, dsns__DesktopMapAccess__None);
  auto login = dsns__DesktopLoginEnumerators__DbError;
  try {
    const char* const user = utf8(call, request.username);
    login = call.store.login(user, utf8(call, request.pass));
    if (login == dsns__DesktopLoginEnumerators__Success)
      act(user);
  } catch (const StoreError&) {
    if (!setAccess(result, dsns__DesktopMapAccess__DbError))
      login = dsns__DesktopLoginEnumerators__DbError;
  }
  setLogin(call, result, login);
}

/// Adds the stored map, without byte blocks, to the answer to a change that succeeded.
void addStoredMap(const Call& call, const char* user, const std::string& id, dsns__MapActionResponse& result) {
  if (result.DesktopMapAccess != dsns__DesktopMapAccess__Success)
    return;
  result.DesktopMapAccess = call.store.loadMap(
      user, id, NoBlocks, [&](const MapRecord& map) { result.DesktopInfoClass = infoOf(call, map); });
}

/// Stores a report. It needs no account: the answer's login value is "None".
void keepReport(const Call& call, const Report& report, dsns__MapActionResponse& result) {
  setLogin(call, result, dsns__DesktopLoginEnumerators__None);
  try {
    call.store.addReport(report);
    result.DesktopMapAccess = dsns__DesktopMapAccess__Success;
  } catch (const StoreError&) {
    result.DesktopMapAccess = dsns__DesktopMapAccess__DbError;
  }
}

// One respond() for each kind of operation. A template serves all requests with its kind of result.

void respond(const Call& call, const _dsns__Login& request, dsns__DesktopLoginResponseClass& result) {
  withAccount(call, request, result, [](const char*) {});
}

template <class Request> void respond(const Call& call, const Request& request, dsns__CompleteDesktopResponse& result) {
  withAccount(call, request, result, [&](const char* user) {
    auto* const list = create<dsns__ArrayOfDesktopInfoClass>(call);
    call.store.listMaps(user, request.IsPublished, blocksOf(call.index),
                        [&](const MapRecord& map) { list->DesktopInfoClass.push_back(infoOf(call, map)); });
    result.DesktopInfoObjectList = list;
  });
}

template <class Request> void respond(const Call& call, const Request& request, dsns__GetMapResponse& result) {
  withAccount(call, request, result, [&](const char* user) {
    if (request.DesktopInfo)
      result.DesktopMapAccess =
          call.store.loadMap(user, canonicalIdentifier(request.DesktopInfo->MapId), blocksOf(call.index),
                             [&](const MapRecord& map) { result.DesktopInfo = infoOf(call, map); });
  });
}

/// Converts between equal formats only: returns the content of the request or, without one, that of the stored map.
void respond(const Call& call, const _dsns__ConvertMap& request, dsns__GetMapResponse& result) {
  const std::wstring none;
  if ((request.inFormat ? *request.inFormat : none) != (request.outFormat ? *request.outFormat : none)) {
    withAccount(call, request, result, [](const char*) {});
  } else if (!request.DesktopInfo || !request.DesktopInfo->MapContent) {
    respond<_dsns__ConvertMap>(call, request, result);
  } else {
    withAccount(call, request, result, [&](const char*) {
      result.DesktopInfo = request.DesktopInfo;
      result.DesktopMapAccess = dsns__DesktopMapAccess__Success;
    });
  }
}

/// The three save operations.
template <class Request> void respond(const Call& call, const Request& request, dsns__MapActionResponse& result) {
  withAccount(call, request, result, [&](const char* user) {
    if (!request.DesktopInfo)
      return;
    std::string id;
    result.DesktopMapAccess = call.store.saveMap(user, recordOf(call, *request.DesktopInfo), request.IsForced, id);
    addStoredMap(call, user, id, result);
  });
}

void respond(const Call& call, const _dsns__RenameDesktopMap& request, dsns__MapActionResponse& result) {
  withAccount(call, request, result, [&](const char* user) {
    if (!request.DesktopInfo)
      return;
    const std::string id = canonicalIdentifier(request.DesktopInfo->MapId);
    result.DesktopMapAccess = call.store.renameMap(user, id, utf8(call, request.DesktopInfo->MapName));
    addStoredMap(call, user, id, result);
  });
}

void respond(const Call& call, const _dsns__DeleteDesktopMap& request, dsns__MapActionResponse& result) {
  withAccount(call, request, result, [&](const char* user) {
    if (request.DesktopInfo)
      result.DesktopMapAccess = call.store.removeMap(user, canonicalIdentifier(request.DesktopInfo->MapId));
  });
}

void respond(const Call& call, const _dsns__SendFeedback& request, dsns__MapActionResponse& result) {
  Report report;
  report.name = utf8(call, request.name);
  report.email = utf8(call, request.email);
  report.subject = utf8(call, request.subject);
  report.message = utf8(call, request.message);
  keepReport(call, report, result);
}

void respond(const Call& call, const _dsns__SendFeedbackWithAttachment& request, dsns__MapActionResponse& result) {
  Report report;
  report.subject = utf8(call, request.subject);
  report.message = utf8(call, request.message);
  report.fileName = utf8(call, request.filename);
  report.attachment = bytesOf(request.bytes);
  keepReport(call, report, result);
}

/// Both version checks. The texts are empty when no version newer than the client's is known.
template <class Request> void respond(const Call& call, const Request& request, dsns__DesktopVersioningClass& result) {
  Update update = call.store.announcedUpdate();
  const char* const own = utf8(call, request.version);
  if (strverscmp(update.version.c_str(), own ? own : "") <= 0)
    update = {};
  result.Path = wide(call, update.path.c_str());
  result.Version = wide(call, update.version.c_str());
}

/// Answers with the injected values.
template <class Result> void respondInjected(const Call& call, const InjectedAnswer& injected, Result& result) {
  setAccess(result, injected.access);
  setLogin(call, result, injected.login);
}
void respondInjected(const Call&, const InjectedAnswer&, dsns__DesktopVersioningClass&) {} // has no values

// The outcome of an answer for the log: its login value if the login failed, otherwise its access value if it has one.

const char* nameOf(int type, int value) { return tarnwell::typeOf(type).names[value].text; }
const char* outcomeOf(const dsns__DesktopLoginResponseClass& result) {
  return nameOf(SOAP_TYPE_dsns__DesktopLoginEnumerators, result.DesktopLoginValue);
}
const char* outcomeOf(const dsns__CompleteDesktopResponse& result) {
  return outcomeOf(*result.DesktopLoginResponseObject);
}
const char* outcomeOf(const dsns__DesktopVersioningClass&) { return "Success"; }
template <class Result> const char* outcomeOf(const Result& result) {
  const dsns__DesktopLoginEnumerators login = result.DesktopLoginResponseObject->DesktopLoginValue;
  const bool isRefused =
      login != dsns__DesktopLoginEnumerators__Success && login != dsns__DesktopLoginEnumerators__None;
  return isRefused ? outcomeOf(*result.DesktopLoginResponseObject)
                   : nameOf(SOAP_TYPE_dsns__DesktopMapAccess, result.DesktopMapAccess);
}

/// Fills the answer to one request.
template <class Request, class Result>
void perform(const Call& call, const void* message, const InjectedAnswer* injected, Result& result, Answer& answer) {
  const auto& request = *static_cast<const Request*>(message);
  const char* const user = utf8(call, userOf(request, 0));
  answer.user = user ? user : "";
  if (injected)
    respondInjected(call, *injected, result);
  else
    respond(call, request, result);
  answer.outcome = outcomeOf(result);
}

using Handler = Answer (*)(const Call& call, const void* request, const InjectedAnswer* injected);

constexpr Handler handlers[] = {
#define TARNWELL_OPERATION(Name, Wire, Shape, ResultClass)                                                             \
  [](const Call& call, const void* request, const InjectedAnswer* injected) {                                          \
    auto* const response = create<_dsns__##Name##Response>(call);                                                      \
    response->Name##Result = create<ResultClass>(call);                                                                \
    Answer answer;                                                                                                     \
    answer.response = response;                                                                                        \
    perform<_dsns__##Name>(call, request, injected, *response->Name##Result, answer);                                  \
    return answer;                                                                                                     \
  },
#include "protocol/schema/Operations.inc"
#undef TARNWELL_OPERATION
};

} // namespace

Answer answer(Store& store, struct soap* soap, OperationIndex index, const void* request,
              const InjectedAnswer* injected) {
  return handlers[static_cast<std::size_t>(index)]({store, soap, index}, request, injected);
}

} // namespace localservice
