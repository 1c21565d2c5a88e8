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
    explicit IConfigurationManager(QObject* parent = nullptr) : IManager(parent) { }
    ~IConfigurationManager() override = default;

    virtual void getPluginConfiguration(QList<entities::PluginConfiguration>& configurations) = 0;
    virtual void getApplicationInformation(entities::ApplicationInformation& information) = 0;
    virtual void checkConfigurationFileSignature() const = 0;
};

} // namespace interfaces
} // namespace base
} // namespace corvane

Q_DECLARE_INTERFACE(corvane::base::interfaces::IConfigurationManager,
                    "de.corvane.ConfigurationManager/1.0")
