// The service on a thread of its own: what a host puts between its windows and the plug-in. All functions belong to the
// thread that made the object, and none of them waits for the network; only a `Call` runs on the worker thread.
#pragma once

#include "host/CallMonitor.h"
#include "service/ITarnwellService.h"

#include <QtCore/QObject>
#include <QtCore/QThread>
#include <QtCore/QTimer>
#include <functional>
#include <memory>

class Cloud : public QObject {
public:
  /// Runs on the worker thread and makes one call of the service; returns the call's result. It owns copies of what it
  /// needs and touches nothing of the window.
  using Call = std::function<int(ITarnwellService& service)>;
  /// Runs on the thread of the Cloud once the call has returned.
  using Done = std::function<void(int result)>;

  /// Loads the plug-in from the file `plugin`. When that fails, error() says why and nothing else may be called.
  explicit Cloud(const QString& plugin);
  /// Ends a call that is running, and its thread; `Done` is not called any more. To be destroyed last: when the call
  /// does not end within a second, the process ends here.
  ~Cloud() override;

  QString error() const { return m_error; }

  /// Not while a call is running.
  void setEndPoint(const QString& endPoint);
  /// One call at a time: not while another one is running.
  void start(const Call& call, const Done& done);
  bool isBusy() const { return m_isBusy; }

  /// How far the running call is.
  tarnwell::CallProgress progress() { return m_monitor->progress(); }
  /// Ends the running call: it returns ResultFailed soon, as far as it had not finished.
  void giveUp();
  bool hasGivenUp() const { return m_hasGivenUp; }

private:
  QString m_error;
  std::unique_ptr<ITarnwellService> m_service;
  /// Made anew for each endpoint: it knows the port.
  std::unique_ptr<tarnwell::CallMonitor> m_monitor = std::make_unique<tarnwell::CallMonitor>(80);
  bool m_isBusy = false;
  bool m_hasGivenUp = false;
  QTimer m_ender;
  QThread m_thread;
  /// Lives in m_thread: what is invoked on it runs there.
  QObject m_worker;
};
