#pragma once

#include "CoreExport.h"

#include <QDomElement>
#include <QString>

namespace corvane {
namespace base {
namespace entities {

/// One plug-in entry of the configuration file: its library name and its own
/// "configuration" element (a shared handle into the document; null when absent).
class CORE_EXPORT PluginConfiguration
{
public:
    /// An entry for the library name library with its "configuration" element (may be null).
    PluginConfiguration(QString library, QDomElement configuration);

    /// Copies the library name ("stem.dll") into library.
    void getLibrary(QString& library) const;
    /// Copies the handle of the plug-in's "configuration" element into configuration; null when absent.
    void getConfiguration(QDomElement& configuration) const;

    /// False for an entry written \<plugin enabled="false">: the plug-in is not loaded.
    bool isEnabled() const;
    /// Sets whether the plug-in is loaded.
    void setEnabled(bool enabled);

private:
    QString library;
    QDomElement configuration;
    bool enabled = true;
};

} // namespace entities
} // namespace base
} // namespace corvane
