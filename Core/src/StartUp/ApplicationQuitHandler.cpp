#include "StartUp/ApplicationQuitHandler.h"

#include "Interfaces/ILoggingManager.h"
#include "Interfaces/IStartUpManager.h"
#include "StartUp/ManagerRegistry.h"

#include <QCoreApplication>
#include <QEvent>
#include <QMutexLocker>
#include <QScopedValueRollback>

namespace corvane {
namespace base {
namespace business {

ApplicationQuitHandler::ApplicationQuitHandler(QObject* parent) : QObject(parent) { }

bool ApplicationQuitHandler::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Quit && !quitting) {
        QMutexLocker locker(&mutex);
        const QScopedValueRollback<bool> handling(quitting, true);
        takeDownManagers(this);
        QCoreApplication::quit();
    }
    return QObject::eventFilter(watched, event);
}

void ApplicationQuitHandler::takeDownManagers(const QObject* reporter)
{
    ManagerRegistry* registry = ManagerRegistry::instance();
    if (!registry->hasStartUpManager()) {
        return;
    }
    try {
        interfaces::IStartUpManager* startUpManager = registry->getStartUpManager();
        startUpManager->deinitialize();
        registry->unregisterManager(*startUpManager);
    } catch (...) {
        registry->getLoggingManager()->logError(
            reporter, QStringLiteral("deinitialize of startUpManager failed."));
    }
}

} // namespace business
} // namespace base
} // namespace corvane
