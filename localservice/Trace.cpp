#include "localservice/Trace.h"

#include <QtCore/QDateTime>
#include <QtCore/QDir>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <iostream>
#include <stdexcept>
#include <sys/stat.h>

namespace localservice {

namespace {

constexpr int mostFiles = 1000;

} // namespace

Trace::Trace(const std::string& folderName) : folder(QString::fromStdString(folderName)) {
  if (mkdir(folderName.c_str(), S_IRWXU) != 0 && errno != EEXIST)
    throw std::runtime_error(folderName + ": " + std::strerror(errno));
  if (!QFileInfo(folder).isDir())
    throw std::runtime_error(folderName + ": not a folder");
}

void Trace::write(TracedExchange& exchange, const LogEntry& entry) {
  const QString operation = entry.operation.empty() ? "none" : QString::fromStdString(entry.operation);
  const QString port = QString::fromStdString(entry.client).section(':', -1);
  const std::string text = line(entry) + "\n" + exchange.request.text() + "\n" + exchange.response.text();

  const std::lock_guard<std::mutex> lock(mutex);
  const QString now = QDateTime::currentDateTimeUtc().toString("yyyyMMdd-HHmmss.zzz");
  const std::string name = (folder + "/" + now + "-" + port + "-" + operation + ".txt").toStdString();
  QFile file;
  const int descriptor = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
  const bool isWritten = descriptor >= 0 && file.open(descriptor, QIODevice::WriteOnly, QFile::AutoCloseHandle) &&
                         file.write(text.data(), static_cast<qint64>(text.size())) >= 0 && file.flush();
  if (!isWritten)
    std::cerr << "tarnwell-localservice: the trace " << name << " could not be written\n";
  removeOldest();
}

void Trace::removeOldest() const {
  QStringList files = QDir(folder).entryList({"[0-9]*-[0-9]*.[0-9]*-[0-9]*-*.txt"}, QDir::Files, QDir::Name);
  while (files.size() > mostFiles)
    QFile::remove(folder + "/" + files.takeFirst());
}

} // namespace localservice
