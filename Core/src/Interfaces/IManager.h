#pragma once

#include "CoreExport.h"

#include <QObject>
#include <QString>

namespace corvane {
namespace base {
namespace interfaces {

/// Common surface of the framework's managers; each is a process-wide singleton.
class CORE_EXPORT IManager : public QObject
{
    Q_OBJECT

public:
    /// Creates the manager as a child of parent (managers are usually created without one).
    explicit IManager(QObject* parent = nullptr) : QObject(parent) { }
    ~IManager() override = default;

    /// Brings the manager into service; a failure is thrown as the manager's exception.
    virtual void initialize() = 0;
    /// Releases what initialize() acquired; the manager can be initialized again afterwards.
    virtual void deinitialize() = 0;
    /// Writes the manager's name, its class name without namespace (for example "PluginManager").
    virtual void getName(QString& name) = 0;
    /// Writes the manager's version text ("1.0.0").
    virtual void getVersion(QString& version) = 0;
};

} // namespace interfaces
} // namespace base
} // namespace corvane

Q_DECLARE_INTERFACE(corvane::base::interfaces::IManager, "de.corvane.Manager/1.0")
