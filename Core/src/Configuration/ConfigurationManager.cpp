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
#include <QRegularExpression>
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

namespace {

const QRegularExpression entityReference(QStringLiteral("&([A-Za-z_:][\\w.:-]*);"));

// The characters that the entity's text grows to, its references expanded; more than limit
// stops counting. A chain deeper than the parser's own guard counts as too large.
qint64 expandedSize(const QString& name, const QHash<QString, QString>& values,
                    QHash<QString, qint64>& known, qint64 limit, int depth = 0)
{
    if (known.contains(name)) {
        return known.value(name);
    }
    if (depth > ConfigurationManager::maximumNestingDepth) {
        return limit + 1;
    }
    known.insert(name, 0); // a cycle the parser refuses anyway
    const QString value = values.value(name);
    qint64 size = value.size();
    QRegularExpressionMatchIterator references = entityReference.globalMatch(value);
    while (references.hasNext() && size <= limit) {
        const QRegularExpressionMatch reference = references.next();
        size += expandedSize(reference.captured(1), values, known, limit, depth + 1)
            - reference.capturedLength();
    }
    known.insert(name, size);
    return size;
}

} // namespace

// Whether the document is larger than the DOM parser should build: a file larger than a
// configuration is, more text than it holds once entities are expanded (counted from the
// declarations and the references, without expanding them), or elements nested deeper than the
// parser can take (it recurses), found streaming. The error text, empty when within the limits;
// a document that is not well-formed is left to the DOM parser to explain.
QString ConfigurationManager::checkLimits(const QString& path, QIODevice& device)
{
    if (device.size() > maximumFileSize) {
        return QStringLiteral("Config file '%1' is larger than %2 bytes.")
            .arg(path)
            .arg(maximumFileSize);
    }
    const QString content = QString::fromUtf8(device.readAll());
    QHash<QString, QString> values;
    QXmlStreamReader declarations(content);
    while (!declarations.atEnd() && declarations.readNext() != QXmlStreamReader::StartElement) {
        for (const QXmlStreamEntityDeclaration& entity : declarations.entityDeclarations()) {
            values.insert(entity.name().toString(), entity.value().toString());
        }
    }
    QHash<QString, qint64> known;
    qint64 characters = content.size();
    QRegularExpressionMatchIterator references = entityReference.globalMatch(content);
    while (references.hasNext() && characters <= maximumExpandedSize) {
        const QRegularExpressionMatch reference = references.next();
        characters += expandedSize(reference.captured(1), values, known, maximumExpandedSize);
    }
    if (characters > maximumExpandedSize) {
        return QStringLiteral("Config file '%1' expands to more than %2 characters.")
            .arg(path)
            .arg(maximumExpandedSize);
    }

    QXmlStreamReader reader(content);
    int depth = 0;
    while (!reader.atEnd()) {
        const QXmlStreamReader::TokenType token = reader.readNext();
        if (token == QXmlStreamReader::StartElement && ++depth > maximumNestingDepth) {
            return QStringLiteral("Config file '%1' is nested more than %2 levels deep.")
                .arg(path)
                .arg(maximumNestingDepth);
        }
        if (token == QXmlStreamReader::EndElement) {
            --depth;
        }
    }
    return QString();
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

    const QString limit = checkLimits(path, file);
    if (!limit.isEmpty()) {
        file.close();
        qCritical().noquote() << limit;
        return limit;
    }
    file.seek(0);

    QString parserMessage;
    int line = 0;
    int column = 0;
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
    // Qt 6's reader refuses an entity that expands past 4096 characters, where Qt 5's took any
    // whose own text is that short; the expanded size of the whole file is limited above.
    QXmlStreamReader reader(&file);
    reader.setEntityExpansionLimit(int(maximumExpandedSize));
    const bool parsed = document.setContent(&reader, false, &parserMessage, &line, &column);
#else
    const bool parsed = document.setContent(&file, &parserMessage, &line, &column);
#endif
    if (!parsed) {
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
