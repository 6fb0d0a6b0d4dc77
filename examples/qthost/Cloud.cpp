#include "Cloud.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QLibrary>
#include <QtCore/QUrl>
#include <cstdlib>

namespace {

constexpr int period = 50;     // milliseconds between two attempts to end a call
constexpr int patience = 1000; // milliseconds for a call to end when the program quits

} // namespace

Cloud::Cloud(const QString& plugin) {
  QLibrary library(plugin);
  const auto factory = reinterpret_cast<ServiceFactory>(library.resolve(serviceFactoryName));
  if (factory == nullptr) {
    m_error = library.errorString();
    return;
  }
  m_service.reset(factory());

  // A call may open another connection: this timer ends each of them until the call has returned.
  m_endTimer.setInterval(period);
  connect(&m_endTimer, &QTimer::timeout, this, [this] { m_monitor->endCall(); });
  m_worker.moveToThread(&m_thread);
  m_thread.start();
}

Cloud::~Cloud() {
  m_thread.quit(); // once the call has returned
  QElapsedTimer timer;
  timer.start();
  while (!m_thread.wait(period)) {
    m_monitor->endCall();
    // A call that looks up a name has no connection to end. Its thread still uses the objects: destroy none.
    if (timer.elapsed() > patience)
      std::quick_exit(EXIT_SUCCESS);
  }
}

void Cloud::setEndPoint(const QString& endPoint) {
  m_service->setEndPoint(endPoint);
  m_monitor = std::make_unique<tarnwell::CallMonitor>(QUrl(endPoint).port(80));
}

void Cloud::start(const Call& call, const Done& done) {
  Q_ASSERT(!m_isBusy);
  m_isBusy = true;
  m_hasGivenUp = false;
  const auto finish = [this, done](int result) {
    m_endTimer.stop();
    m_isBusy = false;
    done(result);
  };
  const auto work = [this, call, finish] {
    int result = ResultFailed;
    {
      const tarnwell::CallMonitor::Watch watch(*m_monitor);
      result = call(*m_service);
    }
    const auto deliver = [finish, result] { finish(result); };
    QMetaObject::invokeMethod(this, deliver, Qt::QueuedConnection);
  };
  QMetaObject::invokeMethod(&m_worker, work, Qt::QueuedConnection);
}

void Cloud::giveUp() {
  if (!m_isBusy)
    return;
  m_hasGivenUp = true;
  m_monitor->endCall();
  m_endTimer.start();
}
