#include "ConfigurationCheck.h"

#include <Configuration/ApplicationInformation.h>
#include <Configuration/ConfigurationManager.h>
#include <Plugins/PluginManager.h>

#include <QDomDocument>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QXmlStreamReader>

#include <algorithm>

namespace {

using corvane::base::business::ConfigurationManager;
using corvane::base::business::PluginManager;
using corvane::base::entities::ApplicationInformation;

bool is(const QDomElement& element, const char* name) // as the application compares section names
{
    return element.tagName().compare(QLatin1String(name), Qt::CaseInsensitive) == 0;
}

const QStringList& informationTags()
{
    static const QStringList tags {"applicationname", "applicationtitle", "applicationtype",
                                   "version",         "versionname",      "copyright",
                                   "releasedate",     "singleappid",      "singleappusernotification"};
    return tags;
}

QStringList referencesIn(const QString& text) // the NAMEs of its ${NAME}s
{
    static const QRegularExpression reference(QStringLiteral("\\$\\{(\\w+)\\}"));
    QStringList names;
    for (auto it = reference.globalMatch(text); it.hasNext();) {
        names << it.next().captured(1);
    }
    return names;
}

} // namespace

ConfigurationCheck::ConfigurationCheck(const QString& path, const QString& shownName,
                                       const QString& folder)
    : path(path), shownName(shownName), folder(folder)
{
}

bool ConfigurationCheck::run()
{
    QDomElement root;
    const QString problem = ConfigurationManager::getRootElement(path, root);
    if (problem.startsWith(QLatin1String("Cannot open config file"))) {
        error = problem;
        return false;
    }
    readStartTagPositions();
    if (problem.isEmpty()) {
        checkRoot(root);
        return true;
    }
    if (problem.startsWith(QLatin1String("Config file does not contain correct XML tag"))) {
        QFile file(path);
        QDomDocument document;
        if (file.open(QIODevice::ReadOnly) && document.setContent(&file)) {
            report(startTags.value(0),
                   QStringLiteral("the root element is <%1>, not <config>: the application does "
                                  "not start")
                       .arg(document.documentElement().tagName()));
        }
        return true;
    }
    if (problem.contains(QLatin1String("is nested more than"))) {
        report(startTags.value(ConfigurationManager::maximumNestingDepth),
               QStringLiteral("elements nest more than %1 levels deep: the application does not "
                              "start")
                   .arg(ConfigurationManager::maximumNestingDepth));
        return true;
    }
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    QDomDocument document;
    QString message;
    Position at;
    document.setContent(&file, &message, &at.line, &at.column);
    report(at, QStringLiteral("not well-formed XML: %1: the application does not start")
                   .arg(message));
    return true;
}

QStringList ConfigurationCheck::problems() const
{
    QList<Problem> sorted = found;
    std::stable_sort(sorted.begin(), sorted.end(), [](const Problem& a, const Problem& b) {
        return a.at.line != b.at.line ? a.at.line < b.at.line : a.at.column < b.at.column;
    });
    QStringList lines;
    for (const Problem& problem : qAsConst(sorted)) {
        lines << QStringLiteral("%1:%2:%3: %4")
                     .arg(shownName)
                     .arg(problem.at.line)
                     .arg(problem.at.column)
                     .arg(problem.text);
    }
    return lines;
}

// Where each start tag begins ("<"), in document order, which is the order in which the checks
// below visit the elements. The reader tells where a tag ends; its "<" is the last one before
// that, since attribute values cannot hold one.
void ConfigurationCheck::readStartTagPositions()
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return;
    }
    const QString text = QString::fromUtf8(file.readAll());
    QXmlStreamReader reader(text);
    int line = 1;
    int lineStart = 0;
    int scanned = 0;
    while (!reader.atEnd()) {
        if (reader.readNext() != QXmlStreamReader::StartElement) {
            continue;
        }
        const int start = text.lastIndexOf(QLatin1Char('<'), int(reader.characterOffset()) - 1);
        for (; scanned < start; ++scanned) {
            if (text.at(scanned) == QLatin1Char('\n')) {
                ++line;
                lineStart = scanned + 1;
            }
        }
        startTags << Position {line, start - lineStart + 1};
    }
}

ConfigurationCheck::Position ConfigurationCheck::enter()
{
    return startTags.value(visited++);
}

void ConfigurationCheck::skip(const QDomElement& element)
{
    for (QDomElement child = element.firstChildElement(); !child.isNull();
         child = child.nextSiblingElement()) {
        enter();
        skip(child);
    }
}

void ConfigurationCheck::report(Position at, const QString& text)
{
    found << Problem {at, text};
}

