// The configuration file: arbitrary content written to a real file and read as the runner
// reads it (getRootElement, then readConfig), twice. Checked against a reading of the format
// made here from its description: the root must be "config" in any case; "information"
// children set the application information through its text setters by lower-case tag, the
// last one winning; every "plugin" of every "plugins" section (names in any case) gives its
// "library" text, normalised, and its "configuration" element, in file order. The text setters
// and the XML helpers are checked on the file's own texts and tags as well.

#include "FuzzSupport.h"

#include "Configuration/ApplicationInformation.h"
#include "Configuration/ConfigurationManager.h"
#include "Configuration/PluginConfiguration.h"
#include "Utility/XMLHelper.h"

#include <QDir>
#include <QDomDocument>
#include <QFile>
#include <QTemporaryDir>
#include <QTextStream>

#include <fuzzer/FuzzedDataProvider.h>

#include <functional>
#include <memory>

using corvane::base::business::ConfigurationManager;
using corvane::base::core::utility::XMLHelper;
using corvane::base::entities::ApplicationInformation;
using corvane::base::entities::PluginConfiguration;

namespace {

std::unique_ptr<QTemporaryDir> folder;

bool sameText(const QString& a, const QString& b)
{
    return QString::compare(a, b, Qt::CaseInsensitive) == 0;
}

// Everything an ApplicationInformation holds, as text, to compare two of them.
QStringList describe(const ApplicationInformation& information)
{
    return {information.getApplicationName(),
            information.getApplicationTitle(),
            QString::number(information.getApplicationType()),
            information.getApplicationTypeAsString(),
            information.getVersion(),
            information.getVersionName(),
            information.getCopyright(),
            information.getReleaseDate().isNull()
                ? QStringLiteral("null")
                : information.getReleaseDate().toString(Qt::ISODate),
            information.getSingleAppId(),
            information.hasSingleAppUserNotification() ? QStringLiteral("true")
                                                       : QStringLiteral("false")};
}

QString describe(const QDomElement& element)
{
    if (element.isNull()) {
        return QStringLiteral("null");
    }
    QString text;
    QTextStream stream(&text);
    element.save(stream, -1);
    return text;
}

QStringList describe(const QList<PluginConfiguration>& plugins)
{
    QStringList described;
    for (const PluginConfiguration& plugin : plugins) {
        QString library;
        QDomElement configuration;
        plugin.getLibrary(library);
        plugin.getConfiguration(configuration);
        described << library + " => " + describe(configuration);
    }
    return described;
}

// The library name as the configuration gives it, turned into the name that is loaded.
QString normalised(QString library)
{
    if (library.endsWith(QLatin1String(".dll"), Qt::CaseInsensitive)) {
        return library;
    }
    if (library.endsWith(QLatin1String(".so"), Qt::CaseInsensitive)) {
        library.chop(3);
        const int lib = library.lastIndexOf(QLatin1String("lib"));
        // "lib" missing (index -1): the whole name, then its last length - 2 characters again.
        library = library.left(lib) + library.mid(lib + 3);
    }
    return library + QLatin1String(".dll");
}

using Setter = std::function<void(ApplicationInformation&, const QString&)>;

Setter setterFor(const QString& lowerTag)
{
    static const QList<QPair<QString, Setter>> table = {
        {"applicationname",
         [](auto& i, auto& t) {
             i.setApplicationName(t);
         }},
        {"applicationtitle",
         [](auto& i, auto& t) {
             i.setApplicationTitle(t);
         }},
        {"applicationtype",
         [](auto& i, auto& t) {
             i.setApplicationTypeFromString(t);
         }},
        {"version",
         [](auto& i, auto& t) {
             i.setVersion(t);
         }},
        {"versionname",
         [](auto& i, auto& t) {
             i.setVersionName(t);
         }},
        {"copyright",
         [](auto& i, auto& t) {
             i.setCopyright(t);
         }},
        {"releasedate",
         [](auto& i, auto& t) {
             i.setReleaseDateFromString(t);
         }},
        {"singleappid",
         [](auto& i, auto& t) {
             i.setSingleAppId(t);
         }},
        {"singleappusernotification",
         [](auto& i, auto& t) {
             i.setSingleAppUserNoteFromString(t);
         }},
    };
    for (const auto& entry : table) {
        if (entry.first == lowerTag) {
            return entry.second;
        }
    }
    return {};
}

void expectedConfig(const QDomElement& root, ApplicationInformation& information,
                    QList<PluginConfiguration>& plugins)
{
    for (QDomElement section = root.firstChildElement(); !section.isNull();
         section = section.nextSiblingElement()) {
        if (sameText(section.tagName(), "information")) {
            for (QDomElement value = section.firstChildElement(); !value.isNull();
                 value = value.nextSiblingElement()) {
                if (const Setter setter = setterFor(value.tagName().toLower())) {
                    setter(information, value.text());
                }
            }
        } else if (sameText(section.tagName(), "plugins")) {
            for (QDomElement plugin = section.firstChildElement(); !plugin.isNull();
                 plugin = plugin.nextSiblingElement()) {
                if (sameText(plugin.tagName(), "plugin")) {
                    plugins << PluginConfiguration(
                        normalised(plugin.firstChildElement("library").text()),
                        plugin.firstChildElement("configuration"));
                }
            }
        }
    }
}

// The text setters, each on a fresh object and on one that already holds other values.
void checkTextSetters(const QString& text)
{
    for (bool filled : {false, true}) {
        ApplicationInformation information;
        if (filled) {
            information.setApplicationType(ApplicationInformation::SERVICE);
            information.setReleaseDate(QDate(2016, 3, 1));
            information.setSingleAppUserNotification(true);
        }
        const ApplicationInformation::ApplicationType before = information.getApplicationType();
        information.setApplicationTypeFromString(text);
        ApplicationInformation::ApplicationType type = before;
        if (sameText(text, "GUI")) {
            type = ApplicationInformation::GUI;
        } else if (sameText(text, "CONSOLE")) {
            type = ApplicationInformation::CONSOLE;
        } else if (sameText(text, "SERVICE")) {
            type = ApplicationInformation::SERVICE;
        }
        CHECK(information.getApplicationType() == type,
              QStringLiteral("type from \"%1\" is %2, expected %3")
                  .arg(text)
                  .arg(information.getApplicationType())
                  .arg(type));
        static const char* const names[] = {"GUI", "CONSOLE", "SERVICE", "NO_TYPE"};
        CHECK(information.getApplicationTypeAsString() == QLatin1String(names[type]),
              information.getApplicationTypeAsString());

        information.setReleaseDateFromString(text);
        const QDate date = QDate::fromString(text, Qt::ISODate);
        CHECK(information.getReleaseDate() == date
                  && information.getReleaseDate().isNull() == date.isNull(),
              QStringLiteral("release date from \"%1\" is %2, expected %3")
                  .arg(text, information.getReleaseDate().toString(Qt::ISODate),
                       date.toString(Qt::ISODate)));

        information.setSingleAppUserNoteFromString(text);
        CHECK(information.hasSingleAppUserNotification() == sameText(text, "true"),
              "notification flag from \"" + text + '"');
    }
}

// The three XML readers on parent's children, with every tag that occurs and one that may not.
void checkXmlHelpers(const QDomElement& parent, const QString& extraTag)
{
    QStringList tags {extraTag};
    for (QDomElement child = parent.firstChildElement(); !child.isNull() && tags.size() < 8;
         child = child.nextSiblingElement()) {
        tags << child.tagName();
    }
    for (const QString& tag : tags) {
        const QDomElement first = parent.firstChildElement(tag);
        const QString text = first.text();

        int number = 4711;
        bool numberOk = false;
        const int expectedNumber = text.toInt(&numberOk, 10);
        const bool readNumber = XMLHelper::readIntFromXML(parent, tag, &number);
        CHECK(readNumber == (!first.isNull() && numberOk)
                  && number == (readNumber ? expectedNumber : 4711),
              "readIntFromXML of <" + tag + "> \"" + text + '"');

        for (bool initial : {false, true}) {
            bool flag = initial;
            const QString lower = text.toLower();
            const bool boolOk = !first.isNull() && (lower == "true" || lower == "false");
            const bool readFlag = XMLHelper::readBoolFromXML(parent, tag, &flag);
            CHECK(readFlag == boolOk && flag == (boolOk ? lower == "true" : initial),
                  "readBoolFromXML of <" + tag + "> \"" + text + '"');
        }

        QString string = QStringLiteral("untouched");
        const bool readString = XMLHelper::readStringFromXML(parent, tag, &string);
        CHECK(readString == !first.isNull()
                  && string == (first.isNull() ? QStringLiteral("untouched") : text),
              "readStringFromXML of <" + tag + "> \"" + text + '"');

        CHECK(!XMLHelper::readIntFromXML(parent, tag, nullptr)
                  && !XMLHelper::readBoolFromXML(parent, tag, nullptr)
                  && !XMLHelper::readStringFromXML(parent, tag, nullptr),
              "a reader answered true for a null output");
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzz::application();
    folder = std::make_unique<QTemporaryDir>(QDir::tempPath() + "/corvane-fuzz-config-XXXXXX");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray content(reinterpret_cast<const char*>(data), int(size));
    const QString path = folder->filePath("app.xml");
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
            std::abort();
        }
        file.write(content);
    }

