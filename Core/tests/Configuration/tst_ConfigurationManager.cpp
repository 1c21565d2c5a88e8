#include "FakeManagers.h"

#include "Configuration/ConfigurationManager.h"
#include "Configuration/FileSignature.h"
#include "Exceptions/Exceptions.h"
#include "StartUp/ManagerRegistry.h"

#include "TestFiles.h"
#include <QDomDocument>

#include <QtTest>

using corvane::base::business::ConfigurationManager;
using corvane::base::business::FileSignature;
using corvane::base::business::ManagerRegistry;
using corvane::base::entities::ApplicationInformation;
using corvane::base::entities::PluginConfiguration;
using namespace corvane::base::exceptions;

namespace {

QStringList messages;

void captureMessage(QtMsgType type, const QMessageLogContext&, const QString& message)
{
    messages << QStringLiteral("%1 %2").arg(type == QtCriticalMsg ? "critical" : "info", message);
}

QString describe(const ApplicationInformation& info)
{
    return QStringList({info.getApplicationName(), info.getApplicationTitle(),
                        info.getApplicationTypeAsString(), info.getVersion(), info.getVersionName(),
                        info.getCopyright(), info.getReleaseDate().toString(Qt::ISODate),
                        info.getSingleAppId(),
                        info.hasSingleAppUserNotification() ? "notify" : "quiet"})
        .join('|');
}

// "library:<configuration's id attribute or 'null'>" per entry.
QStringList describe(const QList<PluginConfiguration>& plugins)
{
    QStringList entries;
    for (const PluginConfiguration& plugin : plugins) {
        QString library;
        QDomElement configuration;
        plugin.getLibrary(library);
        plugin.getConfiguration(configuration);
        entries << library + ':'
                + (configuration.isNull() ? QStringLiteral("null") : configuration.attribute("id"));
    }
    return entries;
}

QString defaultConfigurationFile()
{
    return QCoreApplication::applicationDirPath() + "/tst_ConfigurationManager.xml";
}

} // namespace

class tst_ConfigurationManager : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void cannotBeCreatedBeforeTheLoggingManager();
    void filePath_data();
    void filePath();
    void rootElement_data();
    void rootElement();
    void readConfig_data();
    void readConfig();
    void libraryNames_data();
    void libraryNames();
    void initializeReadsAndLogsTheFile();
    void failedInitializeKeepsWhatWasRead();
    void signatureCheck();

private:
    QTemporaryDir folder;
    fakes::LoggingManager logging;
};

void tst_ConfigurationManager::init()
{
    messages.clear();
    qInstallMessageHandler(captureMessage);
}

void tst_ConfigurationManager::cleanup()
{
    qInstallMessageHandler(nullptr);
}

void tst_ConfigurationManager::cannotBeCreatedBeforeTheLoggingManager()
{
    try {
        ConfigurationManager::instance();
        QFAIL("no exception");
    } catch (const ManagerRegistryException& e) {
        QCOMPARE(e.getReason(), QStringLiteral("loggingManager not registered!"));
    }
    ManagerRegistry::instance()->registerManager(logging);
    QVERIFY(ConfigurationManager::instance() != nullptr);
}

void tst_ConfigurationManager::filePath_data()
{
    QTest::addColumn<QString>("executable");
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("path");

    QTest::newRow("base name up to the first dot")
        << "/app/Tool.main" << QStringList {"/app/Tool.main"} << "/app/Tool.xml";
    QTest::newRow("-C, relative") << "/app/Tool" << QStringList {"/app/Tool", "-C", "sub/my.xml"}
                                  << "/app/sub/my.xml";
    QTest::newRow("-C, absolute value still below the folder")
        << "/app/Tool" << QStringList {"/app/Tool", "-C", "/etc/my.xml"} << "/app//etc/my.xml";
    QTest::newRow("-C as last argument")
        << "/app/Tool" << QStringList {"/app/Tool", "x", "-C"} << "/app/Tool.xml";
    QTest::newRow("-c is no option")
        << "/app/Tool" << QStringList {"/app/Tool", "-c", "my.xml"} << "/app/Tool.xml";
    QTest::newRow("first -C wins")
        << "/app/Tool" << QStringList {"/app/Tool", "-C", "a.xml", "-C", "b.xml"} << "/app/a.xml";
}

void tst_ConfigurationManager::filePath()
{
    QFETCH(QString, executable);
    QFETCH(QStringList, arguments);
    QFETCH(QString, path);
    QCOMPARE(ConfigurationManager::getFilePath(executable, arguments), path);
}