void ConfigurationCheck::checkRoot(const QDomElement& root)
{
    this->root = root;
    const Position at = enter();
    checkAttributes(root, at);
    Position lastPlugins;
    bool pluginsGiven = false;
    for (QDomElement section = root.firstChildElement(); !section.isNull();
         section = section.nextSiblingElement()) {
        if (is(section, "information")) {
            checkInformation(section);
        } else if (is(section, "plugins")) {
            lastPlugins = startTags.value(visited);
            pluginsGiven = true;
            checkPlugins(section);
        } else if (is(section, "service")) {
            checkService(section);
        } else {
            unknown(section, root);
        }
    }
    if (!typeGiven) {
        report(at, QStringLiteral("no <applicationtype> in <information>: the application does "
                                  "not start (give GUI, CONSOLE or SERVICE)"));
    }
    if (!pluginsGiven) {
        report(at, QStringLiteral("no <plugins>: the application has no plug-in to start"));
    } else if (pluginCount == 0) {
        report(lastPlugins,
               QStringLiteral("<plugins> holds no <plugin>: the application has no plug-in to "
                              "start"));
    }
}

void ConfigurationCheck::unknown(const QDomElement& element, const QDomElement& parent)
{
    report(enter(), QStringLiteral("unknown element <%1> in <%2>: the application ignores it")
                        .arg(element.tagName(), parent.tagName()));
    skip(element);
}

// Reports each child element as unknown: element holds text only.
void ConfigurationCheck::checkTextOnly(const QDomElement& element)
{
    for (QDomElement child = element.firstChildElement(); !child.isNull();
         child = child.nextSiblingElement()) {
        unknown(child, element);
    }
}

void ConfigurationCheck::checkAttributes(const QDomElement& element, Position at)
{
    const QDomNamedNodeMap attributes = element.attributes();
    QStringList names;
    for (int i = 0; i < attributes.count(); ++i) {
        const QString name = attributes.item(i).nodeName();
        const bool schemaLink = element == root
            && (name == QLatin1String("xmlns") || name.startsWith(QLatin1String("xmlns:"))
                || name.startsWith(QLatin1String("xsi:")));
        if (!schemaLink) {
            names << name;
        }
    }
    names.sort();
    for (const QString& name : qAsConst(names)) {
        report(at, QStringLiteral("unknown attribute '%1' on <%2>: the application ignores it")
                       .arg(name, element.tagName()));
    }
}

void ConfigurationCheck::checkInformation(const QDomElement& section)
{
    const Position at = enter();
    checkAttributes(section, at);
    for (QDomElement value = section.firstChildElement(); !value.isNull();
         value = value.nextSiblingElement()) {
        if (informationTags().contains(value.tagName().toLower())) {
            checkInformationValue(value, enter());
        } else {
            unknown(value, section);
        }
    }
}

// The value as the application's setter reads it.
void ConfigurationCheck::checkInformationValue(const QDomElement& value, Position at)
{
    checkAttributes(value, at);
    checkTextOnly(value);
    const QString tag = value.tagName().toLower();
    const QString text = value.text();
    for (const QString& name : referencesIn(text)) {
        report(at, QStringLiteral("${%1} is not expanded: the application takes <%2> as written")
                       .arg(name, value.tagName()));
    }
    ApplicationInformation information;
    if (tag == QLatin1String("applicationtype")) {
        typeGiven = true;
        information.setApplicationTypeFromString(text);
        if (information.getApplicationType() == ApplicationInformation::NO_TYPE) {
            report(at, QStringLiteral("application type '%1' is none of GUI, CONSOLE, SERVICE: "
                                      "the application does not start")
                           .arg(text));
        }
    } else if (tag == QLatin1String("releasedate")) {
        information.setReleaseDateFromString(text);
        if (information.getReleaseDate().isNull()) {
            report(at, QStringLiteral("release date '%1' is not a date as year-month-day: it is "
                                      "read as none")
                           .arg(text));
        }
    } else if (tag == QLatin1String("singleappusernotification")
               && text.compare(QLatin1String("true"), Qt::CaseInsensitive) != 0
               && text.compare(QLatin1String("false"), Qt::CaseInsensitive) != 0) {
        report(at, QStringLiteral("'%1' is neither true nor false: it is read as false").arg(text));
    }
}

void ConfigurationCheck::checkPlugins(const QDomElement& section)
{
    const Position at = enter();
    checkAttributes(section, at);
    if (libraries.isEmpty()) {
        ApplicationInformation ignored;
        QList<corvane::base::entities::PluginConfiguration> plugins;
        ConfigurationManager::readConfig(root, ignored, plugins);
        for (const auto& plugin : qAsConst(plugins)) {
            QString library;
            plugin.getLibrary(library);
            libraries << library;
        }
    }
    for (QDomElement plugin = section.firstChildElement(); !plugin.isNull();
         plugin = plugin.nextSiblingElement()) {
        if (is(plugin, "plugin")) {
            checkPlugin(plugin);
        } else {
            unknown(plugin, section);
        }
    }
}

