#include "Configuration/ConfigurationManager.h"

#include "Configuration/FileSignature.h"
#include "Exceptions/Exceptions.h"
#include "StartUp/ManagerRegistry.h"

#include <QCoreApplication>
#include <QDebug>
#include <QDomDocument>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QMutex>
#include <QMutexLocker>
#include <QXmlStreamReader>

namespace corvane {
namespace base {
namespace business {

using entities::ApplicationInformation;
using entities::PluginConfiguration;

namespace {

using InformationSetter = void (ApplicationInformation::*)(const QString&);

const QHash<QString, InformationSetter>& informationSetters()
{
    static const QHash<QString, InformationSetter> setters {
        {QStringLiteral("applicationname"), &ApplicationInformation::setApplicationName},
        {QStringLiteral("applicationtitle"), &ApplicationInformation::setApplicationTitle},
        {QStringLiteral("applicationtype"), &ApplicationInformation::setApplicationTypeFromString},
        {QStringLiteral("version"), &ApplicationInformation::setVersion},
        {QStringLiteral("versionname"), &ApplicationInformation::setVersionName},
        {QStringLiteral("copyright"), &ApplicationInformation::setCopyright},
        {QStringLiteral("releasedate"), &ApplicationInformation::setReleaseDateFromString},
        {QStringLiteral("singleappid"), &ApplicationInformation::setSingleAppId},
        {QStringLiteral("singleappusernotification"),
         &ApplicationInformation::setSingleAppUserNoteFromString},
    };
    return setters;
}

bool hasTag(const QDomElement& element, const char* tag)
{
    return element.tagName().compare(QLatin1String(tag), Qt::CaseInsensitive) == 0;
}

} // namespace

ConfigurationManager* ConfigurationManager::instance()
{
    static QMutex mutex;
    QMutexLocker locker(&mutex);
    static ConfigurationManager manager;
    return &manager;
}

ConfigurationManager::ConfigurationManager()
    : loggingManager(ManagerRegistry::instance()->getLoggingManager()),
      configFilePath(
          getFilePath(QCoreApplication::applicationFilePath(), QCoreApplication::arguments()))
{
}

ConfigurationManager::~ConfigurationManager() = default;

void ConfigurationManager::initialize()
{
    QDomElement root;
    const QString error = getRootElement(configFilePath, root);
    if (!error.isEmpty()) {
        throw exceptions::ConfigurationManagerException(this, QStringLiteral("initialize"), error);
    }
    readConfig(root, applicationInformation, pluginConfigurations);
    logApplicationInformation();
    logPluginInformation();
}

void ConfigurationManager::deinitialize()
{
    pluginConfigurations.clear();
}

void ConfigurationManager::getName(QString& name)
{
    name = QStringLiteral("ConfigurationManager");
}

void ConfigurationManager::getVersion(QString& version)
{
    version = QStringLiteral("1.0.0");
}

void ConfigurationManager::getPluginConfiguration(QList<PluginConfiguration>& configurations)
{
    configurations.clear();
    configurations.append(pluginConfigurations);
}

void ConfigurationManager::getApplicationInformation(ApplicationInformation& information)
{
    information = applicationInformation;
}

void ConfigurationManager::checkConfigurationFileSignature() const
{
    FileSignature signature;
    if (signature.isValid(configFilePath, false)) {
        return;
    }
    const QString reason
        = QStringLiteral("Signature check for configuration file has found an error: ")
        + configFilePath;
    qCritical().noquote() << QStringLiteral("initialize: ") + reason;
    throw exceptions::InvalidSignatureException(this, QStringLiteral("initialize"), reason);
}

QString ConfigurationManager::getFilePath(const QString& applicationFilePath,
                                          const QStringList& arguments)
{
    const QFileInfo executable(applicationFilePath);
    const QString directory = executable.absolutePath() + QLatin1Char('/');
    // The value of "-C" is always relative to the executable's folder, even when absolute.
    const int option = arguments.indexOf(QStringLiteral("-C"));
    if (option >= 0 && option < arguments.size() - 1) {
        return directory + arguments.at(option + 1);
    }
    return directory + executable.baseName() + QStringLiteral(".xml");
}

// Whether elements nest deeper than the DOM parser can take, found without recursion; a
// document that is not well-formed is left to the DOM parser to explain.
bool ConfigurationManager::isNestedTooDeeply(QIODevice& device)
{
    QXmlStreamReader reader(&device);
    int depth = 0;
    while (!reader.atEnd()) {
        const QXmlStreamReader::TokenType token = reader.readNext();
        if (token == QXmlStreamReader::StartElement && ++depth > maximumNestingDepth) {
            return true;
        }
        if (token == QXmlStreamReader::EndElement) {
            --depth;
        }
    }
    return false;
}

QString ConfigurationManager::getRootElement(const QString& path, QDomElement& root)
{
    qInfo().noquote() << QStringLiteral("initialize: Opening ") + path;

    QDomDocument document(QStringLiteral("Configuration"));
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        qCritical().noquote() << QStringLiteral("initialize: Cannot open config file: ") + path;
        return QStringLiteral("Cannot open config file: ") + path;
    }

