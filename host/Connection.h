// Where the service is and how it is reached: the options of every command, and a service set up by them. One thread.
#pragma once

#include "host/Outcome.h"
#include "service/ITarnwellService.h"

#include <QtCore/QCommandLineParser>
#include <memory>

namespace tarnwell {

/// The options that every command takes.
[[nodiscard]] QList<QCommandLineOption> connectionOptions();

/// Loads the plug-in and points a new service at the endpoint and proxy that `options` name; sends nothing. Returns a
/// UsageError or LocalError, with `service` of no use, when an option cannot be followed.
[[nodiscard]] Outcome openService(const QCommandLineParser& options, std::unique_ptr<ITarnwellService>& service);

} // namespace tarnwell
