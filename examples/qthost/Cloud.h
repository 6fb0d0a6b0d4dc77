// Calls the service in a thread of its own, for a host's windows. Use all functions from the thread that made the
// object; none of them waits for the network. Only a `Call` runs on the worker thread.
#pragma once

#include "service/CallMonitor.h"
#include "service/ITarnwellService.h"

#include <QtCore/QObject>
#include <QtCore/QThread>
#include <QtCore/QTimer>
#include <functional>
#include <memory>

/// Loads the plug-in and makes one call at a time.
class Cloud : public QObject {
public:
  /// Runs on the worker thread, makes one call of the service and returns its result. It owns copies of all that it
  /// needs, and uses nothing of the window.
  using Call = std::function<int(ITarnwellService& service)>;
  /// Runs on the thread of the Cloud when the call has returned.
  using Done = std::function<void(int result)>;

  /// Loads the plug-in from the file `plugin`. When that fails, error() says why, and no other function may be called.
  explicit Cloud(const QString& plugin);
  /// Ends a running call and the thread, and does not call `Done`. Destroy this object last: when the call does not end
  /// within a second, the destructor ends the process.
  ~Cloud() override;

  QString error() const { return m_error; }

  /// Must not be called while a call is running.
  void setEndPoint(const QString& endPoint);
  /// Starts a call. Must not be called while another call is running.
  void start(const Call& call, const Done& done);
  bool isBusy() const { return m_isBusy; }

  /// How far the running call is.
  tarnwell::CallProgress progress() { return m_monitor->progress(); }
  /// Ends the running call: it returns ResultFailed soon, unless it has finished already.
  void giveUp();
  bool hasGivenUp() const { return m_hasGivenUp; }

private:
  QString m_error;
  std::unique_ptr<ITarnwellService> m_service;
  /// A new one for each endpoint, because it has the port.
  std::unique_ptr<tarnwell::CallMonitor> m_monitor = std::make_unique<tarnwell::CallMonitor>(80);
  bool m_isBusy = false;
  bool m_hasGivenUp = false;
  QTimer m_endTimer;
  QThread m_thread;
  /// Belongs to m_thread: functions that are invoked on it run there.
  QObject m_worker;
};
