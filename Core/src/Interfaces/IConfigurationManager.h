#pragma once

#include "Configuration/ApplicationInformation.h"
#include "Configuration/PluginConfiguration.h"
#include "Interfaces/IManager.h"

#include <QList>

namespace corvane {
namespace base {
namespace interfaces {

/// Hands out what the application's configuration file says.
class CORE_EXPORT IConfigurationManager : public IManager
{
    Q_OBJECT

public:
    /// Creates the manager as a child of parent.
    explicit IConfigurationManager(QObject* parent = nullptr) : IManager(parent) { }
    ~IConfigurationManager() override = default;

    /// Replaces the content of configurations with the plug-in entries of the file, in file order.
    virtual void getPluginConfiguration(QList<entities::PluginConfiguration>& configurations) = 0;
    /// Copies what the file says about the application into information.
    virtual void getApplicationInformation(entities::ApplicationInformation& information) = 0;
    /// Checks the configuration file against its signature; throws when it does not match.
    virtual void checkConfigurationFileSignature() const = 0;
};

} // namespace interfaces
} // namespace base
} // namespace corvane

Q_DECLARE_INTERFACE(corvane::base::interfaces::IConfigurationManager,
                    "de.corvane.ConfigurationManager/1.0")