    if (isNestedTooDeeply(file)) {
        file.close();
        const QString error = QStringLiteral("Config file '%1' is nested more than %2 levels deep.")
                                  .arg(path)
                                  .arg(maximumNestingDepth);
        qCritical().noquote() << error;
        return error;
    }
    file.seek(0);

    QString parserMessage;
    int line = 0;
    int column = 0;
    if (!document.setContent(&file, &parserMessage, &line, &column)) {
        file.close();
        const QString error
            = QStringLiteral("Config file '%1' is not an XML Document. Error '%2' "
                             "detect at line %3, column %4.")
                  .arg(path, parserMessage, QString::number(line), QString::number(column));
        qCritical().noquote() << error;
        return error;
    }
    file.close();

    root = document.documentElement();
    if (hasTag(root, "config")) {
        return QString();
    }
    qCritical().noquote() << QStringLiteral(
                                 "initialize: Config file does not contain correct XML tag: ")
            + path;
    return QStringLiteral("Config file does not contain correct XML tag (") + path
        + QStringLiteral(").");
}

void ConfigurationManager::readConfig(const QDomElement& root, ApplicationInformation& information,
                                      QList<PluginConfiguration>& pluginConfigurations)
{
    for (QDomElement section = root.firstChildElement(); !section.isNull();
         section = section.nextSiblingElement()) {
        if (hasTag(section, "information")) {
            readInformation(section, information);
        } else if (hasTag(section, "plugins")) {
            readPlugins(section, pluginConfigurations);
        }
    }
}

void ConfigurationManager::readInformation(const QDomElement& section,
                                           ApplicationInformation& information)
{
    for (QDomElement value = section.firstChildElement(); !value.isNull();
         value = value.nextSiblingElement()) {
        const InformationSetter setter = informationSetters().value(value.tagName().toLower());
        if (setter != nullptr) {
            (information.*setter)(value.text());
        }
    }
}

void ConfigurationManager::readPlugins(const QDomElement& section,
                                       QList<PluginConfiguration>& pluginConfigurations)
{
    for (QDomElement plugin = section.firstChildElement(); !plugin.isNull();
         plugin = plugin.nextSiblingElement()) {
        if (!hasTag(plugin, "plugin")) {
            continue;
        }
        const QString library = plugin.firstChildElement(QStringLiteral("library")).text();
        PluginConfiguration configuration(
            normalisedLibraryName(library),
            plugin.firstChildElement(QStringLiteral("configuration")));
        configuration.setEnabled(plugin.attribute(QStringLiteral("enabled")).compare(
                                     QLatin1String("false"), Qt::CaseInsensitive)
                                 != 0);
        pluginConfigurations.append(configuration);
    }
}

// One configuration serves every platform: names are kept in the form "stem.dll", and a
// Linux-style "libstem.so" is turned into it.
QString ConfigurationManager::normalisedLibraryName(QString library)
{
    static const QString dll = QStringLiteral(".dll");
    static const QString so = QStringLiteral(".so");
    static const QString lib = QStringLiteral("lib");

    if (library.endsWith(dll, Qt::CaseInsensitive)) {
        return library;
    }
    if (library.endsWith(so, Qt::CaseInsensitive)) {
        library.chop(so.size());
        const int prefix = library.lastIndexOf(lib);
        // Without "lib" (prefix -1) left() keeps the whole name and mid() repeats its tail:
        // "foo.so" gives "fooo.dll". Existing configurations rely on it, so it stays.
        library = library.left(prefix) + library.mid(prefix + lib.size());
    }
    return library + dll;
}

void ConfigurationManager::logApplicationInformation() const
{
    const ApplicationInformation& info = applicationInformation;
    qInfo() << "initialize: Applicationinformation";
    qInfo() << "initialize:   applicationname           = " << info.getApplicationName();
    qInfo() << "initialize:   applicationtitle          = " << info.getApplicationTitle();
    qInfo() << "initialize:   applicationtype           = " << info.getApplicationTypeAsString();
    qInfo() << "initialize:   version                   = " << info.getVersion();
    qInfo() << "initialize:   versionName               = " << info.getVersionName();
    qInfo() << "initialize:   copyright                 = " << info.getCopyright();
    qInfo() << "initialize:   releasedate               = "
            << info.getReleaseDate().toString(Qt::TextDate);
    qInfo() << "initialize:   singleappid               = " << info.getSingleAppId();
    qInfo() << "initialize:   singleappusernotification = " << info.hasSingleAppUserNotification();
}

void ConfigurationManager::logPluginInformation() const
{
    qInfo() << "initialize: Plugins";
    for (const PluginConfiguration& plugin : pluginConfigurations) {
        QString library;
        plugin.getLibrary(library);
        qInfo() << "initialize:  " << library;
    }
}

} // namespace business
} // namespace base
} // namespace corvane
