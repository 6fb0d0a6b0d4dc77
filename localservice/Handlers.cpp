#include "localservice/Handlers.h"

#include "localservice/Conversions.h"
#include "localservice/Identifier.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

namespace localservice {

namespace {

using tarnwell::OperationIndex;

/// One call of an operation.
struct Call {
  Store& store;
  struct soap* soap;
  OperationIndex index;
  Reservation& reservation;
};

/// The byte blocks of the maps in an operation's response.
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

// Every response to a user has a login value; responses about one map also have an access value.

void setLogin(const Call&, dsns__DesktopLoginResponseClass& result, dsns__DesktopLoginEnumerators value) {
  result.DesktopLoginValue = value;
}

template <class Result> void setLogin(const Call& call, Result& result, dsns__DesktopLoginEnumerators value) {
  auto* const login = create<dsns__DesktopLoginResponseClass>(call.soap);
  login->DesktopLoginValue = value;
  result.DesktopLoginResponseObject = login;
}

/// False: this kind of response has no access value.
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
    const char* const user = utf8(call.soap, request.username);
    login = call.store.login(user, utf8(call.soap, request.pass));
    if (login == dsns__DesktopLoginEnumerators__Success)
      act(user);
  } catch (const StoreError&) {
    if (!setAccess(result, dsns__DesktopMapAccess__DbError))
      login = dsns__DesktopLoginEnumerators__DbError;
  }
  setLogin(call, result, login);
}

void reserve(const Call& call, std::uint64_t bytes) {
  if (!call.reservation.add(bytes))
    throw Refused(refusals::noMemory);
}

/// Adds the stored map, without byte blocks, to the response to a change that succeeded.
void addStoredMap(const Call& call, const char* user, const std::string& id, dsns__MapActionResponse& result) {
  if (result.DesktopMapAccess != dsns__DesktopMapAccess__Success)
    return;
  result.DesktopMapAccess = call.store.loadMap(
      user, id, NoBlocks, [&](const MapRecord& map) { result.DesktopInfoClass = infoOf(call.soap, map); });
}

/// Stores a report. It needs no account: the response's login value is "None".
void keepReport(const Call& call, const Report& report, dsns__MapActionResponse& result) {
  call.store.addReport(report);
  setLogin(call, result, dsns__DesktopLoginEnumerators__None);
  result.DesktopMapAccess = dsns__DesktopMapAccess__Success;
}

// One respond() for each kind of operation. A template serves all requests with its kind of result.

void respond(const Call& call, const _dsns__Login& request, dsns__DesktopLoginResponseClass& result) {
  withAccount(call, request, result, [](const char*) {});
}

template <class Request> void respond(const Call& call, const Request& request, dsns__CompleteDesktopResponse& result) {
  withAccount(call, request, result, [&](const char* user) {
    auto* const list = create<dsns__ArrayOfDesktopInfoClass>(call.soap);
    const unsigned blocks = blocksOf(call.index);
    reserve(call, call.store.memoryOfList(user, request.IsPublished, blocks));
    call.store.listMaps(user, request.IsPublished, blocks,
                        [&](const MapRecord& map) { list->DesktopInfoClass.push_back(infoOf(call.soap, map)); });
    result.DesktopInfoObjectList = list;
  });
}

template <class Request> void respond(const Call& call, const Request& request, dsns__GetMapResponse& result) {
  withAccount(call, request, result, [&](const char* user) {
    if (!request.DesktopInfo)
      return;
    const std::string id = canonicalIdentifier(request.DesktopInfo->MapId);
    const unsigned blocks = blocksOf(call.index);
    reserve(call, call.store.memoryOfMap(id, blocks));
    result.DesktopMapAccess = call.store.loadMap(
        user, id, blocks, [&](const MapRecord& map) { result.DesktopInfo = infoOf(call.soap, map); });
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
    result.DesktopMapAccess = call.store.saveMap(user, recordOf(call.soap, *request.DesktopInfo), request.IsForced, id);
    addStoredMap(call, user, id, result);
  });
}

