// The configuration file: arbitrary content read twice as the runner reads it (getRootElement,
// then readConfig), against a reading made here from the format's description; nesting deeper
// than 1000 levels is refused before parsing.

#include "FuzzSupport.h"

#include "Configuration/ConfigurationManager.h"

#include <QDomDocument>
#include <QTemporaryDir>
#include <QXmlStreamReader>

using corvane::base::business::ConfigurationManager;
using corvane::base::entities::ApplicationInformation;
using corvane::base::entities::PluginConfiguration;

namespace {

QString path;

bool same(const QString& a, const QString& b)
{
    return QString::compare(a, b, Qt::CaseInsensitive) == 0;
}

// An element by where it stands in the file, -1:-1 for none.
QString place(const QDomElement& element)
{
    return QStringLiteral(" at %1:%2").arg(element.lineNumber()).arg(element.columnNumber());
}

QStringList describe(const ApplicationInformation& i, const QList<PluginConfiguration>& plugins)
{
    QStringList read;
    read << i.getApplicationName() << i.getApplicationTitle() << i.getApplicationTypeAsString()
         << i.getVersion() << i.getVersionName() << i.getCopyright()
         << i.getReleaseDate().toString(Qt::ISODate) << i.getSingleAppId()
         << (i.hasSingleAppUserNotification() ? "true" : "false");
    for (const PluginConfiguration& plugin : plugins) {
        QString library;
        QDomElement configuration;
        plugin.getLibrary(library);
        plugin.getConfiguration(configuration);
        read << library + place(configuration);
    }
    return read;
}

// What the file says in the form of describe(), after the entry "kept" that was there before.
QStringList expected(const QDomElement& root)
{
    static const QStringList tags
        = QStringLiteral("applicationname applicationtitle applicationtype version versionname "
                         "copyright releasedate singleappid singleappusernotification")
              .split(' ');
    QStringList read {"", "", "NO_TYPE", "", "", "", "", "", "false"}, plugins {"kept at -1:-1"};
    for (QDomElement section = root.firstChildElement(); !section.isNull();
         section = section.nextSiblingElement()) {
        for (QDomElement child = section.firstChildElement(); !child.isNull();
             child = child.nextSiblingElement()) {
            const QString text = child.text(), tag = child.tagName();
            const int index
                = same(section.tagName(), "information") ? tags.indexOf(tag.toLower()) : -1;
            if (index == 2) {
                for (const QString& type : {"GUI", "CONSOLE", "SERVICE"})
                    read[2] = same(text, type) ? type : read[2];
            } else if (index == 6) {
                read[6] = QDate::fromString(text, Qt::ISODate).toString(Qt::ISODate);
            } else if (index >= 0) {
                read[index] = index != 8 ? text : same(text, "true") ? "true" : "false";
            }
            if (!same(section.tagName(), "plugins") || !same(tag, "plugin"))
                continue;
            QString library = child.firstChildElement("library").text();
            const bool dll = library.endsWith(".dll", Qt::CaseInsensitive);
            if (!dll && library.endsWith(".so", Qt::CaseInsensitive)) {
                library.chop(3); // "lib" missing (-1): the whole name, then its end from 2 again
                library = library.left(library.lastIndexOf("lib"))
                    + library.mid(library.lastIndexOf("lib") + 3);
            }
            plugins << library + (dll ? "" : ".dll")
                    + place(child.firstChildElement("configuration"));
        }
    }
    return read + plugins;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzz::startApplication();
    static QTemporaryDir folder;
    path = folder.filePath("app.xml");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray content(reinterpret_cast<const char*>(data), int(size));
    fuzz::writeFile(path, content);
    QXmlStreamReader reader(content); // how deep the elements nest, up to the first error
    int depth = 0, deepest = 0;
    while (!reader.atEnd() && deepest <= 1000) {
        reader.readNext();
        deepest = qMax(deepest, depth += int(reader.isStartElement()) - int(reader.isEndElement()));
    }
    QStringList acceptable; // the error texts that may come, an empty one for none
    QDomDocument document;
    QString message;
    int line = 0, column = 0;
    if (deepest > 1000 || (reader.hasError() && content.count('<') > 1000)) // or behind an error
        acceptable
            << QStringLiteral("Config file '%1' is nested more than 1000 levels deep.").arg(path);
    if (deepest <= 1000 && !document.setContent(content, &message, &line, &column))
        acceptable << QStringLiteral("Config file '%1' is not an XML Document. Error '%2' detect "
                                     "at line %3, column %4.")
                          .arg(path, message, QString::number(line), QString::number(column));
    else if (deepest <= 1000 && !same(document.documentElement().tagName(), "config"))
        acceptable << "Config file does not contain correct XML tag (" + path + ").";
    else if (deepest <= 1000)
        acceptable << QString();

    for (int round = 0; round < 2; ++round) { // both readings alike
        QDomElement root;
        const QString error = ConfigurationManager::getRootElement(path, root);
        CHECK(acceptable.contains(error),
              "error \"" + error + "\", expected " + fuzz::show(acceptable));
        if (!error.isEmpty())
            return 0;
        ApplicationInformation information;
        QList<PluginConfiguration> plugins {PluginConfiguration("kept", QDomElement())};
        ConfigurationManager::readConfig(root, information, plugins);
        const QStringList read = describe(information, plugins),
                          wanted = expected(document.documentElement());
        CHECK(read == wanted, "read " + fuzz::show(read) + "\nexpected " + fuzz::show(wanted));
    }
    return 0;
}
