#include "Configuration/PluginConfiguration.h"

namespace corvane {
namespace base {
namespace entities {

PluginConfiguration::PluginConfiguration(QString library, QDomElement configuration)
    : library(std::move(library)), configuration(std::move(configuration))
{
}

void PluginConfiguration::getLibrary(QString& library) const
{
    library = this->library;
}

void PluginConfiguration::getConfiguration(QDomElement& configuration) const
{
    configuration = this->configuration;
}

bool PluginConfiguration::isEnabled() const
{
    return enabled;
}

void PluginConfiguration::setEnabled(bool enabled)
{
    this->enabled = enabled;
}

} // namespace entities
} // namespace base
} // namespace corvane
