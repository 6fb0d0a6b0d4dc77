#include "Cloud.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QLibrary>
#include <QtCore/QUrl>
#include <cstdlib>

namespace {

constexpr int period = 50;     // milliseconds between two attempts to end a call
constexpr int patience = 1000; // milliseconds that a call has for ending when the program quits

} // namespace

Cloud::Cloud(const QString& plugin) {
  QLibrary library(plugin);
  const auto factory = reinterpret_cast<ITarnwellService* (*)()>(library.resolve("_Z14serviceFactoryv"));
  if (factory == nullptr) {
    m_error = library.errorString();
    return;
  }
  m_service.reset(factory());

  // A call may connect more than once: it is ended until it has returned.
  m_ender.setInterval(period);
  connect(&m_ender, &QTimer::timeout, this, [this] { m_monitor->endCall(); });
  m_worker.moveToThread(&m_thread);
  m_thread.start();
}

Cloud::~Cloud() {
  m_thread.quit(); // once the call has returned
  QElapsedTimer timer;
  timer.start();
  while (!m_thread.wait(period)) {
    m_monitor->endCall();
    // In the look-up of a name there is no connection to end. Nothing may be destroyed under the thread.
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
    m_ender.stop();
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
  m_ender.start();
}
