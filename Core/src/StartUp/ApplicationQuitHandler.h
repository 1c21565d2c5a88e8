#pragma once

#include "CoreExport.h"

#include <QMutex>
#include <QObject>

namespace corvane {
namespace base {
namespace business {

/**
 * Installed as event filter of a GUI application: on QEvent::Quit it takes the managers down
 * (once; a second quit only quits) and quits. Events are never swallowed.
 */
class CORE_EXPORT ApplicationQuitHandler : public QObject
{
    Q_OBJECT

public:
    /// Creates the handler as a child of parent, usually the application it filters.
    explicit ApplicationQuitHandler(QObject* parent = nullptr);

    /// On QEvent::Quit takes the managers down (once) and quits; always answers false.
    bool eventFilter(QObject* watched, QEvent* event) override;

    /// Deinitializes and unregisters the start-up manager if it is still registered; a
    /// failure is logged by reporter as "deinitialize of startUpManager failed.".
    static void takeDownManagers(const QObject* reporter);

private:
    QMutex mutex;
    // Set while a quit event is handled: Qt 6's quit() sends the quit event straight back.
    bool quitting = false;
};

} // namespace business
} // namespace base
} // namespace corvane