void tst_ConfigurationManager::rootElement_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("content"); // null: no such file
    QTest::addColumn<QString>("error"); // <path> stands for the file's path
    QTest::addColumn<QString>("critical");

    QTest::newRow("missing") << "missing.xml" << QByteArray() << "Cannot open config file: <path>"
                             << "initialize: Cannot open config file: <path>";
    QTest::newRow("a folder") << "folder.xml" << QByteArray() << "Cannot open config file: <path>"
                              << "initialize: Cannot open config file: <path>";
    const QString malformed = "Config file '<path>' is not an XML Document. Error 'tag mismatch' "
                              "detect at line 3, column 9.";
    QTest::newRow("malformed") << "malformed.xml"
                               << QByteArray("<config>\n<information>\n</config>") << malformed
                               << malformed;
    QTest::newRow("wrong root")
        << "wrong.xml" << QByteArray("<configuration/>")
        << "Config file does not contain correct XML tag (<path>)."
        << "initialize: Config file does not contain correct XML tag: <path>";
    QTest::newRow("CONFIG in capitals") << "upper.xml" << QByteArray("<CONFIG/>") << ""
                                        << "";
}

void tst_ConfigurationManager::rootElement()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, content);
    QFETCH(QString, error);
    QFETCH(QString, critical);
    const QString path = folder.filePath(name);
    if (name == QLatin1String("folder.xml")) {
        QVERIFY(QDir().mkpath(path));
    } else if (!content.isNull()) {
        writeFile(path, content);
    }

    QDomElement root;
    QCOMPARE(ConfigurationManager::getRootElement(path, root), error.replace("<path>", path));
    QStringList expected {"info initialize: Opening " + path};
    if (!critical.isEmpty()) {
        expected << "critical " + critical.replace("<path>", path);
    }
    QCOMPARE(messages, expected);
    if (error.isEmpty()) {
        QCOMPARE(root.tagName(), QStringLiteral("CONFIG"));
    }
}

void tst_ConfigurationManager::readConfig_data()
{
    QTest::addColumn<QByteArray>("xml");
    QTest::addColumn<QString>("information");
    QTest::addColumn<QStringList>("plugins");

    QTest::newRow("every value, tags in any case")
        << QByteArray("<Config><Information>"
                      "<ApplicationName>Demo</ApplicationName>"
                      "<APPLICATIONTITLE>Demo <b>bold</b> title</APPLICATIONTITLE>"
                      "<applicationtype>console</applicationtype>"
                      "<version>1.2</version><versionname>Größe ✓</versionname>"
                      "<copyright>(c)</copyright><releasedate>2016-03-01</releasedate>"
                      "<singleappid>demo</singleappid>"
                      "<singleappusernotification>TRUE</singleappusernotification>"
                      "</Information></Config>")
        << "Demo|Demo bold title|CONSOLE|1.2|Größe ✓|(c)|2016-03-01|demo|notify" << QStringList();
    QTest::newRow("nothing known") << QByteArray("<config>text<!-- c --><other/></config>")
                                   << "||NO_TYPE||||||quiet" << QStringList();
    QTest::newRow("repeated sections and tags")
        << QByteArray("<config>"
                      "<information><applicationname>A</applicationname><version>1</version>"
                      "<applicationtype>GUI</applicationtype></information>"
                      "<plugins><plugin><library>First</library></plugin></plugins>"
                      "<information><applicationname>B</applicationname>"
                      "<applicationname>C</applicationname>"
                      "<applicationtype>desktop</applicationtype>"
                      "<releasedate>01.03.2016</releasedate><unknown>x</unknown></information>"
                      "<PLUGINS><plugin><library>Second</library></plugin></PLUGINS>"
                      "</config>")
        << "C||GUI|1|||||quiet" << QStringList {"First.dll:null", "Second.dll:null"};
    QTest::newRow("plug-in entries")
        << QByteArray("<config><plugins>"
                      "<plugin><library>libA.so</library>"
                      "<configuration id=\"a1\"/><configuration id=\"a2\"/></plugin>"
                      "<Plugin><configuration id=\"b\"/></Plugin>"
                      "<plugin><Library>C</Library><library>D</library></plugin>"
                      "<notaplugin><library>E</library></notaplugin>"
                      "</plugins></config>")
        << "||NO_TYPE||||||quiet" << QStringList {"A.dll:a1", ".dll:b", "D.dll:null"};
}

void tst_ConfigurationManager::readConfig()
{
    QFETCH(QByteArray, xml);
    QFETCH(QString, information);
    QFETCH(QStringList, plugins);
    QDomDocument document;
    QVERIFY(document.setContent(xml));

    ApplicationInformation info;
    QList<PluginConfiguration> entries;
    ConfigurationManager::readConfig(document.documentElement(), info, entries);
    QCOMPARE(describe(info), information);
    QCOMPARE(describe(entries), plugins);
}

void tst_ConfigurationManager::libraryNames_data()
{
    QTest::addColumn<QString>("written");
    QTest::addColumn<QString>("normalised");
    QTest::newRow("dll in any case stays") << "Foo.DLL"
                                           << "Foo.DLL";
    QTest::newRow("lib prefix and .so") << "libBar.so"
                                        << "Bar.dll";
    QTest::newRow(".so in capitals") << "libBar.SO"
                                     << "Bar.dll";
    QTest::newRow("no suffix") << "Baz"
                               << "Baz.dll";
    QTest::newRow("path") << "plugins/libBaz.so"
                          << "plugins/Baz.dll";
    QTest::newRow("last lib is dropped") << "liblibx.so"
                                         << "libx.dll";
    QTest::newRow("lib inside the name") << "mylibfoo.so"
                                         << "myfoo.dll";
    QTest::newRow(".so without lib repeats the tail") << "foo.so"
                                                      << "fooo.dll";
    QTest::newRow("empty") << ""
                           << ".dll";
}

