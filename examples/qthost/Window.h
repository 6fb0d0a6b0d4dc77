// The window: an account, its maps with their previews, and what can be done with them.
#pragma once

#include "Cloud.h"

#include <QtCore/QHash>
#include <QtCore/QUuid>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QListWidget>
#include <QtWidgets/QProgressBar>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QWidget>

class Window : public QWidget {
public:
  /// `cloud` has loaded its plug-in, and lives as long as the window.
  Window(Cloud& cloud, const QString& endPoint);

private:
  void logIn();
  void list();
  void download(const QString& file);
  /// A record without an identifier becomes a new map; otherwise the map of this identifier is meant.
  void save(const QString& file, const MapInfo& map, bool isForced);
  void rename(const QString& newName);
  void remove();

  void askForDownload();
  void askForSave();
  void askAboutConflict(const QString& file, const MapInfo& map);
  void askForRename();
  void askForRemoval();

  /// Starts a call that is expected to move `size` bytes over the network, 0 when that is not known. `done` gets a
  /// result that the window has already explained to the user.
  void start(const QString& activity, qint64 size, const Cloud::Call& call, const Cloud::Done& done);
  void showProgress();
  void showResult(int result);
  void enableButtons();
  /// The selected map, a copy; one without an identifier when none is selected.
  MapInfo selected() const;

  Cloud& m_cloud;
  bool m_isLoggedIn = false;
  QList<MapInfo> m_maps;
  /// Sizes of contents in bytes, as far as they have passed here: the service does not tell them beforehand.
  QHash<QUuid, int> m_sizes;
  QString m_activity;
  qint64 m_expected = 0;
  QTimer m_progressTimer;

  QLineEdit m_endPoint, m_user, m_password;
  QPushButton m_logIn{"Log in"}, m_refresh{"Refresh"}, m_download{"Download..."}, m_save{"Save..."};
  QPushButton m_rename{"Rename..."}, m_remove{"Delete..."}, m_giveUp{"Give up"};
  QListWidget m_list;
  QLabel m_status{"Log in to see your maps."};
  QProgressBar m_progress;
};
