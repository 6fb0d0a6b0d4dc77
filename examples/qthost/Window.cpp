#include "Window.h"

#include "Results.h"

#include <QtCore/QFileInfo>
#include <QtCore/QLocale>
#include <QtCore/QSaveFile>
#include <QtCore/QSignalBlocker>
#include <QtGui/QPainter>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QFormLayout>
#include <QtWidgets/QInputDialog>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QVBoxLayout>
#include <algorithm>

namespace {

constexpr int period = 100; // milliseconds between two updates of the progress
constexpr QSize thumbnailSize(160, 100);

/// Bytes on the network for so many bytes of a map: base64, and about 2000 bytes of heads and envelope.
qint64 wireSize(qint64 bytes) { return bytes == 0 ? 0 : (bytes + 2) / 3 * 4 + 2000; }

/// Compares elements of a constant list, which MapInfo::operator== cannot, because it is not const.
bool isSameMap(const MapInfo& one, const MapInfo& other) { return one.mapID() == other.mapID(); }

/// The preview as an icon for a screen with `ratio` pixels per unit of length. Any host may have saved the bytes: they
/// need not be an image.
QIcon thumbnail(const MapInfo& map, qreal ratio) {
  QPixmap pixmap;
  if (!pixmap.loadFromData(map.mapThumbnail())) {
    pixmap = QPixmap(thumbnailSize);
    pixmap.fill(Qt::lightGray);
  }
  pixmap = pixmap.scaled(thumbnailSize * ratio, Qt::KeepAspectRatio, Qt::SmoothTransformation);
  pixmap.setDevicePixelRatio(ratio);
  return pixmap;
}

/// `text` as a tool tip, which Qt would otherwise take for HTML when it looks like HTML.
QString tip(const QString& text) { return "<span>" + text.toHtmlEscaped() + "</span>"; }

/// The proposed name of the file for a map, whose own name may contain what separates folders.
QString fileName(const MapInfo& map) { return map.mapName().replace('/', '_') + ".twlx"; }

/// The preview for a map to save. A real host draws it; this one takes the PNG file beside the map.
QByteArray thumbnailOf(const QString& file) {
  const QFileInfo info(file);
  QFile image(info.path() + "/" + info.completeBaseName() + ".png");
  return image.open(QIODevice::ReadOnly) ? image.readAll() : QByteArray();
}

bool write(const QString& file, const QByteArray& bytes) {
  QSaveFile output(file);
  return output.open(QIODevice::WriteOnly) && output.write(bytes) == bytes.size() && output.commit();
}

} // namespace

void OneLine::paintEvent(QPaintEvent*) {
  QPainter(this).drawText(rect(), Qt::AlignVCenter, fontMetrics().elidedText(text(), Qt::ElideMiddle, width()));
}

Window::Window(Cloud& cloud, const QString& endPoint) : m_cloud(cloud), m_endPoint(endPoint) {
  setWindowTitle(tr("Maps in the cloud"));
  m_password.setEchoMode(QLineEdit::Password);
  m_list.setViewMode(QListView::IconMode);
  m_list.setIconSize(thumbnailSize);
  m_list.setSpacing(8);
  m_list.setWordWrap(true);
  m_list.setMovement(QListView::Static);
  m_list.setResizeMode(QListView::Adjust);
  m_status.setObjectName("status");
  m_status.setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred); // a long text does not widen the window
  showStatus(tr("Log in to see your maps."));
  m_progress.hide();
  m_giveUp.hide();

  auto* const form = new QFormLayout;
  form->addRow(tr("&Service"), &m_endPoint);
  form->addRow(tr("&User"), &m_user);
  form->addRow(tr("&Password"), &m_password);
  auto* const buttons = new QHBoxLayout;
  for (QPushButton* button : {&m_logIn, &m_refresh, &m_download, &m_save, &m_rename, &m_remove})
    buttons->addWidget(button);
  auto* const status = new QHBoxLayout;
  status->addWidget(&m_status, 1);
  status->addWidget(&m_progress);
  status->addWidget(&m_giveUp);
  auto* const all = new QVBoxLayout(this);
  all->addLayout(form);
  all->addLayout(buttons);
  all->addWidget(&m_list);
  all->addLayout(status);
  resize(600, 400);

  connect(&m_logIn, &QPushButton::clicked, this, &Window::logIn);
  connect(&m_password, &QLineEdit::returnPressed, &m_logIn, &QPushButton::click);
  connect(&m_refresh, &QPushButton::clicked, this, [this] { list(); });
  connect(&m_download, &QPushButton::clicked, this, &Window::askForDownload);
  connect(&m_save, &QPushButton::clicked, this, &Window::askForSave);
  connect(&m_rename, &QPushButton::clicked, this, &Window::askForRename);
  connect(&m_remove, &QPushButton::clicked, this, &Window::askForRemoval);
  connect(&m_giveUp, &QPushButton::clicked, this, [this] {
    m_task.activity = tr("Giving up");
    m_cloud.giveUp();
  });
  connect(&m_list, &QListWidget::itemSelectionChanged, this, &Window::enableButtons);
  connect(&m_progressTimer, &QTimer::timeout, this, &Window::showProgress);
  enableButtons();
}

