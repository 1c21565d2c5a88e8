#pragma once

#include "CoreExport.h"

#include <QCoreApplication>
#include <QMutex>

class QSocketNotifier;

namespace corvane {
namespace base {
namespace business {

/**
 * The application object of a service. SIGTERM and SIGINT become a QEvent::Quit on the main
 * thread, which takes the managers down; SIGHUP re-reads the logging properties. The signal
 * handler only writes a byte to a socket pair, so a signal that arrives before the event loop
 * runs waits there and is honoured once it runs.
 */
class CORE_EXPORT CoreApplication : public QCoreApplication
{
    Q_OBJECT

public:
    /// Creates the application object and turns SIGTERM, SIGINT and SIGHUP into events of its loop.
    CoreApplication(int& argc, char** argv);
    ~CoreApplication() override;

    /// Takes the managers down on QEvent::Quit (once), then handles the event as QCoreApplication does.
    bool event(QEvent* event) override;

private:
    void handleSignal();

    QMutex mutex;
    // Set while a quit event is handled: Qt 6's quit() sends the quit event straight back.
    bool quitting = false;
    QSocketNotifier* signalNotifier = nullptr;
};

} // namespace business
} // namespace base
} // namespace corvane
