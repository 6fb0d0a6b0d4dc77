// The trace of --trace FOLDER: one readable file for each request and its response. Any thread.
#pragma once

#include "localservice/ReadableMessage.h"
#include "localservice/RequestLog.h"

#include <QtCore/QString>
#include <mutex>

namespace localservice {

/// What one connection has received and sent.
struct TracedExchange {
  ReadableMessage request;
  ReadableMessage response;
};

/// The folder. It keeps the newest 1000 files.
class Trace {
public:
  /// Makes the folder, if its parent exists, for its owner alone. Throws std::runtime_error, with a text for people.
  explicit Trace(const std::string& folderName);

  /// Writes a file for `exchange`, which `entry` describes; its name begins with the time. A failure is a message on
  /// standard error.
  void write(TracedExchange& exchange, const LogEntry& entry);

private:
  void removeOldest() const;

  const QString folder;
  std::mutex mutex;
};

} // namespace localservice
