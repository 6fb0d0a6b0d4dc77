// The library's one implementation of the host interface: Qt values in and out, one call of the client per operation,
// the service's outcomes mapped to result codes. Made by serviceFactory(). One thread at a time per object; no
// operation lets an exception out, except the unwinding of a thread that is cancelled in a call.
#pragma once

#include "client/STLDesktopService.h"
#include "service/Downloads.h"
#include "service/ITarnwellService.h"

/// What the interface does not tell: nothing here asks for the login flag before a call, the outcome in each answer
/// decides; an answer that lacks its result or its login object is a failed call; and the records that an operation
/// leaves in the context stay there until the next one that talks to the service, so that nothing grows. A list's
/// descriptions go as soon as they were read, unless something may refer to them.
class TarnwellService : public ITarnwellService {
public:
  TarnwellService();

  int login(QString userName, QString password) override;
  QString currentUser() const override { return m_userName; }
  void logout() override { m_service.setLoginResult(false); }

  int getDesktopMapsList(bool isPublished, QList<MapInfo>& maps) override;
  int getDesktopMapsListLite(bool isPublished, QList<MapInfo>& maps) override;
  int saveMap(QString filePath, MapInfo& info, QByteArray thumbnail, bool isForced) override;
  int getMap(MapInfo& info) override;
  int deleteMap(MapInfo& info) override;
  int renameMap(MapInfo& info, const QString& newName) override;

  bool checkForUpdates(QString version, int liveUpdateType) override;
  bool checkForUpdatesExtended(QString version, int liveUpdateType, int applicationUpdateType) override;
  QString getSetupUrl() const override { return m_setupUrl; }
  QString getSetupVersion() const override { return m_setupVersion; }

  void setEndPoint(QString endPoint) override { set(&STLDesktopService::setEndPoint, endPoint); }
  void setProxySettings(QString host, int port, QString user, QString password, bool useProxy) override;
  bool isUserLogon() const override { return m_service.loginSucces(); }
  bool sendCrashReport(const QString& subject, const QString& message, const QString& fileName,
                       QByteArray attachment) override;
  void setProxyHost(QString host) override { set(&STLDesktopService::setProxyHost, host); }
  void setProxyPort(int port) override { m_service.setProxyPort(port); }
  void setProxyUser(QString user) override { set(&STLDesktopService::setProxyUser, user); }
  void setProxyPassword(QString password) override { set(&STLDesktopService::setProxyPassword, password); }

  /// The result of a login outcome, a dsns__DesktopLoginEnumerators; ResultFailed for a value outside it. The first
  /// argument has no effect; the signature stays, because callers were built against it.
  int loginResult(int, int loginValue);
  /// The result of a map-access outcome, a dsns__DesktopMapAccess; ResultFailed for a value outside it.
  int mapAccess(int access);

protected:
  STLDesktopService m_service;
  QString m_setupVersion;
  QString m_setupUrl;
  QString m_userName;

private:
  struct soap* context() const { return m_service.proxy.soap; }
  template <class Result, class Body> Result perform(Result failed, Body body);
  /// Without memory the old value stands: the setter is called when the text is converted.
  void set(void (STLDesktopService::*setter)(std::string), const QString& text);
  template <class Response, class Call>
  int listMaps(Call call, dsns__CompleteDesktopResponse* Response::* result, bool withThumbnails, QList<MapInfo>& maps);
  template <class Response, class Call>
  int manageMap(const MapInfo& info, const QString& name, Call call, dsns__MapActionResponse* Response::* result);
  template <class Response, class Call>
  bool checkVersion(const QString& version, Call call, dsns__DesktopVersioningClass* Response::* result);

  tarnwell::Downloads m_downloads;
};