    // The reference reading, straight from the parser.
    QDomDocument document;
    QString message;
    int line = 0;
    int column = 0;
    const bool wellFormed = document.setContent(content, &message, &line, &column);
    const QDomElement expectedRoot = document.documentElement();
    QString expectedError;
    if (!wellFormed) {
        expectedError = QStringLiteral("Config file '%1' is not an XML Document. Error '%2' detect "
                                       "at line %3, column %4.")
                            .arg(path, message)
                            .arg(line)
                            .arg(column);
    } else if (!sameText(expectedRoot.tagName(), "config")) {
        expectedError = "Config file does not contain correct XML tag (" + path + ").";
    }

    QStringList first;
    for (int round = 0; round < 2; ++round) {
        QDomElement root;
        const QString error = ConfigurationManager::getRootElement(path, root);
        if (!wellFormed) {
            CHECK(error == expectedError,
                  "error \"" + error + "\", expected \"" + expectedError + '"');
            return 0;
        }
        CHECK(error == expectedError, "error \"" + error + "\", expected \"" + expectedError + '"');
        if (!error.isEmpty()) {
            return 0;
        }
        CHECK(root.tagName() == expectedRoot.tagName(), root.tagName());

        ApplicationInformation information;
        QList<PluginConfiguration> plugins;
        plugins << PluginConfiguration("kept", QDomElement()); // appended to, never cleared
        ConfigurationManager::readConfig(root, information, plugins);
        ApplicationInformation expectedInformation;
        QList<PluginConfiguration> expectedPlugins {PluginConfiguration("kept", QDomElement())};
        expectedConfig(expectedRoot, expectedInformation, expectedPlugins);

        const QStringList read = describe(information) + describe(plugins);
        const QStringList expected = describe(expectedInformation) + describe(expectedPlugins);
        CHECK(read == expected, "read " + fuzz::show(read) + "\nexpected " + fuzz::show(expected));
        if (round == 0) {
            first = read;
        } else {
            CHECK(read == first,
                  "second reading " + fuzz::show(read) + "\nfirst " + fuzz::show(first));
        }
    }

    // The texts of the file through the text setters, and its elements through the helpers.
    int checkedTexts = 0;
    std::function<void(const QDomElement&, int)> visit
        = [&](const QDomElement& element, int depth) {
              if (checkedTexts++ > 16 || depth > 4) {
                  return;
              }
              checkTextSetters(element.text());
              checkTextSetters(element.tagName());
              checkXmlHelpers(element, element.attribute("tag", "library"));
              for (QDomElement child = element.firstChildElement(); !child.isNull();
                   child = child.nextSiblingElement()) {
                  visit(child, depth + 1);
              }
          };
    visit(expectedRoot, 0);
    return 0;
}
