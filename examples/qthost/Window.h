// The window: an account, its maps with their previews, and a button for each operation. Names of maps are shown as
// plain text: other people may have chosen them. The thread of the windows.
#pragma once

#include "Cloud.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QHash>
#include <QtCore/QUuid>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QListWidget>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QProgressBar>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QWidget>

/// A label whose text is one line, shortened to the width that the label has.
class OneLine : public QLabel {
protected:
  void paintEvent(QPaintEvent*) override;
};

class Window : public QWidget {
  Q_DECLARE_TR_FUNCTIONS(Window)

public:
  /// `cloud` has loaded its plug-in and outlives the window.
  Window(Cloud& cloud, const QString& endPoint);

private:
  /// A call as the user sees it.
  struct Task {
    /// `Changes`: when the user gives up, the service may have done it nevertheless.
    enum Kind { Reads, Changes };
    QString activity;
    Kind kind = Reads;
    qint64 size = 0; // expected bytes on the network, 0 when not known
  };

  void logIn();
  /// Lists the maps. `news`: what the user is told before their number.
  void list(const QString& news = {});
  void showMaps(const QList<MapInfo>& maps);
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
  /// A dialog with the button Cancel, which is also the answer by the return key. `text` has a "%1" for the map's name.
  QMessageBox* question(const QString& title, const QString& text, const MapInfo& map);
  void askForText(const QString& label, const QString& value, const std::function<void(const QString&)>& use);

  /// Starts a call. The window explains the result to the user, then calls `done` with it.
  void start(const Task& task, const Cloud::Call& call, const Cloud::Done& done);
  void showProgress();
  void showResult(int result);
  void showStatus(const QString& text);
  void enableButtons();
  /// A copy of the selected map; a record without an identifier when none is selected.
  MapInfo selected() const;

  Cloud& m_cloud;
  bool m_isLoggedIn = false;
  QList<MapInfo> m_maps;
  /// Sizes in bytes of the maps that were saved or downloaded here: the service does not tell them before a download.
  QHash<QUuid, int> m_sizes;
  Task m_task;
  QTimer m_progressTimer;
  /// What had the focus before a call, and where Qt has moved it.
  QWidget *m_focusBefore = nullptr, *m_focusWhileBusy = nullptr;

  QLineEdit m_endPoint, m_user, m_password;
  QPushButton m_logIn{tr("&Log in")}, m_refresh{tr("&Refresh")}, m_download{tr("&Download...")};
  QPushButton m_save{tr("Sa&ve...")}, m_rename{tr("Re&name...")}, m_remove{tr("D&elete...")}, m_giveUp{tr("&Give up")};
  QListWidget m_list;
  OneLine m_status;
  QProgressBar m_progress;
};
