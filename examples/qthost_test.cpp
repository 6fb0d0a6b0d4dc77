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

  Desk() {
    check(cloud.error().isEmpty(), cloud.error());
    window.show();
  }

  QString status() const { return window.findChild<QLabel*>("status")->text(); }
  void check(bool isTrue, const QString& what) const {
    if (!isTrue)
      throw std::runtime_error(qPrintable(what + "; the window says: " + status()));
  }
  void press(const QString& text) {
    for (auto* const button : window.findChildren<QPushButton*>()) {
      if (button->isVisible() && button->isEnabled() && button->text() == text)
        return QTest::mouseClick(button, Qt::LeftButton);
    }
    check(false, "no button " + text);
  }
  void await(const QString& expected) {
    check(QTest::qWaitFor([this] { return !cloud.isBusy(); }, patience), "no end");
    check(status().contains(expected), "expected: " + expected);
  }
  void logIn(const QString& endPoint, const QString& password) {
    const QStringList values{endPoint, "anna", password};
    for (int i = 0; i < values.size(); ++i)
      window.findChildren<QLineEdit*>()[i]->setText(values[i]);
    press("Log in");
  }
  void choose(const QString& button, const QString& file) {
    press(button);
    auto* const dialog = window.findChild<QFileDialog*>();
    dialog->selectFile(file);
    static_cast<QDialog*>(dialog)->accept();
    qApp->sendPostedEvents(nullptr, QEvent::DeferredDelete);
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
  file.open(QIODevice::WriteOnly);
  file.write(bytes);
  return name;
}

void useMaps(Desk& desk, const QString& endPoint, const QDir& maps) {
  desk.logIn(endPoint, "wrong");
  desk.await("does not know this user name");
  desk.logIn(endPoint, "secret");
  desk.await("0 maps");
  for (const QString& file : maps.entryList({"*.twlx"})) {
    desk.choose("Save...", maps.filePath(file));
    desk.await(" map");
  }
  desk.check(desk.names() == "Garden year, Quarterly plan, Reading list", "three maps");
  desk.select("Garden year");
  const QImage preview = desk.list.currentItem()->icon().pixmap(160, 100).toImage();
  const auto rgb = QImage::Format_RGB32;
  desk.check(preview.convertToFormat(rgb) == QImage(maps.filePath("Garden year.png")).convertToFormat(rgb), "preview");

  const QString file = maps.filePath("Garden year.twlx");
  desk.choose("Download...", maps.filePath("first"));
  desk.await("Done");
  desk.check(read(maps.filePath("first")) == read(file), "the same bytes");
  write(file, "shorter");
  desk.choose("Save...", file);
  desk.await("already stored");
  desk.press("Overwrite");
  desk.await("3 maps");
  desk.choose("Download...", maps.filePath("second"));
  desk.await("Done");
  desk.check(read(maps.filePath("second")) == "shorter", "overwritten");
  desk.choose("Save...", file);
  desk.await("already stored");
  desk.type("Other name...", "Second garden");
  desk.await("4 maps");
  desk.select("Second garden");
  desk.type("Rename...", "Third garden");
  desk.await("4 maps");
  desk.check(desk.names() == "Garden year, Quarterly plan, Reading list, Third garden", "renamed");
  desk.select("Third garden");
  desk.press("Delete...");
  desk.press("Delete");
  desk.await("3 maps");
}

void giveUp(Desk& desk, const QString& endPoint, const QString& silent, const QString& largeFile) {
  desk.logIn(silent, "secret");
  awaitPhase(desk.cloud, tarnwell::CallProgress::Connected);
  desk.press("Give up");
  desk.await("Given up");

  desk.choose("Save...", largeFile);
  const auto percent = [&] { return desk.progress.maximum() == 100 ? desk.progress.value() : 0; };
  desk.check(QTest::qWaitFor([&] { return percent() > 0; }, patience), "some percent");
  desk.check(percent() < 100 && desk.status().contains(QRegularExpression("Saving: [1-9].* [KM]iB")), "bytes");
  desk.press("Give up");
  desk.await("Given up");

  desk.logIn(endPoint, "secret");
  desk.await("3 maps");
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
  const QApplication application(argc, argv);
  if (QApplication::arguments().value(1) == "quit")
    return quit();
  run(QDir(QApplication::arguments().value(1)));
  return 0;
} catch (const std::exception& failure) {
  fprintf(stderr, "qthost_test: %s\n", failure.what());
  return 1;
}
