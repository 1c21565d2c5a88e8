#include "FakeManagers.h"
#include "TestFiles.h"

#include "Configuration/ConfigurationManager.h"
#include "Configuration/FileSignature.h"
#include "StartUp/ManagerRegistry.h"

#include <QDomDocument>
#include <QtTest>

using namespace corvane::base::business;
using namespace corvane::base::entities;

QStringList messages;

QString hashOf(const QString& path)
{
    QString hash = QStringLiteral("unchanged");
    FileSignature().createHashFromFileContent(path, hash);
    return hash;
}

class tst_ConfigurationManager : public QObject
{
    Q_OBJECT

    QTemporaryDir folder;
    fakes::RecordingLoggingManager logging;

private slots:
    void initTestCase()
    {
        QCOMPARE(failureOf([] { ConfigurationManager::instance(); }),
                 "ManagerRegistry::getLoggingManager loggingManager not registered!");
        ManagerRegistry::instance()->registerManager(logging);
    }

    void init()
    {
        messages.clear();
        qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
            messages << (type == QtCriticalMsg ? "critical " : "info ") + text;
        });
    }

    void filePath_data()
    {
        QTest::addColumn<QString>("row"); // the executable and the arguments => the path
        QTest::newRow("base name up to the first dot") << "/app/Tool.main => /app/Tool.xml";
        QTest::newRow("-C, relative") << "/app/Tool -C sub/my.xml => /app/sub/my.xml";
        QTest::newRow("-C, absolute: still below")
            << "/app/Tool -C /etc/my.xml => /app//etc/my.xml";
        QTest::newRow("-C as last argument") << "/app/Tool x -C => /app/Tool.xml";
        QTest::newRow("-c is no option") << "/app/Tool -c my.xml => /app/Tool.xml";
        QTest::newRow("first -C wins") << "/app/Tool -C a.xml -C b.xml => /app/a.xml";
    }

    void filePath()
    {
        QFETCH(QString, row);
        const QStringList arguments = row.section(" => ", 0, 0).split(' ');
        QCOMPARE(ConfigurationManager::getFilePath(arguments.first(), arguments),
                 row.section(" => ", 1));
    }

    void rootElement_data()
    {
        QTest::addColumn<QByteArray>("content"); // null: no such file
        QTest::addColumn<QString>("expected"); // error / lines
        const QByteArray levels
            = QByteArray("<a>").repeated(998) + QByteArray("</a>").repeated(998);
        const QString opening = " / info initialize: Opening <path>";
        QTest::newRow("missing") << QByteArray()
                                 << "Cannot open config file: <path>" + opening
                + " / critical initialize: Cannot open config file: <path>";
        // The text inside "Error '...'" is the XML parser's own, and Qt 6's differs.
        const QString parserText = QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
            ? "tag mismatch"
            : "Opening and ending tag mismatch.";
        const QString malformed = "Config file '<path>' is not an XML Document. Error '"
            + parserText + "' detect at line 3, column 9.";
        QTest::newRow("malformed") << QByteArray("<config>\n<information>\n</config>")
                                   << malformed + opening + " / critical " + malformed;
        QTest::newRow("wrong root")
            << QByteArray("<configuration/>")
            << "Config file does not contain correct XML tag (<path>)." + opening
                + " / critical initialize: Config file does not contain correct XML tag: <path>";

        QTest::newRow("1000 levels deep, CONFIG in capitals")
            << "<CONFIG><a>" + levels + "</a></CONFIG>" << opening;
        const QString deep = "Config file '<path>' is nested more than 1000 levels deep.";
        QTest::newRow("1001 levels deep") << "<config><a><a>" + levels + "</a></a></config>"
                                          << deep + opening + " / critical " + deep;

        // A file of at most 1 MiB whose text, entities expanded, holds at most 4 Mi characters.
        const QByteArray comment = "<config><!----></config>";
        QTest::newRow("1 MiB") << QByteArray(comment).insert(12, QByteArray(1048576 - 24, ' '))
                               << opening;
        const QString large = "Config file '<path>' is larger than 1048576 bytes.";
        QTest::newRow("1 MiB and a byte")
            << QByteArray(comment).insert(12, QByteArray(1048576 - 23, ' '))
            << large + opening + " / critical " + large;
        // Entities of 4000 characters each (the parser takes none larger), referred to by
        // entities and by the text.
        const QByteArray entities = "<!DOCTYPE config [<!ENTITY a \"" + QByteArray(4000, 'x')
            + "\"><!ENTITY b \"&a;\"><!ENTITY c \"&b;&b;\">]>";
        QTest::newRow("4 million characters")
            << entities + "<config>" + QByteArray("&c;").repeated(521) + "</config>" << opening;
        const QString bomb = "Config file '<path>' expands to more than 4194304 characters.";
        QTest::newRow("expansion bomb")
            << entities + "<config>" + QByteArray("&c;").repeated(40000) + "</config>"
            << bomb + opening + " / critical " + bomb;
        QTest::newRow("in attributes") << entities + "<config a=\"" + QByteArray("&b;").repeated(1100)
                + "\"/>" << bomb + opening + " / critical " + bomb;
    }

    void rootElement()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, expected);
        const QString path = folder.filePath(QStringLiteral("root.xml"));
        QFile::remove(path);
        if (!content.isNull())
            writeFile(path, content);
        QDomElement root;
        const QString error = ConfigurationManager::getRootElement(path, root);
        QCOMPARE((QStringList {error} + messages).join(" / "), expected.replace("<path>", path));
        QVERIFY(!error.isEmpty() || root.tagName().toLower() == "config");
    }

    // Sections and tags in any case, repeated (the later overwrite or add), or not understood.
    void initializeReadsAndLogsTheFile()
    {
        QByteArray plugins;
        for (const char* library : {"Foo.DLL", "libBar.so", "libBar.SO", "plugins/libBaz.so",
                                    "liblibx.so", "mylibfoo.so", "foo.so"})
            plugins += QByteArray("<plugin><library>") + library + "</library></plugin>";
        const QStringList libraries {"A.dll:a1",  ".dll:b",  "D.dll",           "Foo.DLL",
                                     "Bar.dll",   "Bar.dll", "plugins/Baz.dll", "libx.dll",
                                     "myfoo.dll", "fooo.dll"};
        const QString file = QCoreApplication::applicationFilePath() + ".xml";
        writeFile(file,
                  "<Config>text<!-- c "
                  "--><other/><information><applicationname>A</applicationname><version>1.2</"
                  "version><applicationtype>Service</applicationtype><releasedate>01.03.2016</"
                  "releasedate><singleappusernotification>yes</singleappusernotification></"
                  "information><plugins><plugin><library>libA.so</library><configuration "
                  "id=\"a1\"/><configuration id=\"a2\"/></plugin><Plugin><configuration "
                  "id=\"b\"/></Plugin><plugin><Library>C</Library><library>D</library></"
                  "plugin><notaplugin><library>E</library></notaplugin></"
                  "plugins><INFORMATION><ApplicationName>B</ApplicationName><APPLICATIONNAME>Demo</"
                  "APPLICATIONNAME><applicationtitle>Demo "
                  "<b>bold</b></applicationtitle><applicationtype>desktop</"
                  "applicationtype><versionname>Größe "
                  "✓</versionname><copyright>(c)</copyright><releasedate>2016-03-01</"
                  "releasedate><singleappid>demo</singleappid><singleappusernotification>TRUE</"
                  "singleappusernotification><unknown>x</unknown></INFORMATION><PLUGINS>"
                      + plugins + "</PLUGINS></Config>");
        ConfigurationManager* manager = ConfigurationManager::instance();
        manager->initialize();
        QStringList expected {"info initialize: Opening " + file,
                              "info initialize: Applicationinformation",
                              "info initialize:   applicationname           =  \"Demo\"",
                              "info initialize:   applicationtitle          =  \"Demo bold\"",
                              "info initialize:   applicationtype           =  \"SERVICE\"",
                              "info initialize:   version                   =  \"1.2\"",
                              "info initialize:   versionName               =  \"Größe ✓\"",
                              "info initialize:   copyright                 =  \"(c)\"",
                              "info initialize:   releasedate               =  \"Tue Mar 1 2016\"",
                              "info initialize:   singleappid               =  \"demo\"",
                              "info initialize:   singleappusernotification =  true",
                              "info initialize: Plugins"};
        for (const QString& library : libraries)
            expected << "info initialize:   \"" + library.section(':', 0, 0) + "\"";
        QCOMPARE(messages, expected);
        QList<PluginConfiguration> entries {PluginConfiguration("stale", QDomElement())};
        manager->getPluginConfiguration(entries);
        QStringList handedOut;
        for (const PluginConfiguration& entry : qAsConst(entries)) {
            QString library;
            QDomElement configuration;
            entry.getLibrary(library);
            entry.getConfiguration(configuration);
            handedOut << library
                    + (configuration.isNull() ? "" : ":" + configuration.attribute("id"));
        }
        QCOMPARE(handedOut, libraries);
        manager->deinitialize(); // drops the plug-ins, keeps the information
        manager->getPluginConfiguration(entries);
        ApplicationInformation info;
        manager->getApplicationInformation(info);
        QVERIFY(entries.isEmpty() && info.getApplicationType() == ApplicationInformation::SERVICE);
        info.setApplicationType(ApplicationInformation::ApplicationType(7));
        QCOMPARE(info.getApplicationTypeAsString(), QStringLiteral("NO_TYPE"));
        manager->initialize();
        QFile::remove(file); // a failed initialize keeps what was read
        QCOMPARE(failureOf([&] { manager->initialize(); }),
                 "ConfigurationManager::initialize Cannot open config file: " + file);
        manager->getPluginConfiguration(entries);
        QCOMPARE(entries.size(), libraries.size());

        writeFile(file, "<config/>\n");
        QFile::remove(file + ".sig");
        const QString reason = "Signature check for configuration file has found an error: " + file;
        QCOMPARE(failureOf([&] { manager->checkConfigurationFileSignature(); }),
                 "ConfigurationManager::initialize " + reason);
        QCOMPARE(messages.last(), "critical initialize: " + reason);
        FileSignature().saveHashInAFile(file, hashOf(file));
        manager->checkConfigurationFileSignature();
    }

    // Computed independently with Python's hashlib: salt = sha1(name.encode().hex().encode())
    // .hexdigest().encode(); blocks of 1024 bytes, each without b"\r\n", then b"\n"; a single
    // block shorter than the salt gets salt[:len(salt) - len(block)]; hexdigest of the whole.
    void fingerprint_data()
    {
        QTest::addColumn<QByteArray>("content"); // null: no such file
        QTest::addColumn<QString>("expected"); // the file's name and fingerprint
        const QByteArray config = "<config>\r\n  <information/>\r\n</config>\r\n";
        QTest::newRow("\\r\\n line ends")
            << config << "config.xml 18d123b658b577a2835890149bdfdeca23b8483b";
        QTest::newRow("\\n line ends") << QByteArray(config).replace("\r", "")
                                       << "config.xml 18d123b658b577a2835890149bdfdeca23b8483b";
        QTest::newRow("empty: the salt")
            << QByteArray("") << "empty.txt 5ece43e4d1f42c82c14649f09673a1968098b3ef";
        QTest::newRow("\\r ends a block, its \\n starts the next") << QByteArray(1023, 'x') + "\r\n"
                + QByteArray(100, 'y') << "edge.txt 09d599a6fdd155e795f242c382c925ea89d393d8";
        QTest::newRow("lone \\r stays")
            << QByteArray("a\rb\n") << "cr.txt 417f7d2e575408392c86044a97d65d99aa3ca991";
        QTest::newRow("short, salted by name")
            << QByteArray("abc") << "a.txt 9a10ad3df5570a44a7c91ca9e076d580f5463b37";
        QTest::newRow("long, not salted") << QByteArray("0123456789").repeated(5)
                                          << "a.txt 9578f951955d37f20b601c26591e260c1e5389bf";
        QTest::newRow("missing file leaves the hash") << QByteArray() << "missing.xml unchanged";
    }

    void fingerprint()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, expected);
        const QString path = folder.filePath(expected.section(' ', 0, 0));
        if (!content.isNull())
            writeFile(path, content);
        logging.entries.clear();
        QCOMPARE(hashOf(path), expected.section(' ', 1));
        QCOMPARE(logging.errors(),
                 content.isNull()
                     ? QStringList {"ERROR createHashFromFileContent: Could not open file: " + path}
                     : QStringList());
        QVERIFY(!FileSignature().isValid(path, true)); // no signature at all
    }

    // Line breaks changed after signing ("r": "\r\n", "n": "\n"); "t": in the temp folder.
    void signatures_data()
    {
        QTest::addColumn<QByteArray>("companion"); // null: the signature is appended
        QTest::addColumn<QString>("ends");
        QTest::addColumn<bool>("valid");
        QTest::addColumn<QByteArray>("content");
        const QByteArray usual = "<config>\n  <plugins/>\n</config>\n";
        QTest::newRow(".sig with a line break after it")
            << QByteArray("<hash>\n") << "n" << true << usual;
        QTest::newRow(".sig, on the last of several lines")
            << QByteArray("old\n<hash>") << "r" << true << usual;
        QTest::newRow(".sig in upper case") << QByteArray("<HASH>") << "n" << false << usual;
        QTest::newRow("appended, in the temporary folder") << QByteArray() << "t" << true << usual;
        QTest::newRow("appended, CRLF, LF, ... after signing")
            << QByteArray() << "rn" << true << usual;
        QTest::newRow("appended to a lone \\r")
            << QByteArray() << "n" << true << QByteArray("<plugins/>\r");
        QTest::newRow("appended to one short block")
            << QByteArray() << "n" << true
            << QByteArray(1000, '\n') + "<plugins/>" + QByteArray(14, '\n');
    }

    void signatures()
    {
        QFETCH(QByteArray, companion);
        QFETCH(QString, ends);
        QFETCH(bool, valid);
        QFETCH(QByteArray, content);
        const QString file = (ends == "t" ? QDir::tempPath() : folder.path())
            + QStringLiteral("/signed-%1.xml").arg(QCoreApplication::applicationPid());
        writeFile(file, content);
        QFile::remove(file + ".sig");
        const QByteArray hash = hashOf(file).toLatin1();
        FileSignature signature;
        if (companion.isNull()) {
            signature.signFile(file);
            QCOMPARE(readFile(file), content + "\n" + hash);
        } else {
            signature.saveHashInAFile(file, hash);
            QCOMPARE(readFile(file + ".sig"), hash);
            writeFile(file + ".sig",
                      companion.replace("<hash>", hash).replace("<HASH>", hash.toUpper()));
        }
        QByteArray changed;
        int breaks = 0;
        for (const char c : readFile(file))
            changed += c == '\n' && ends.at(breaks++ % ends.size()) == 'r' ? QByteArray("\r\n")
                                                                           : QByteArray(1, c);
        writeFile(file, changed);
        QCOMPARE(signature.checkFileWithIncludedSignature(file), companion.isNull());
        QCOMPARE(readFile(file), changed);
        QCOMPARE(signature.isValid(file, false), valid && !companion.isNull());
        QCOMPARE(signature.isValid(file, true), valid);
        writeFile(file, changed.replace("plugins", "Plugins"));
        QVERIFY(!signature.isValid(file, true));
        QFile::remove(file);
    }
};

QTEST_MAIN(tst_ConfigurationManager)
#include "tst_ConfigurationManager.moc"
