#pragma once

#include "Configuration/ApplicationInformation.h"
#include "Configuration/PluginConfiguration.h"
#include "Interfaces/IConfigurationManager.h"

#include <QList>
#include <QStringList>

class QDomElement;

namespace corvane {
namespace base {
namespace interfaces {
class ILoggingManager;
}
namespace business {

/**
 * Reads the application's XML configuration file once, at initialize(), and hands out copies
 * of what it says. The file is "<executable folder>/<executable base name>.xml", or the
 * path after "-C" on the command line, taken relative to the executable's folder. The path is
 * fixed when the manager is created, so the command line must be in place by then.
 *
 *     <config>
 *       <information>
 *         <applicationname>Demo</applicationname>
 *         <applicationtype>GUI</applicationtype>   <!-- GUI, CONSOLE or SERVICE -->
 *         <releasedate>2016-03-01</releasedate>
 *         <singleappid>demo</singleappid>
 *       </information>
 *       <plugins>
 *         <plugin><library>Hello</library><configuration>...</configuration></plugin>
 *       </plugins>
 *     </config>
 */
class CORE_EXPORT ConfigurationManager : public interfaces::IConfigurationManager
{
    Q_OBJECT
    Q_INTERFACES(
        corvane::base::interfaces::IManager corvane::base::interfaces::IConfigurationManager)

public:
    /// The process-wide manager, created on first call; its file's path is fixed then.
    static ConfigurationManager* instance();

    ~ConfigurationManager() override;

    /// Reads the configuration file and logs what it says; throws ConfigurationManagerException
    /// when the file cannot be opened, is no XML or has no "config" root.
    void initialize() override;
    /// Forgets the plug-in entries; the application information stays.
    void deinitialize() override;
    void getName(QString& name) override;
    void getVersion(QString& version) override;
    void getPluginConfiguration(QList<entities::PluginConfiguration>& configurations) override;
    void getApplicationInformation(entities::ApplicationInformation& information) override;
    /// Throws InvalidSignatureException when the file does not match its ".sig" companion.
    void checkConfigurationFileSignature() const override;

    // The steps of reading, open to the framework runner, which reads the application type
    // before any application object or manager exists.

    /// The configuration file of the executable applicationFilePath: its folder + "/" + the value
    /// after "-C" in arguments, else its folder + "/" + its base name + ".xml".
    static QString getFilePath(const QString& applicationFilePath, const QStringList& arguments);
    /// Opens and parses path; returns an error text, empty on success.
    static QString getRootElement(const QString& path, QDomElement& root);
    /// Reads every "information" and "plugins" section; skips whatever it does not know.
    static void readConfig(const QDomElement& root, entities::ApplicationInformation& information,
                           QList<entities::PluginConfiguration>& pluginConfigurations);

    /// Elements nested deeper than this are refused before the DOM parser, which recurses.
    static constexpr int maximumNestingDepth = 1000;
    /// Configuration files larger than this (bytes) are refused unread.
    static constexpr qint64 maximumFileSize = 1024 * 1024;
    /// Documents whose text and attribute values, entities expanded, hold more characters than
    /// this are refused before the DOM parser builds them.
    static constexpr qint64 maximumExpandedSize = 4 * 1024 * 1024;

private:
    static QString checkLimits(const QString& path, QIODevice& device);
    ConfigurationManager();
    Q_DISABLE_COPY(ConfigurationManager)

    void logApplicationInformation() const;
    void logPluginInformation() const;

    static void readInformation(const QDomElement& section,
                                entities::ApplicationInformation& information);
    static void readPlugins(const QDomElement& section,
                            QList<entities::PluginConfiguration>& pluginConfigurations);
    static QString normalisedLibraryName(QString library);

    QList<entities::PluginConfiguration> pluginConfigurations;
    entities::ApplicationInformation applicationInformation;
    interfaces::ILoggingManager* loggingManager;
    QString configFilePath;
};

} // namespace business
} // namespace base
} // namespace corvane