void ConfigurationCheck::checkPlugin(const QDomElement& plugin)
{
    const Position at = enter();
    ++pluginCount;
    checkAttributes(plugin, at);
    bool libraryGiven = false;
    bool configurationGiven = false;
    for (QDomElement child = plugin.firstChildElement(); !child.isNull();
         child = child.nextSiblingElement()) {
        const Position childAt = enter();
        bool& given = child.tagName() == QLatin1String("library") ? libraryGiven
                                                                  : configurationGiven;
        if (child.tagName() != QLatin1String("library")
            && child.tagName() != QLatin1String("configuration")) {
            report(childAt,
                   QStringLiteral("unknown element <%1> in <%2>: the application ignores it")
                       .arg(child.tagName(), plugin.tagName()));
            skip(child);
        } else if (given) {
            report(childAt,
                   QStringLiteral("a second <%1> in <%2>: the application ignores it")
                       .arg(child.tagName(), plugin.tagName()));
            skip(child);
        } else if (child.tagName() == QLatin1String("library")) {
            given = true;
            checkAttributes(child, childAt);
            checkTextOnly(child);
            checkLibrary(child, childAt);
        } else {
            given = true;
            checkPluginConfiguration(child, childAt);
        }
    }
    if (!libraryGiven) {
        report(at, QStringLiteral("<%1> without <library>: the application cannot load it")
                       .arg(plugin.tagName()));
    }
}

void ConfigurationCheck::checkLibrary(const QDomElement& element, Position at)
{
    const QString text = element.text();
    const QStringList references = referencesIn(text);
    for (const QString& name : references) {
        report(at, QStringLiteral("${%1} is not expanded: the application takes <library> as "
                                  "written")
                       .arg(name));
    }
    if (text.isEmpty()) {
        report(at, QStringLiteral("<library> is empty: the application cannot load it"));
        return;
    }
    const QString configured = libraries.value(pluginCount - 1);
    const QFileInfo file(PluginManager::libraryFile(folder, configured));
    if (references.isEmpty() && !file.exists()) {
        report(at, QStringLiteral("plug-in library '%1' is not in the application's folder (no "
                                  "%2 in %3)")
                       .arg(text, file.fileName(), file.absolutePath()));
    }
}

// What the plug-in receives is its own business; only environment references that no one could
// expand in this environment are reported, at the element that holds them.
void ConfigurationCheck::checkPluginConfiguration(const QDomElement& configuration, Position at)
{
    const auto checkText = [&](const QString& text, Position where) {
        for (const QString& name : referencesIn(text)) {
            if (qEnvironmentVariableIsEmpty(qPrintable(name))) {
                report(where, QStringLiteral("${%1} refers to an environment variable that is not "
                                             "set")
                                  .arg(name));
            }
        }
    };
    const QDomNamedNodeMap attributes = configuration.attributes();
    for (int i = 0; i < attributes.count(); ++i) {
        checkText(attributes.item(i).nodeValue(), at);
    }
    for (QDomNode child = configuration.firstChild(); !child.isNull();
         child = child.nextSibling()) {
        if (child.isElement()) {
            checkPluginConfiguration(child.toElement(), enter());
        } else if (child.isText() || child.isCDATASection()) {
            checkText(child.nodeValue(), at);
        }
    }
}

void ConfigurationCheck::checkService(const QDomElement& section)
{
    const Position at = enter();
    checkAttributes(section, at);
    bool watchdogGiven = false;
    for (QDomElement child = section.firstChildElement(); !child.isNull();
         child = child.nextSiblingElement()) {
        const Position childAt = enter();
        if (child.tagName() != QLatin1String("watchdogsec")) {
            report(childAt,
                   QStringLiteral("unknown element <%1> in <%2>: the application ignores it")
                       .arg(child.tagName(), section.tagName()));
            skip(child);
            continue;
        }
        if (watchdogGiven) {
            report(childAt, QStringLiteral("a second <watchdogsec> in <%1>: the application "
                                           "ignores it")
                                .arg(section.tagName()));
            skip(child);
            continue;
        }
        watchdogGiven = true;
        checkAttributes(child, childAt);
        checkTextOnly(child);
        bool number = false;
        child.text().toInt(&number, 10);
        if (!number) {
            report(childAt, QStringLiteral("watchdog seconds '%1' is not a whole number: the "
                                           "service gets no watchdog")
                                .arg(child.text()));
        }
    }
}
