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
    explicit IService(QObject* parent = nullptr) : QObject(parent) { }
    ~IService() override = default;

    virtual void initialize() = 0;
    virtual void deinitialize() = 0;
    virtual void getName(QString& name) = 0;
    virtual void getVersion(QString& version) = 0;
};

} // namespace interfaces
} // namespace base
} // namespace corvane
