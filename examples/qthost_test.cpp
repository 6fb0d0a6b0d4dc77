// Uses the example's window as a person does, against a local service of its own and against one that stays silent:
//   qthost_test PREVIEWS    a folder of three PNG
#include "qthost/Window.h"

#include <QtCore/QDir>
#include <QtCore/QProcess>
#include <QtCore/QRandomGenerator>
#include <QtCore/QTemporaryDir>
#include <QtNetwork/QTcpServer>
#include <QtTest/QTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QInputDialog>
#include <QtWidgets/QMessageBox>
#include <stdexcept>
#include <unistd.h>

/// Qt's platform plug-in leaks its screen; anything else that is leaked fails the test under the sanitizer.
extern "C" [[gnu::visibility("default")]] const char* __lsan_default_suppressions() { return "leak:libqoffscreen.so"; }

namespace {

constexpr int patience = 300000; // milliseconds; nothing takes that long on a loaded machine either
constexpr int quickExit = 2;     // the status when a Cloud has ended the process, which is no success of the test

/// The example's window and the hands that use it.
struct Desk {
  Cloud cloud{TARNWELL_PLUGIN};
  Window window{cloud, {}};
  QListWidget& list = *window.findChild<QListWidget*>();
  QProgressBar& progress = *window.findChild<QProgressBar*>();
  const QWidget* focus = nullptr; // has it when no call is running
  int width = 0;                  // of the window

  Desk() {
    check(cloud.error().isEmpty(), cloud.error());
    window.show();
    width = window.width();
  }