void Window::logIn() {
  m_cloud.setEndPoint(m_endPoint.text());
  const auto call = [user = m_user.text(), password = m_password.text()](ITarnwellService& service) {
    return service.login(user, password);
  };
  start({tr("Logging in")}, call, [this](int result) {
    if (result == ResultFailed)
      return; // no answer, or a failure of the service: the list stays as it was
    m_isLoggedIn = result == ResultOk;
    m_maps.clear();
    m_list.clear();
    if (m_isLoggedIn)
      list();
  });
}

void Window::list(const QString& news) {
  // Only one thread at a time uses the list: the worker until the call has returned, then the window.
  const auto maps = std::make_shared<QList<MapInfo>>();
  const auto call = [maps](ITarnwellService& service) { return service.getDesktopMapsList(false, *maps); };
  start({tr("Listing")}, call, [this, maps, news](int result) {
    if (result == ResultOk)
      showMaps(*maps);
    showStatus(QString(news + ' ' + m_status.text()).trimmed());
  });
}

void Window::showMaps(const QList<MapInfo>& maps) {
  const MapInfo before = selected();
  const int row = m_list.currentRow();
  const QSignalBlocker blocker(m_list); // the buttons change once, when the list is complete
  m_maps = maps;
  m_list.clear();
  // Names get two lines, whatever their length.
  const QSize size = thumbnailSize + QSize(8, 8 + 2 * m_list.fontMetrics().lineSpacing());
  for (const MapInfo& map : maps) {
    auto* const item = new QListWidgetItem(thumbnail(map, devicePixelRatioF()), map.mapName(), &m_list);
    item->setSizeHint(size);
    item->setToolTip(tip(map.mapName()));
    if (isSameMap(map, before))
      m_list.setCurrentItem(item);
  }
  if (row >= 0 && m_list.currentRow() < 0) // the selected map was deleted: select the one in its place
    m_list.setCurrentRow(std::min(row, m_list.count() - 1));
  showStatus(tr("Maps: %1").arg(maps.size()));
}

void Window::download(const QString& file) {
  const auto map = std::make_shared<MapInfo>(selected());
  const auto call = [map](ITarnwellService& service) { return service.getMap(*map); };
  const Task task{tr("Downloading"), Task::Reads, wireSize(m_sizes.value(map->mapID()))};
  start(task, call, [this, map, file](int result) {
    if (result != ResultOk)
      return;
    m_sizes[map->mapID()] = static_cast<int>(map->mapContent().size());
    const bool isWritten = write(file, map->mapContent());
    showStatus((isWritten ? tr("Downloaded to %1") : tr("Cannot write %1")).arg(file));
  });
}

void Window::save(const QString& file, const MapInfo& map, bool isForced) {
  // saveMap would upload a file that cannot be opened as an empty map.
  if (!QFileInfo(file).isReadable()) {
    m_status.setText("Cannot read " + file);
    return;
  }
  const auto saved = std::make_shared<MapInfo>(map);
  const QByteArray preview = thumbnailOf(file);
  const auto call = [saved, file, preview, isForced](ITarnwellService& service) {
    return service.saveMap(file, *saved, preview, isForced);
  };
  const Task task{tr("Saving"), Task::Changes, wireSize(QFileInfo(file).size() + preview.size())};
  start(task, call, [this, saved, file, map](int result) {
    if (result == ResultFileExists)
      askAboutConflict(file, map);
    if (result != ResultOk)
      return;
    m_sizes[saved->mapID()] = static_cast<int>(saved->mapContent().size());
    list(tr("Saved."));
  });
}

void Window::rename(const QString& newName) {
  const auto map = std::make_shared<MapInfo>(selected());
  const auto call = [map, newName](ITarnwellService& service) { return service.renameMap(*map, newName); };
  start({tr("Renaming"), Task::Changes}, call, [this](int result) {
    if (result == ResultOk)
      list(tr("Renamed."));
  });
}

void Window::remove() {
  const auto map = std::make_shared<MapInfo>(selected());
  const auto call = [map](ITarnwellService& service) { return service.deleteMap(*map); };
  start({tr("Deleting"), Task::Changes}, call, [this](int result) {
    if (result == ResultOk || result == ResultMapRemoved)
      list(result == ResultOk ? tr("Deleted.") : explanation(result));
  });
}

void Window::askForDownload() {
  auto* const dialog = new QFileDialog(this, tr("Download to"));
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->setAcceptMode(QFileDialog::AcceptSave);
  dialog->selectFile(fileName(selected()));
  connect(dialog, &QFileDialog::fileSelected, this, &Window::download);
  dialog->open();
}

void Window::askForSave() {
  auto* const dialog = new QFileDialog(this, tr("Save to the cloud"));
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->setFileMode(QFileDialog::ExistingFile);
  connect(dialog, &QFileDialog::fileSelected, this, [this](const QString& file) {
    // If a map of this name is stored, save that one again: the window then asks whether to overwrite it.
    const QString name = QFileInfo(file).completeBaseName();
    const auto stored =
        std::find_if(m_maps.cbegin(), m_maps.cend(), [&](const MapInfo& m) { return m.mapName() == name; });
    MapInfo map = stored != m_maps.cend() ? *stored : MapInfo();
    map.setMapName(name);
    save(file, map, false);
  });
  dialog->open();
}

