// The window: an account, its maps with their previews, and a button for each operation. The thread of the windows.
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
  /// `cloud` has loaded its plug-in and outlives the window.
  Window(Cloud& cloud, const QString& endPoint);

private:
  void logIn();
  void list();
  void download(const QString& file);
  /// Saves `file` as a new map when `map` has no identifier, otherwise over the map with this identifier.
  void save(const QString& file, const MapInfo& map, bool isForced);
  void rename(const QString& newName);
  void remove();

  void askForDownload();
  void askForSave();
  void askAboutConflict(const QString& file, const MapInfo& map);
  void askForRename();
  void askForRemoval();

  /// Starts a call. `size`: expected bytes on the network, 0 when not known. The window explains the result to the
  /// user, then calls `done` with it.
  void start(const QString& activity, qint64 size, const Cloud::Call& call, const Cloud::Done& done);
  void showProgress();
  void showResult(int result);
  void enableButtons();
  /// A copy of the selected map; a record without an identifier when none is selected.
  MapInfo selected() const;

  Cloud& m_cloud;
  bool m_isLoggedIn = false;
  QList<MapInfo> m_maps;
  /// Sizes in bytes of the maps that were saved or downloaded here: the service does not tell them before a download.
  QHash<QUuid, int> m_sizes;
  QString m_activity;
  qint64 m_expected = 0; // bytes on the network
  QTimer m_progressTimer;

  QLineEdit m_endPoint, m_user, m_password;
  QPushButton m_logIn{"Log in"}, m_refresh{"Refresh"}, m_download{"Download..."}, m_save{"Save..."};
  QPushButton m_rename{"Rename..."}, m_remove{"Delete..."}, m_giveUp{"Give up"};
  QListWidget m_list;
  QLabel m_status{"Log in to see your maps."};
  QProgressBar m_progress;
};