  QString status() const { return window.findChild<QLabel*>("status")->text(); }
  void check(bool isTrue, const QString& what) const {
    if (!isTrue)
      throw std::runtime_error(qPrintable(what + "; the window says: " + status()));
  }
  void press(const QString& text) {
    for (auto* const button : window.findChildren<QPushButton*>()) {
      if (button->isVisible() && button->isEnabled() && button->text().remove('&') == text)
        return press(button);
    }
    check(false, "no button " + text);
  }
  void press(QPushButton* button) {
    QTest::mouseClick(button, Qt::LeftButton);
    if (button->window() == &window && button->text() != "&Give up")
      focus = button;
  }
  /// The question that the window asks about a map is plain text, and the return key answers it with Cancel.
  void pressReturn(const QString& text) {
    auto& dialog = *window.findChild<QMessageBox*>();
    check(dialog.text() == text && dialog.textFormat() == Qt::PlainText, "asks: " + dialog.text());
    QTest::keyClick(&dialog, Qt::Key_Return);
    qApp->sendPostedEvents(nullptr, QEvent::DeferredDelete);
    check(!cloud.isBusy() && window.findChild<QMessageBox*>() == nullptr, "the return key cancels");
  }
  void await(const QString& expected) {
    check(QTest::qWaitFor([this] { return !cloud.isBusy(); }, patience), "no end");
    check(status().contains(expected), "expected: " + expected);
    check(window.focusWidget() == focus, "the focus is where it was");
    qApp->sendPostedEvents(nullptr, QEvent::LayoutRequest);
    check(window.width() == width, "the window is as wide as it was");
  }
  void logIn(const QString& endPoint, const QString& password) {
    const QStringList values{endPoint, "anna", password};
    for (int i = 0; i < values.size(); ++i)
      window.findChildren<QLineEdit*>()[i]->setText(values[i]);
    press("Log in");
  }
  /// Chooses `file`, or cancels when it is empty; returns the file that the window has proposed.
  QString choose(const QString& button, const QString& file) {
    press(button);
    auto* const dialog = window.findChild<QFileDialog*>();
    const QString proposed = dialog->selectedFiles().value(0);
    dialog->selectFile(file);
    file.isEmpty() ? dialog->reject() : static_cast<QDialog*>(dialog)->accept();
    qApp->sendPostedEvents(nullptr, QEvent::DeferredDelete);
    return proposed;
  }
  void type(const QString& button, const QString& text) {
    press(button);
    auto* const dialog = window.findChild<QInputDialog*>();
    dialog->setTextValue(text);
    dialog->accept();
    qApp->sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }
  void select(const QString& name) { list.setCurrentItem(list.findItems(name, Qt::MatchExactly).value(0)); }
  QString names() const {
    QStringList names;
    for (int i = 0; i < list.count(); ++i)
      names += list.item(i)->text();
    names.sort();
    return names.join(", ");
  }
};

void awaitPhase(Cloud& cloud, tarnwell::CallProgress::Phase phase) {
  if (!QTest::qWaitFor([&] { return cloud.progress().phase == phase; }, patience))
    throw std::runtime_error("the call does not begin");
}

QByteArray read(const QString& name) {
  QFile file(name);
  return file.open(QIODevice::ReadOnly) ? file.readAll() : "no such file";
}

QString write(const QString& name, const QByteArray& bytes) {
  QFile file(name);
  if (file.open(QIODevice::WriteOnly))
    file.write(bytes);
  return name;
}

void useMaps(Desk& desk, const QString& endPoint, const QDir& maps) {
  desk.logIn(endPoint, "wrong");
  desk.await("does not know this user name");
  desk.logIn(endPoint, "secret");
  desk.await("Maps: 0");
  for (const QString& file : maps.entryList({"*.twlx"})) {
    desk.choose("Save...", maps.filePath(file));
    desk.await("Saved. Maps: ");
  }
  desk.check(desk.names() == "Garden year, Quarterly plan, Reading list", "three maps");
  desk.select("Garden year");
  const QImage preview = desk.list.currentItem()->icon().pixmap(QSize(160, 100)).toImage();
  const auto rgb = QImage::Format_RGB32;
  desk.check(preview.convertToFormat(rgb) == QImage(maps.filePath("Garden year.png")).convertToFormat(rgb), "preview");

  const QString file = maps.filePath("Garden year.twlx");
  const QString longName = maps.filePath(QString(200, 'w'));
  desk.choose("Download...", longName);
  desk.await("Downloaded to " + longName);
  desk.check(read(longName) == read(file), "the same bytes");
  write(file, "shorter");
  desk.choose("Save...", file);
  desk.await("already stored");
  desk.pressReturn("\"Garden year\" is already stored.");
  desk.choose("Save...", file);
  desk.await("already stored");
  desk.press("Overwrite");
  desk.await("Saved. Maps: 3");
  desk.choose("Download...", maps.filePath("second"));
  desk.await("Downloaded");
  desk.check(read(maps.filePath("second")) == "shorter", "overwritten");
  desk.choose("Save...", file);
  desk.await("already stored");
  desk.type("Other name...", "Second garden");
  desk.await("Saved. Maps: 4");
  desk.select("Second garden");
  const QString forged = "../<h1>Done</h1> %1 & &amp;";
  desk.type("Rename...", forged);
  desk.await("Renamed. Maps: 4");
  desk.check(desk.names() == forged + ", Garden year, Quarterly plan, Reading list", "renamed");
  desk.select(forged);
  desk.check(desk.list.currentItem()->toolTip().contains("&lt;h1&gt;"), "a tool tip without HTML");
  desk.check(desk.choose("Download...", {}).endsWith("/.._<h1>Done<_h1> %1 & &amp;.twlx"), "a file in the folder");
  desk.press("Delete...");
  desk.pressReturn("Delete \"" + forged + "\" from the cloud?");
  desk.press("Delete...");
  desk.press("Delete");
  desk.await("Deleted. Maps: 3");
}

void giveUp(Desk& desk, const QString& endPoint, const QString& silent, const QString& largeFile) {
  desk.logIn(silent, "secret");
  awaitPhase(desk.cloud, tarnwell::CallProgress::Connected);
  desk.press("Give up");
  desk.await("Given up.");
  desk.check(!desk.status().contains("nevertheless"), "a login changes nothing");

  desk.choose("Save...", largeFile);
  const auto percent = [&] { return desk.progress.maximum() == 100 ? desk.progress.value() : 0; };
  desk.check(QTest::qWaitFor([&] { return percent() > 0; }, patience), "some percent");
  desk.check(percent() < 100 && desk.status().contains(QRegularExpression("Saving: [1-9].* [KM]iB")), "bytes");
  desk.press("Give up");
  desk.await("Given up. The service may have done it nevertheless.");

  desk.logIn(endPoint, "secret");
  desk.await("Maps: 3");
  desk.logIn(silent, "secret"); // in which the window is closed
  awaitPhase(desk.cloud, tarnwell::CallProgress::Connected);
}

void run(const QDir& previews) {
  const QTemporaryDir folder;
  const QDir maps(folder.path());
  QByteArray large(1000000, 0);
  QRandomGenerator(7).generate(large.begin(), large.end());
  for (const QString& file : previews.entryList({"*.png"})) {
    QFile::copy(previews.filePath(file), maps.filePath(file));
    write(maps.filePath(QFileInfo(file).completeBaseName() + ".twlx"), large);
  }
  const QString largeFile = write(maps.filePath("large"), large);
  const auto* const pixels = reinterpret_cast<const uchar*>(large.constData());
  QImage(pixels, 320, 200, QImage::Format_RGB32).save(maps.filePath("Garden year.png"));

  QProcess service;
  service.start(TARNWELL_LOCALSERVICE, {"--db", maps.filePath("db"), "--add-account", "anna"});
  service.write("secret\n");
  service.closeWriteChannel();
  service.waitForFinished(patience);
  service.start(TARNWELL_LOCALSERVICE, {"--db", maps.filePath("db"), "--listen", "127.0.0.1:0"});
  while (!service.canReadLine() && service.waitForReadyRead(patience)) {
  }
  const QString endPoint = QString::fromUtf8(service.readLine()).trimmed();
  QTcpServer silent; // the kernel takes connections for it; nobody reads or answers
  silent.listen(QHostAddress::LocalHost);
  silent.pauseAccepting();

  {
    Desk desk;
    useMaps(desk, endPoint, maps);
    giveUp(desk, endPoint, QString("http://127.0.0.1:%1/").arg(silent.serverPort()), largeFile);
  }
  QProcess other;
  other.start(QApplication::applicationFilePath(), {"quit"});
  if (!other.waitForFinished(patience) || other.exitCode() != quickExit)
    throw std::runtime_error("quitting without a connection failed");
  service.terminate();
  service.waitForFinished(patience);
}

/// Quits in a call that has no connection which could be ended, as in a name look-up.
int quit() {
  Cloud cloud(TARNWELL_PLUGIN);
  cloud.setEndPoint("http://127.0.0.1/");
  cloud.start([](ITarnwellService&) { return pause(); }, {});
  awaitPhase(cloud, tarnwell::CallProgress::NotConnected);
  return 0; // not reached: the Cloud ends the process
}

} // namespace

int main(int argc, char** argv) try {
  std::at_quick_exit([] { std::_Exit(quickExit); });
#if QT_VERSION_MAJOR < 6 // later it is always so
  QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
#endif
  const QApplication application(argc, argv);
  if (QApplication::arguments().value(1) == "quit")
    return quit();
  run(QDir(QApplication::arguments().value(1)));
  return 0;
} catch (const std::exception& failure) {
  fprintf(stderr, "qthost_test: %s\n", failure.what());
  return 1;
}