void Window::askAboutConflict(const QString& file, const MapInfo& map) {
  QMessageBox* const dialog = question(tr("Save to the cloud"), tr("\"%1\" is already stored."), map);
  connect(dialog->addButton(tr("&Overwrite"), QMessageBox::AcceptRole), &QPushButton::clicked, this,
          [this, file, map] { save(file, map, true); });
  connect(dialog->addButton(tr("Other &name..."), QMessageBox::AcceptRole), &QPushButton::clicked, this,
          [this, file, map] {
            askForText(tr("Save as"), map.mapName() + " 2", [this, file](const QString& name) {
              MapInfo copy; // without an identifier: a new map
              copy.setMapName(name);
              save(file, copy, false);
            });
          });
  dialog->open();
}

void Window::askForRename() {
  askForText(tr("New name"), selected().mapName(), [this](const QString& name) { rename(name); });
}

void Window::askForRemoval() {
  QMessageBox* const dialog = question(tr("Delete"), tr("Delete \"%1\" from the cloud?"), selected());
  connect(dialog->addButton(tr("&Delete"), QMessageBox::DestructiveRole), &QPushButton::clicked, this, &Window::remove);
  dialog->open();
}

QMessageBox* Window::question(const QString& title, const QString& text, const MapInfo& map) {
  constexpr int width = 300; // pixels of a name
  auto* const dialog = new QMessageBox(this);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->setWindowTitle(title);
  dialog->setIcon(QMessageBox::Question);
  // Anybody may have named the map: its name gets one line, and is no HTML.
  dialog->setTextFormat(Qt::PlainText);
  dialog->setText(text.arg(fontMetrics().elidedText(map.mapName().simplified(), Qt::ElideMiddle, width)));
  // Otherwise Qt would take the first button that overwrites or deletes for the default.
  dialog->setStandardButtons(QMessageBox::Cancel);
  dialog->setDefaultButton(QMessageBox::Cancel);
  return dialog;
}

void Window::askForText(const QString& label, const QString& value, const std::function<void(const QString&)>& use) {
  auto* const dialog = new QInputDialog(this);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->setLabelText(label);
  dialog->setTextValue(value);
  connect(dialog, &QInputDialog::textValueSelected, this, use);
  dialog->open();
}

void Window::start(const Task& task, const Cloud::Call& call, const Cloud::Done& done) {
  m_task = task;
  m_cloud.start(call, [this, done](int result) {
    m_progressTimer.stop();
    showResult(result);
    done(result);
    enableButtons();
  });
  m_progressTimer.start(period);
  m_progress.setRange(0, 0); // until percent are known
  showStatus(m_task.activity);
  enableButtons();
}

void Window::showProgress() {
  const tarnwell::CallProgress progress = m_cloud.progress();
  const qint64 bytes = std::max(progress.acknowledged, progress.received);
  showStatus(tr("%1: %2").arg(m_task.activity, QLocale().formattedDataSize(bytes)));
  if (m_task.size == 0)
    return;
  m_progress.setRange(0, 100);
  m_progress.setValue(static_cast<int>(std::min<qint64>(bytes * 100 / m_task.size, 100)));
}

void Window::showResult(int result) {
  if (result != ResultFailed || !m_cloud.hasGivenUp())
    return showStatus(explanation(result));
  showStatus(m_task.kind == Task::Changes ? tr("Given up. The service may have done it nevertheless.")
                                          : tr("Given up."));
}

void Window::showStatus(const QString& text) {
  m_status.setText(text);
  m_status.setToolTip(tip(text));
}

void Window::enableButtons() {
  const bool isBusy = m_cloud.isBusy();
  QWidget* const focus = focusWidget();
  const bool hasMovedFocus = focus != m_focusWhileBusy && focus != &m_giveUp;
  m_logIn.setEnabled(!isBusy);
  for (QPushButton* button : {&m_refresh, &m_save})
    button->setEnabled(!isBusy && m_isLoggedIn);
  for (QPushButton* button : {&m_download, &m_rename, &m_remove})
    button->setEnabled(!isBusy && !m_list.selectedItems().isEmpty());
  m_progress.setVisible(isBusy);
  m_giveUp.setVisible(isBusy);

  // Qt moves the focus away from a button that is disabled. It comes back after the call, unless the user has moved it.
  if (isBusy && m_focusBefore == nullptr) {
    m_focusBefore = focus;
    m_focusWhileBusy = focusWidget();
  }
  if (isBusy || m_focusBefore == nullptr)
    return;
  if (!hasMovedFocus)
    m_focusBefore->setFocus();
  m_focusBefore = nullptr;
}

MapInfo Window::selected() const {
  const QList<QListWidgetItem*> items = m_list.selectedItems();
  return items.isEmpty() ? MapInfo() : m_maps.value(m_list.row(items.first()));
}