void respond(const Call& call, const _dsns__RenameDesktopMap& request, dsns__MapActionResponse& result) {
  withAccount(call, request, result, [&](const char* user) {
    if (!request.DesktopInfo)
      return;
    const std::string id = canonicalIdentifier(request.DesktopInfo->MapId);
    result.DesktopMapAccess = call.store.renameMap(user, id, utf8(call.soap, request.DesktopInfo->MapName));
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
  report.name = utf8(call.soap, request.name);
  report.email = utf8(call.soap, request.email);
  report.subject = utf8(call.soap, request.subject);
  report.message = utf8(call.soap, request.message);
  keepReport(call, report, result);
}

void respond(const Call& call, const _dsns__SendFeedbackWithAttachment& request, dsns__MapActionResponse& result) {
  Report report;
  report.subject = utf8(call.soap, request.subject);
  report.message = utf8(call.soap, request.message);
  report.fileName = utf8(call.soap, request.filename);
  report.attachment = bytesOf(request.bytes);
  keepReport(call, report, result);
}

/// Both version checks. The texts are empty when no version newer than the client's is known.
template <class Request> void respond(const Call& call, const Request& request, dsns__DesktopVersioningClass& result) {
  Update update = call.store.announcedUpdate();
  const char* const own = utf8(call.soap, request.version);
  if (strverscmp(update.version.c_str(), own ? own : "") <= 0)
    update = {};
  result.Path = wide(call.soap, update.path.c_str());
  result.Version = wide(call.soap, update.version.c_str());
}

/// Responds with the injected values.
template <class Result> void respondInjected(const Call& call, const InjectedResponse& injected, Result& result) {
  setAccess(result, injected.access);
  setLogin(call, result, injected.login);
}
void respondInjected(const Call&, const InjectedResponse&, dsns__DesktopVersioningClass&) {} // has no values

// The outcome of a response, for the log: its login value if the login failed, otherwise its access value if it has
// one.

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

/// Fills the result of one request.
template <class Request, class Result>
const char* perform(const Call& call, const void* message, const InjectedResponse* injected, Result& result) {
  if (injected)
    respondInjected(call, *injected, result);
  else
    respond(call, *static_cast<const Request*>(message), result);
  return outcomeOf(result);
}

using Handler = Outcome (*)(const Call& call, const void* request, const InjectedResponse* injected);

constexpr Handler handlers[] = {
#define TARNWELL_OPERATION(Name, Wire, Shape, ResultClass)                                                             \
  [](const Call& call, const void* request, const InjectedResponse* injected) {                                        \
    auto* const response = create<_dsns__##Name##Response>(call.soap);                                                 \
    response->Name##Result = create<ResultClass>(call.soap);                                                           \
    return Outcome{response, perform<_dsns__##Name>(call, request, injected, *response->Name##Result)};                \
  },
#include "protocol/schema/Operations.inc"
#undef TARNWELL_OPERATION
};

} // namespace

std::string userOf(struct soap* soap, OperationIndex index, void* request) {
  const tarnwell::Type& type = tarnwell::typeOf(tarnwell::operations[static_cast<std::size_t>(index)].request);
  const auto* const end = type.rows + type.rowCount;
  const auto* const row =
      std::find_if(type.rows, end, [](const tarnwell::Row& each) { return std::strcmp(each.local, "username") == 0; });
  const char* const user = row == end ? nullptr : utf8(soap, *static_cast<std::wstring**>(row->member(request)));
  return user ? user : "";
}

Outcome carryOut(Store& store, struct soap* soap, OperationIndex index, const void* request,
                 const InjectedResponse* injected, Reservation& reservation) {
  return handlers[static_cast<std::size_t>(index)]({store, soap, index, reservation}, request, injected);
}

} // namespace localservice
