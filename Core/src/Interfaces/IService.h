#pragma once

#include "CoreExport.h"

#include <QObject>
#include <QString>

namespace corvane {
namespace base {
namespace interfaces {

/**
 * Base of every service that a plug-in offers. It is deliberately not an IManager, so a
 * service can never be registered as a manager. A service names the interfaces it implements
 * with Q_INTERFACES; the service manager finds it by any of their ids.
 */
class CORE_EXPORT IService : public QObject
{
    Q_OBJECT

public:
    /// Creates the service as a child of parent.
    explicit IService(QObject* parent = nullptr) : QObject(parent) { }
    ~IService() override = default;

    /// Brings the service into service; its plug-in calls it when it starts.
    virtual void initialize() = 0;
    /// Takes the service out of service; its plug-in calls it when it stops.
    virtual void deinitialize() = 0;
    /// Writes the service's name, its key at the service manager.
    virtual void getName(QString& name) = 0;
    /// Writes the service's version text.
    virtual void getVersion(QString& version) = 0;
};

} // namespace interfaces
} // namespace base
} // namespace corvane
