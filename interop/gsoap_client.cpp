// The toolkit's generated client against a service: gsoap_client ENDPOINT. Ends with status 1 at the first wrong value.
#include "DesktopServiceSoap12.nsmap"
#include "soapDesktopServiceSoap12Proxy.h"

#include <cstdlib>
#include <ctime>
#include <iostream>
#include <string>
#include <vector>

namespace {

using Proxy = DesktopServiceSoap12Proxy;

void expect(const char* what, bool isRight) {
  if (isRight)
    return;
  std::cerr << what << ": a wrong value\n";
  exit(1);
}

/// The response to a call. The request has anna's credentials and the values that `fill` sets.
template <class Request, class Response, class Fill>
Response call(Proxy& proxy, int (Proxy::*operation)(Request*, Response&), Fill fill) {
  std::string user = "anna", password = "correct horse";
  Request request;
  request.username = &user;
  request.pass = &password;
  fill(request);
  Response response;
  if ((proxy.*operation)(&request, response) != SOAP_OK) {
    soap_stream_fault(proxy.soap, std::cerr);
    exit(1);
  }
  return response;
}

ns1__DesktopLoginEnumerators login(Proxy& proxy, std::string password) {
  return call(proxy, &Proxy::Login, [&](auto& request) { request.pass = &password; }).LoginResult->DesktopLoginValue;
}

std::vector<ns1__DesktopInfoClass*> maps(Proxy& proxy) {
  const auto response = call(proxy, &Proxy::GetMapsList_USCORENEW_USCOREDESKTOP, [](auto&) {});
  return response.GetMapsList_USCORENEW_USCOREDESKTOPResult->DesktopInfoObjectList->DesktopInfoClass;
}

} // namespace

int main(int, char** argv) {
  Proxy proxy(argv[1], SOAP_C_UTFSTRING);
  expect("login", login(proxy, "correct horse") == ns1__DesktopLoginEnumerators__Success);
  expect("refused login", login(proxy, "wrong") == ns1__DesktopLoginEnumerators__NotAUser);

  std::vector<unsigned char> content(300'000);
  for (std::size_t i = 0; i < content.size(); ++i)
    content[i] = static_cast<unsigned char>(i);
  std::string name = "Gärten & <Höfe> 🌱", otherName = "Courtyards";
  xsd__base64Binary block;
  block.__ptr = content.data();
  block.__size = static_cast<int>(content.size());
  ns1__DesktopInfoClass map;
  map.MapName = &name;
  map.LastModified = map.Created = 1772600767; // 2026-03-04T05:06:07Z
  map.MapContent = &block;
  map.IsPublished = true;
  const auto save = [&](auto& request) { request.DesktopInfo = &map; };
  const auto saved = call(proxy, &Proxy::SaveMap_USCORENEW_USCOREDESKTOP, save).SaveMap_USCORENEW_USCOREDESKTOPResult;
  expect("save", saved->DesktopMapAccess == ns1__DesktopMapAccess__Success);
  const auto again = call(proxy, &Proxy::SaveMap_USCORENEW_USCOREDESKTOP, save).SaveMap_USCORENEW_USCOREDESKTOPResult;
  expect("second save", again->DesktopMapAccess == ns1__DesktopMapAccess__FileExists);

  const auto listed = maps(proxy);
  expect("list", listed.size() == 1 && *listed[0]->MapName == name && listed[0]->LastModified == map.LastModified &&
                     listed[0]->IsPublished);
  ns1__DesktopInfoClass stored;
  stored.MapId = saved->DesktopInfoClass->MapId;
  stored.MapName = &otherName;
  const auto naming = [&](auto& request) { request.DesktopInfo = &stored; };
  const auto get = [&] {
    return call(proxy, &Proxy::GetMapContent_USCORENEW_USCOREDESKTOP, naming)
        .GetMapContent_USCORENEW_USCOREDESKTOPResult;
  };
  const auto got = get();
  expect("get", got->DesktopMapAccess == ns1__DesktopMapAccess__Success);
  const xsd__base64Binary& bytes = *got->DesktopInfo->MapContent;
  expect("content", std::vector<unsigned char>(bytes.__ptr, bytes.__ptr + bytes.__size) == content);
  const auto renamed = call(proxy, &Proxy::RenameDesktopMap, naming).RenameDesktopMapResult;
  expect("rename", renamed->DesktopMapAccess == ns1__DesktopMapAccess__Success);
  expect("list after the rename", maps(proxy).size() == 1 && *maps(proxy)[0]->MapName == otherName);
  const auto deleted = call(proxy, &Proxy::DeleteDesktopMap, naming).DeleteDesktopMapResult;
  expect("delete", deleted->DesktopMapAccess == ns1__DesktopMapAccess__Success);
  expect("list after the deletion", maps(proxy).empty());
  expect("get after the deletion", get()->DesktopMapAccess == ns1__DesktopMapAccess__MapRemoved);
}