void tst_ConfigurationManager::libraryNames()
{
    QFETCH(QString, written);
    QFETCH(QString, normalised);
    QDomDocument document;
    QVERIFY(document.setContent(
        QStringLiteral("<config><plugins><plugin><library>%1</library></plugin></plugins></config>")
            .arg(written)));
    ApplicationInformation info;
    QList<PluginConfiguration> entries;
    ConfigurationManager::readConfig(document.documentElement(), info, entries);
    QCOMPARE(describe(entries), QStringList {normalised + ":null"});
}

void tst_ConfigurationManager::initializeReadsAndLogsTheFile()
{
    writeFile(defaultConfigurationFile(),
              "<config><information>"
              "<applicationname>Demo</applicationname><applicationtitle>Demo App</applicationtitle>"
              "<applicationtype>SERVICE</applicationtype><version>1.2.3</version>"
              "<versionname>Eins</versionname><copyright>(c) Corvane</copyright>"
              "<releasedate>2016-03-01</releasedate><singleappid>demo</singleappid>"
              "<singleappusernotification>true</singleappusernotification>"
              "</information><plugins>"
              "<plugin><library>libHello.so</library><configuration id=\"h\"/></plugin>"
              "<plugin><library>World</library></plugin>"
              "</plugins></config>");
    ConfigurationManager* manager = ConfigurationManager::instance();
    manager->initialize();

    QCOMPARE(messages,
             QStringList({
                 "info initialize: Opening " + defaultConfigurationFile(),
                 "info initialize: Applicationinformation",
                 "info initialize:   applicationname           =  \"Demo\"",
                 "info initialize:   applicationtitle          =  \"Demo App\"",
                 "info initialize:   applicationtype           =  \"SERVICE\"",
                 "info initialize:   version                   =  \"1.2.3\"",
                 "info initialize:   versionName               =  \"Eins\"",
                 "info initialize:   copyright                 =  \"(c) Corvane\"",
                 "info initialize:   releasedate               =  \"Tue Mar 1 2016\"",
                 "info initialize:   singleappid               =  \"demo\"",
                 "info initialize:   singleappusernotification =  true",
                 "info initialize: Plugins",
                 "info initialize:   \"Hello.dll\"",
                 "info initialize:   \"World.dll\"",
             }));

    ApplicationInformation info;
    manager->getApplicationInformation(info);
    QCOMPARE(describe(info), "Demo|Demo App|SERVICE|1.2.3|Eins|(c) Corvane|2016-03-01|demo|notify");
    QList<PluginConfiguration> plugins {PluginConfiguration("stale", QDomElement())};
    manager->getPluginConfiguration(plugins);
    QCOMPARE(describe(plugins), QStringList({"Hello.dll:h", "World.dll:null"}));

    manager->deinitialize();
    manager->getPluginConfiguration(plugins);
    QVERIFY(plugins.isEmpty());
    manager->getApplicationInformation(info);
    QCOMPARE(info.getApplicationName(), QStringLiteral("Demo"));

    manager->initialize();
    manager->getPluginConfiguration(plugins);
    QCOMPARE(plugins.size(), 2);
}

void tst_ConfigurationManager::failedInitializeKeepsWhatWasRead()
{
    ConfigurationManager* manager = ConfigurationManager::instance();
    writeFile(defaultConfigurationFile(), "<config><plugins>");
    try {
        manager->initialize();
        QFAIL("no exception");
    } catch (const ConfigurationManagerException& e) {
        QVERIFY2(QByteArray(e.what()).startsWith(
                     "corvane::base::business::ConfigurationManager::initialize Config file '"),
                 e.what());
    }
    QList<PluginConfiguration> plugins;
    manager->getPluginConfiguration(plugins);
    QCOMPARE(plugins.size(), 2);
}

void tst_ConfigurationManager::signatureCheck()
{
    const QString file = defaultConfigurationFile();
    writeFile(file, "<config/>\n");
    QFile::remove(file + ".sig");
    ConfigurationManager* manager = ConfigurationManager::instance();

    const QString reason = "Signature check for configuration file has found an error: " + file;
    try {
        manager->checkConfigurationFileSignature();
        QFAIL("no exception");
    } catch (const InvalidSignatureException& e) {
        QCOMPARE(e.getMethod(), QStringLiteral("initialize"));
        QCOMPARE(e.getReason(), reason);
    }
    QCOMPARE(messages.last(), "critical initialize: " + reason);

    FileSignature signature;
    QString hash;
    signature.createHashFromFileContent(file, hash);
    signature.saveHashInAFile(file, hash);
    manager->checkConfigurationFileSignature();
}

QTEST_MAIN(tst_ConfigurationManager)
#include "tst_ConfigurationManager.moc"
