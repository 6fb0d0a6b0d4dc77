#include "client/STLDesktopService.h"

#include "Deployment.h"
#include "client/Containment.h"
#include "client/ContextObject.h"
#include "protocol/runtime/RuntimeInternals.h"

namespace {

template <class Request, class Response>
using Stub = int (*)(struct soap* soap, const char* endpoint, const char* action, Request* request, Response* response);

/// The sequence of every call: request and answer made in the context, `fill(request)`, the exchange, the answer's
/// members copied to the caller, both messages deleted. The result that the answer points to stays in the context.
template <class Request, class Response, class Fill>
int call(const DesktopServiceSoap12& proxy, Stub<Request, Response> stub, Response* response, Fill fill) {
  if (!proxy.soap)
    return SOAP_EOM;
  return contain(-1, [&] {
    const ContextObject<Request> request(proxy.soap);
    const ContextObject<Response> answer(proxy.soap);
    fill(*request);
    const int code = stub(proxy.soap, proxy.soap_endpoint, nullptr, request.get(), answer.get());
    *response = *answer;
    return code;
  });
}

} // namespace

/// A call with the stored credentials and, where the request has a behaviour, an empty one.
template <class Stub, class Response, class Fill>
int STLDesktopService::callAsUser(Stub stub, Response* response, Fill fill) {
  std::wstring behaviour;
  return call(proxy, stub, response, [&](auto& request) {
    request.username = &username;
    request.pass = &password;
    if constexpr (requires { request.behaviour; })
      request.behaviour = &behaviour;
    fill(request);
  });
}

void STLDesktopService::releaseObjects() {
  static SOAP_ENV__Header carriedOver; // without members: never written
  if (proxy.soap)
    tarnwell::releaseAll(proxy.soap, &carriedOver);
}

void STLDesktopService::setEndPoint(std::string url) {
  endPoint = url.empty() ? TARNWELL_PRODUCTION_ENDPOINT : std::move(url);
  proxy.soap_endpoint = endPoint.c_str();
}

void STLDesktopService::setProxySettings(std::string host, int port, std::string user, std::string secret,
                                         bool useProxy) {
  if (useProxy) {
    setProxyHost(std::move(host));
    setProxyPort(port);
    setProxyUser(std::move(user));
    setProxyPassword(std::move(secret));
  } else if (proxy.soap) {
    proxy.soap->proxy_host = nullptr;
    proxy.soap->proxy_port = 8080;
    proxy.soap->proxy_userid = nullptr;
    proxy.soap->proxy_passwd = nullptr;
  }
}

void STLDesktopService::setProxyPort(int port) {
  proxyPort = port;
  if (proxy.soap)
    proxy.soap->proxy_port = port;
}

void STLDesktopService::setText(std::string& stored, std::string text, const char* soap::* field) {
  stored = std::move(text);
  if (proxy.soap)
    proxy.soap->*field = stored.c_str();
}

int STLDesktopService::login(std::wstring user, std::wstring secret, _dsns__LoginResponse* response) {
  username = std::move(user);
  password = std::move(secret);
  const int code = callAsUser(soap_call___dsns4__Login, response, [](auto&) {});
  if (code == SOAP_OK)
    loggedIn = true;
  return code;
}

int STLDesktopService::getDesktopMapsList(bool isPublished,
                                          _dsns__GetMapsList_USCORENEW_USCOREDESKTOPResponse* response) {
  return callAsUser(soap_call___dsns4__GetMapsList_USCORENEW_USCOREDESKTOP, response,
                    [=](auto& request) { request.IsPublished = isPublished; });
}

int STLDesktopService::getDesktopMapsListLite(bool isPublished,
                                              _dsns__GetMapsListLite_USCORENEW_USCOREDESKTOPResponse* response) {
  return callAsUser(soap_call___dsns4__GetMapsListLite_USCORENEW_USCOREDESKTOP, response,
                    [=](auto& request) { request.IsPublished = isPublished; });
}

int STLDesktopService::saveMap(bool isForced, dsns__DesktopInfoClass* map,
                               _dsns__SaveMap_USCORENEW_USCOREDESKTOPResponse* response) {
  return callAsUser(soap_call___dsns4__SaveMap_USCORENEW_USCOREDESKTOP, response, [=](auto& request) {
    request.DesktopInfo = map;
    request.IsForced = isForced;
  });
}

int STLDesktopService::getMap(dsns__DesktopInfoClass* map,
                              _dsns__GetMapContent_USCORENEW_USCOREDESKTOPResponse* response) {
  return callAsUser(soap_call___dsns4__GetMapContent_USCORENEW_USCOREDESKTOP, response,
                    [=](auto& request) { request.DesktopInfo = map; });
}

int STLDesktopService::deleteMap(dsns__DesktopInfoClass* map, _dsns__DeleteDesktopMapResponse* response) {
  return callAsUser(soap_call___dsns4__DeleteDesktopMap, response, [=](auto& request) { request.DesktopInfo = map; });
}

int STLDesktopService::renameMap(dsns__DesktopInfoClass* map, _dsns__RenameDesktopMapResponse* response) {
  return callAsUser(soap_call___dsns4__RenameDesktopMap, response, [=](auto& request) { request.DesktopInfo = map; });
}

int STLDesktopService::checkForUpdate(std::wstring version, int desktopLiveUpdateType,
                                      _dsns__CheckDesktopVersionResponse* response) {
  _dsns__CheckDesktopVersionResponse unwanted;
  return call(proxy, soap_call___dsns4__CheckDesktopVersion, response ? response : &unwanted, [&](auto& request) {
    request.version = &version;
    request.desktopLiveUpdateType = desktopLiveUpdateType;
  });
}

int STLDesktopService::checkForUpdateExtended(std::wstring version, int desktopLiveUpdateType,
                                              int applicationUpdateType,
                                              _dsns__CheckDesktopVersionExtendedResponse* response) {
  return call(proxy, soap_call___dsns4__CheckDesktopVersionExtended, response, [&](auto& request) {
    request.version = &version;
    request.desktopLiveUpdateType = desktopLiveUpdateType;
    request.applicationUpdateType = applicationUpdateType;
  });
}
