// The library's one implementation of the host interface: Qt values in and out, one call of the client per operation,
// the service's outcomes mapped to result codes. Made by serviceFactory(). One thread at a time per object; no
// operation lets an exception out.
#pragma once

#include "client/STLDesktopService.h"
#include "service/ITarnwellService.h"

/// What the interface does not tell: nothing here asks for the login flag before a call, the outcome in each answer
/// decides; and an answer that lacks its result or its login object is a failed call.
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

  void setEndPoint(QString endPoint) override { m_service.setEndPoint(endPoint.toStdString()); }
  void setProxySettings(QString host, int port, QString user, QString password, bool useProxy) override {
    m_service.setProxySettings(host.toStdString(), port, user.toStdString(), password.toStdString(), useProxy);
  }
  bool isUserLogon() const override { return m_service.loginSucces(); }
  bool sendCrashReport(const QString& subject, const QString& message, const QString& fileName,
                       QByteArray attachment) override;
  void setProxyHost(QString host) override { m_service.setProxyHost(host.toStdString()); }
  void setProxyPort(int port) override { m_service.setProxyPort(port); }
  void setProxyUser(QString user) override { m_service.setProxyUser(user.toStdString()); }
  void setProxyPassword(QString password) override { m_service.setProxyPassword(password.toStdString()); }

  /// The result of a login outcome, a dsns__DesktopLoginEnumerators; ResultFailed for a value outside it. The first
  /// argument is deliberately without effect.
  int loginResult(int, int loginValue) const;
  /// The result of a map-access outcome, a dsns__DesktopMapAccess; ResultFailed for a value outside it.
  int mapAccess(int access) const;

protected: // for tests that take the context away
  STLDesktopService m_service;
  QString m_setupVersion;
  QString m_setupUrl;
  QString m_userName;

private:
  struct soap* context() const {
    return m_service.proxy.soap;
  }
  /// Both version checks: `call(response)`, the answer's texts stored if both are there. Returns whether texts are
  /// stored, of this check or of an earlier one.
  template <class Response, class Call> bool checkVersion(Call call, dsns__DesktopVersioningClass* Response::*result);
};
