#pragma once

#include "Interfaces/IStartUpManager.h"

#include <QMutex>

namespace corvane {
namespace base {
namespace interfaces {
class ILoggingManager;
}
namespace business {

/**
 * Brings the plug-in and service managers into service, after the logging and configuration
 * managers, and takes them out again. Create it only once the logging manager is registered.
 */
class CORE_EXPORT StartUpManager : public interfaces::IStartUpManager
{
    Q_OBJECT
    Q_INTERFACES(corvane::base::interfaces::IManager corvane::base::interfaces::IStartUpManager)

public:
    /// The process-wide manager, created on first call.
    static StartUpManager* instance();

    ~StartUpManager() override;

    /// Makes the application's folder the current one, then initManagers().
    void initialize() override;
    /// Unregisters and deinitializes the plug-in manager, then the service manager.
    void deinitialize() override;
    void getName(QString& name) override;
    void getVersion(QString& version) override;
    void initManagers() override;

protected:
    /// For subclasses; the process-wide manager comes from instance().
    StartUpManager();

private:
    Q_DISABLE_COPY(StartUpManager)

    interfaces::ILoggingManager* loggingManager;
    QMutex mutex;
};

} // namespace business
} // namespace base
} // namespace corvane
