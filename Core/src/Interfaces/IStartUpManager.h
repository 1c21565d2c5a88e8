#pragma once

#include "Interfaces/IManager.h"

namespace corvane {
namespace base {
namespace interfaces {

/// Brings the plug-in and service managers into service and takes them out again.
class CORE_EXPORT IStartUpManager : public IManager
{
    Q_OBJECT

public:
    /// Creates the manager as a child of parent.
    explicit IStartUpManager(QObject* parent = nullptr) : IManager(parent) { }
    ~IStartUpManager() override = default;

    /// Registers and initializes the plug-in manager, then the service manager.
    virtual void initManagers() = 0;
};

} // namespace interfaces
} // namespace base
} // namespace corvane

Q_DECLARE_INTERFACE(corvane::base::interfaces::IStartUpManager, "de.corvane.StartUpManager/1.0")
