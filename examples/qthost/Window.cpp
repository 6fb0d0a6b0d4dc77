#include "Window.h"

#include "Results.h"

#include <QtCore/QFileInfo>
#include <QtCore/QLocale>
#include <QtCore/QSaveFile>
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

/// The preview as an icon. Any host may have saved the bytes: they need not be an image.
QIcon thumbnail(const MapInfo& map) {
  QPixmap pixmap;
  if (!pixmap.loadFromData(map.mapThumbnail())) {
    pixmap = QPixmap(thumbnailSize);
    pixmap.fill(Qt::lightGray);
  }
  return pixmap.scaled(thumbnailSize, Qt::KeepAspectRatio, Qt::SmoothTransformation);
}

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

Window::Window(Cloud& cloud, const QString& endPoint) : m_cloud(cloud), m_endPoint(endPoint) {
  setWindowTitle("Maps in the cloud");
  m_password.setEchoMode(QLineEdit::Password);
  m_list.setViewMode(QListView::IconMode);
  m_list.setIconSize(thumbnailSize);
  m_list.setSpacing(8);
  m_list.setWordWrap(true);
  m_list.setMovement(QListView::Static);
  m_list.setResizeMode(QListView::Adjust);
  m_status.setObjectName("status");
  m_progress.hide();
  m_giveUp.hide();

  auto* const form = new QFormLayout;
  form->addRow("Service", &m_endPoint);
  form->addRow("User", &m_user);
  form->addRow("Password", &m_password);
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
  connect(&m_refresh, &QPushButton::clicked, this, &Window::list);
  connect(&m_download, &QPushButton::clicked, this, &Window::askForDownload);
  connect(&m_save, &QPushButton::clicked, this, &Window::askForSave);
  connect(&m_rename, &QPushButton::clicked, this, &Window::askForRename);
  connect(&m_remove, &QPushButton::clicked, this, &Window::askForRemoval);
  connect(&m_giveUp, &QPushButton::clicked, this, [this] {
    m_activity = "Giving up";
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
  start("Logging in", 0, call, [this](int result) {
    if (result == ResultFailed)
      return; // no answer, or a failure of the service: the list stays as it was
    m_isLoggedIn = result == ResultOk;
    m_maps.clear();
    m_list.clear();
    if (m_isLoggedIn)
      list();
  });
}

void Window::list() {
  // Only one thread at a time uses the list: the worker until the call has returned, then the window.
  const auto maps = std::make_shared<QList<MapInfo>>();
  const auto call = [maps](ITarnwellService& service) { return service.getDesktopMapsList(false, *maps); };
  start("Listing", 0, call, [this, maps](int result) {
    if (result != ResultOk)
      return;
    const MapInfo before = selected();
    m_maps = *maps;
    m_list.clear();
    // Names get two lines, whatever their length.
    const QSize size = thumbnailSize + QSize(8, 8 + 2 * m_list.fontMetrics().lineSpacing());
    for (const MapInfo& map : qAsConst(m_maps)) {
      auto* const item = new QListWidgetItem(thumbnail(map), map.mapName(), &m_list);
      item->setSizeHint(size);
      if (isSameMap(map, before))
        m_list.setCurrentItem(item);
    }
    m_status.setText(m_maps.size() == 1 ? QString("1 map") : QString("%1 maps").arg(m_maps.size()));
  });
}

void Window::download(const QString& file) {
  const auto map = std::make_shared<MapInfo>(selected());
  const auto call = [map](ITarnwellService& service) { return service.getMap(*map); };
  start("Downloading", wireSize(m_sizes.value(map->mapID())), call, [this, map, file](int result) {
    if (result != ResultOk)
      return;
    m_sizes[map->mapID()] = map->mapContent().size();
    if (!write(file, map->mapContent()))
      m_status.setText("Cannot write " + file);
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
  start("Saving", wireSize(QFileInfo(file).size() + preview.size()), call, [this, saved, file, map](int result) {
    if (result == ResultFileExists)
      askAboutConflict(file, map);
    if (result != ResultOk)
      return;
    m_sizes[saved->mapID()] = saved->mapContent().size();
    list();
  });
}

void Window::rename(const QString& newName) {
  const auto map = std::make_shared<MapInfo>(selected());
  const auto call = [map, newName](ITarnwellService& service) { return service.renameMap(*map, newName); };
  start("Renaming", 0, call, [this](int result) {
    if (result == ResultOk)
      list();
  });
}

void Window::remove() {
  const auto map = std::make_shared<MapInfo>(selected());
  const auto call = [map](ITarnwellService& service) { return service.deleteMap(*map); };
  start("Deleting", 0, call, [this](int result) {
    if (result == ResultOk || result == ResultMapRemoved)
      list();
  });
}

void Window::askForDownload() {
  auto* const dialog = new QFileDialog(this, "Download to", selected().mapName() + ".twlx");
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->setAcceptMode(QFileDialog::AcceptSave);
  connect(dialog, &QFileDialog::fileSelected, this, &Window::download);
  dialog->open();
}

void Window::askForSave() {
  auto* const dialog = new QFileDialog(this, "Save to the cloud");
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
  auto* const dialog =
      new QMessageBox(QMessageBox::Question, "Save to the cloud",
                      QString("\"%1\" is already stored.").arg(map.mapName()), QMessageBox::Cancel, this);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  connect(dialog->addButton("Overwrite", QMessageBox::AcceptRole), &QPushButton::clicked, this,
          [this, file, map] { save(file, map, true); });
  connect(dialog->addButton("Other name...", QMessageBox::AcceptRole), &QPushButton::clicked, this, [this, file, map] {
    auto* const other = new QInputDialog(this);
    other->setAttribute(Qt::WA_DeleteOnClose);
    other->setLabelText("Save as");
    other->setTextValue(map.mapName() + " 2");
    connect(other, &QInputDialog::textValueSelected, this, [this, file](const QString& name) {
      MapInfo copy; // without an identifier: a new map
      copy.setMapName(name);
      save(file, copy, false);
    });
    other->open();
  });
  dialog->open();
}

void Window::askForRename() {
  auto* const dialog = new QInputDialog(this);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->setLabelText("New name");
  dialog->setTextValue(selected().mapName());
  connect(dialog, &QInputDialog::textValueSelected, this, &Window::rename);
  dialog->open();
}

void Window::askForRemoval() {
  auto* const dialog =
      new QMessageBox(QMessageBox::Question, "Delete",
                      QString("Delete \"%1\" from the cloud?").arg(selected().mapName()), QMessageBox::Cancel, this);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  connect(dialog->addButton("Delete", QMessageBox::DestructiveRole), &QPushButton::clicked, this, &Window::remove);
  dialog->open();
}

void Window::start(const QString& activity, qint64 size, const Cloud::Call& call, const Cloud::Done& done) {
  m_activity = activity;
  m_expected = size;
  m_cloud.start(call, [this, done](int result) {
    m_progressTimer.stop();
    showResult(result);
    done(result);
    enableButtons();
  });
  m_progressTimer.start(period);
  m_progress.setRange(0, 0); // until percent are known
  m_status.setText(m_activity);
  enableButtons();
}

void Window::showProgress() {
  const tarnwell::CallProgress progress = m_cloud.progress();
  const qint64 bytes = std::max(progress.acknowledged, progress.received);
  m_status.setText(QString("%1: %2").arg(m_activity, QLocale().formattedDataSize(bytes)));
  if (m_expected == 0)
    return;
  m_progress.setRange(0, 100);
  m_progress.setValue(static_cast<int>(std::min<qint64>(bytes * 100 / m_expected, 100)));
}

void Window::showResult(int result) {
  const bool isUnknown = result == ResultFailed && m_cloud.hasGivenUp();
  m_status.setText(isUnknown ? "Given up. The service may have done it nevertheless." : explanation(result));
}

void Window::enableButtons() {
  const bool isBusy = m_cloud.isBusy();
  m_logIn.setEnabled(!isBusy);
  for (QPushButton* button : {&m_refresh, &m_save})
    button->setEnabled(!isBusy && m_isLoggedIn);
  for (QPushButton* button : {&m_download, &m_rename, &m_remove})
    button->setEnabled(!isBusy && !m_list.selectedItems().isEmpty());
  m_progress.setVisible(isBusy);
  m_giveUp.setVisible(isBusy);
}

MapInfo Window::selected() const {
  const QList<QListWidgetItem*> items = m_list.selectedItems();
  return items.isEmpty() ? MapInfo() : m_maps.value(m_list.row(items.first()));
}
