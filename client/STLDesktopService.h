// The service's client in standard-library types: keeps endpoint, proxy settings, credentials and login flag, and does
// one exchange per call. One thread at a time.
#pragma once

#include "client/DesktopServiceSoap12.h"

#include <string>
#include <utility>

/// Every call takes a response owned by the caller, which gets the answer's result pointer (null when nothing was
/// read; the result itself belongs to the context and lives until releaseObjects() or as long as the context) and its
/// context. Every call returns the exchange's code: 0, the runtime's or a fault's code, 20 without a context, -1 after
/// an exception. None throws; only the unwinding of a thread that is cancelled in a call passes through, as it must.
class STLDesktopService {
public:
  STLDesktopService() = default;
  STLDesktopService(const STLDesktopService&) = delete;
  STLDesktopService& operator=(const STLDesktopService&) = delete;
  virtual ~STLDesktopService() = default;

  /// An empty text selects the production deployment; anything else is used as it is.
  void setEndPoint(std::string url);
  /// With `useProxy`, stores the values and makes the context use them. Without, the context uses no proxy while the
  /// stored values stay, because hosts rely on it: a single setter switches the proxy on again.
  void setProxySettings(std::string host, int port, std::string user, std::string secret, bool useProxy);
  void setProxyHost(std::string host) { setText(proxyHost, std::move(host), &soap::proxy_host); }
  void setProxyPort(int port);
  void setProxyUser(std::string user) { setText(proxyUser, std::move(user), &soap::proxy_userid); }
  void setProxyPassword(std::string secret) { setText(proxyPassword, std::move(secret), &soap::proxy_passwd); }

  /// Deletes all objects and data that calls left in the context, results included. What an answer's header leaves for
  /// later requests stays.
  void releaseObjects();

  void setLoginResult(bool success) { loggedIn = success; }
  bool loginSucces() const { return loggedIn; }

  /// Keeps both texts as the credentials of all later calls, also when the login fails. Code 0 sets the login flag,
  /// another one leaves it as it is.
  [[nodiscard]] int login(std::wstring user, std::wstring secret, _dsns__LoginResponse* response);
  [[nodiscard]] int getDesktopMapsList(bool isPublished, _dsns__GetMapsList_USCORENEW_USCOREDESKTOPResponse* response);
  [[nodiscard]] int getDesktopMapsListLite(bool isPublished,
                                           _dsns__GetMapsListLite_USCORENEW_USCOREDESKTOPResponse* response);
  [[nodiscard]] int saveMap(bool isForced, dsns__DesktopInfoClass* map,
                            _dsns__SaveMap_USCORENEW_USCOREDESKTOPResponse* response);
  [[nodiscard]] int getMap(dsns__DesktopInfoClass* map, _dsns__GetMapContent_USCORENEW_USCOREDESKTOPResponse* response);
  [[nodiscard]] int deleteMap(dsns__DesktopInfoClass* map, _dsns__DeleteDesktopMapResponse* response);
  [[nodiscard]] int renameMap(dsns__DesktopInfoClass* map, _dsns__RenameDesktopMapResponse* response);
  /// The only call that takes a null response: a check whose result nobody wants.
  [[nodiscard]] int checkForUpdate(std::wstring version, int desktopLiveUpdateType,
                                   _dsns__CheckDesktopVersionResponse* response);
  [[nodiscard]] int checkForUpdateExtended(std::wstring version, int desktopLiveUpdateType, int applicationUpdateType,
                                           _dsns__CheckDesktopVersionExtendedResponse* response);

  DesktopServiceSoap12 proxy;

private:
  /// Stores a text that the context's `field` points into: the one is never assigned without the other.
  void setText(std::string& stored, std::string text, const char* soap::* field);
  template <class Stub, class Response, class Fill> int callAsUser(Stub stub, Response* response, Fill fill);

  bool loggedIn = false;
  std::wstring username;
  std::wstring password;
  std::string endPoint;
  std::string proxyHost;
  int proxyPort = 8080;
  std::string proxyUser;
  std::string proxyPassword;
};
