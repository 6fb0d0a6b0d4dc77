// The interface between the host and the plug-in, all that a host knows. Header-only.
// Every operation blocks its caller for the whole exchange. Calls on one object must not overlap; separate
// objects are independent of each other.
#pragma once

/// @file
/// The interface, and the function that makes an object of it.

#include "service/MapInfo.h"
#include "service/ServiceResult.h"

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QString>

/// The cloud of the mind-mapping application. The order of the virtual functions is the plug-in's contract with
/// hosts that are already built: never reorder, insert or remove one, however oddly they are placed.
/// Operations that return int return a ServiceResult.
class ITarnwellService {
public:
  /// Ends the connection's state in memory; sends nothing and does not log out on the service.
  virtual ~ITarnwellService() = default;

  /// Logs in and keeps name and password for the calls that follow, whatever the result.
  /// ResultOk logs in; an answer of the service with another result logs out; a call that failed before an
  /// answer was read (ResultFailed) leaves the login state as it was.
  virtual int login(QString userName, QString password) = 0;
  /// The name given to the last login, successful or not; null before the first.
  virtual QString currentUser() const = 0;
  /// Forgets that the user is logged in. Local: sends nothing, and currentUser() keeps its name.
  virtual void logout() = 0;

  /// Appends the user's maps, thumbnails included and contents not, to `maps`, which is never cleared.
  /// On any result but ResultOk the list is unchanged. `isPublished` goes to the service, which selects by it.
  virtual int getDesktopMapsList(bool isPublished, QList<MapInfo>& maps) = 0;
  /// The same without thumbnails.
  virtual int getDesktopMapsListLite(bool isPublished, QList<MapInfo>& maps) = 0;
  /// Uploads the file `filePath` as the content of `info`, new (null identifier) or overwriting, with
  /// `thumbnail` as its preview; what `isForced` permits is the service's decision. Once the file was found,
  /// `info` carries its bytes, modification time and owner and the thumbnail, whatever the result; with ResultOk
  /// also the identifier and version that the service gave. ResultNoSuchFile: nothing sent, `info` unchanged.
  virtual int saveMap(QString filePath, MapInfo& info, QByteArray thumbnail, bool isForced) = 0;
  /// Downloads the content of `info`; with ResultOk sets content, author, version and format flag, nothing else.
  virtual int getMap(MapInfo& info) = 0;
  /// Removes the map from the service; never changes `info`.
  virtual int deleteMap(MapInfo& info) = 0;
  /// Renames the map on the service; deliberately leaves the old name in `info`.
  virtual int renameMap(MapInfo& info, const QString& newName) = 0;

  /// Asks for a newer setup. True when getSetupUrl() and getSetupVersion() are both non-empty afterwards, which
  /// deliberately stays so after one successful check, even if a later one fails.
  virtual bool checkForUpdates(QString version, int liveUpdateType) = 0;
  /// The same with the kind of application, which the service selects by.
  virtual bool checkForUpdatesExtended(QString version, int liveUpdateType, int applicationUpdateType) = 0;
  /// Where the newer setup is, by the last check that delivered both texts; null before.
  virtual QString getSetupUrl() const = 0;
  /// The newer setup's version, likewise.
  virtual QString getSetupVersion() const = 0;

  /// The service's URL; an empty text selects the built-in production service. Not validated.
  virtual void setEndPoint(QString endPoint) = 0;
  /// With `useProxy` the four values are stored and used; without, no proxy is used and the other arguments are
  /// ignored. User and password that are empty still send an (empty) Proxy-Authorization.
  virtual void setProxySettings(QString host, int port, QString user, QString password, bool useProxy) = 0;

  /// Whether the last answer to a login was a success and logout() was not called since. Informational only.
  virtual bool isUserLogon() const = 0;

  /// Sends a crash report with an attached file's bytes. True when the service took it without a fault.
  virtual bool sendCrashReport(const QString& subject, const QString& message, const QString& fileName,
                               QByteArray attachment) = 0;

  ///@{
  /// Each sets one value at once, whatever `useProxy` was last: setProxyHost turns the proxy on again.
  virtual void setProxyHost(QString host) = 0;
  virtual void setProxyPort(int port) = 0;
  virtual void setProxyUser(QString user) = 0;
  virtual void setProxyPassword(QString password) = 0;
  ///@}
};

/// The plug-in's one exported function. Returns a new, independent service, logged out, on the test endpoint; the
/// caller deletes it.
ITarnwellService* serviceFactory();
/// The type by which a host calls it.
using ServiceFactory = ITarnwellService* (*)();
/// Its decorated name, by which a host finds it in the plug-in's file.
constexpr char serviceFactoryName[] = "_Z14serviceFactoryv";
