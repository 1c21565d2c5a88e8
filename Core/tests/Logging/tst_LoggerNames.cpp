// Logger names come from the source file that wrote a message. They must be the same wherever
// the code was checked out, so every file name the build records is relative to the source
// root: the library's, a plug-in's and the tests' own.

#include "Interfaces/IPlugin.h"
#include "Logging/LogMessageHandler.h"
#include "Logging/LoggingManager.h"
#include "StartUp/ManagerRegistry.h"

#include "TestFiles.h"

#include <QtTest>

#include <log4cplus/hierarchy.h>
#include <log4cplus/logger.h>

using corvane::base::business::LoggingManager;
using corvane::base::business::ManagerRegistry;
using corvane::base::interfaces::IPlugin;

namespace {

QString inApplicationFolder(const QString& relativePath)
{
    return QCoreApplication::applicationDirPath() + QLatin1Char('/') + relativePath;
}

// The file each message was recorded with, by message text.
QHash<QString, QString> recordedFiles;

void recordAndRoute(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    recordedFiles.insert(message, QString::fromUtf8(context.file));
    corvane::logging::log4cxxMessageHandler(type, context, message);
}

} // namespace

class tst_LoggerNames : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void fileNamesAreRelativeToTheSourceRoot_data();
    void fileNamesAreRelativeToTheSourceRoot();

private:
    QStringList logLines;
};

// Writes one message from each kind of code into a real log file: the library's start line,
// a plug-in's line when it is initialized, and one from this test.
void tst_LoggerNames::initTestCase()
{
    QDir(inApplicationFolder(QStringLiteral("logs"))).removeRecursively();
    writeFile(inApplicationFolder(QStringLiteral("tst_LoggerNames.properties")),
              "log4cplus.rootLogger=INFO, A\n"
              "log4cplus.appender.A=log4cplus::FileAppender\n"
              "log4cplus.appender.A.File=logs/names.log\n"
              "log4cplus.appender.A.layout=log4cplus::PatternLayout\n"
              "log4cplus.appender.A.layout.ConversionPattern=%c|%m%n\n");
    qInstallMessageHandler(recordAndRoute);
    LoggingManager* logging = LoggingManager::instance();
    ManagerRegistry::instance()->registerManager(*logging);
    logging->initialize();

    QPluginLoader loader(QStringLiteral(TEST_PLUGIN_FOLDER "/libPluginC.so"));
    IPlugin* plugin = qobject_cast<IPlugin*>(loader.instance());
    QVERIFY2(plugin, qPrintable(loader.errorString()));
    plugin->initialize();
    plugin->deinitialize();
    QVERIFY(loader.unload());

    qInfo("from the test");

    qInstallMessageHandler(nullptr);
    log4cplus::Logger::getDefaultHierarchy().resetConfiguration();
    logLines = QString::fromUtf8(readFile(inApplicationFolder(QStringLiteral("logs/names.log"))))
                   .split(QLatin1Char('\n'));
}

void tst_LoggerNames::cleanupTestCase()
{
    ManagerRegistry::instance()->unregisterManager(*LoggingManager::instance());
}

void tst_LoggerNames::fileNamesAreRelativeToTheSourceRoot_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("file"); // relative to the source root
    QTest::addColumn<QString>("logger");

    QTest::newRow("library")
        << "----------------start of log file----------------------------------"
        << "Core/src/Logging/LoggingManager.cpp"
        << "Logging.LoggingManager";
    QTest::newRow("plug-in") << "test: PluginC initialized"
                             << "Core/tests/Plugins/TestPlugins/TestPlugin.cpp"
                             << "Core.tests.Plugins.TestPlugins.TestPlugin";
    QTest::newRow("test") << "from the test"
                          << "Core/tests/Logging/tst_LoggerNames.cpp"
                          << "Core.tests.Logging.tst_LoggerNames";
}

void tst_LoggerNames::fileNamesAreRelativeToTheSourceRoot()
{
    QFETCH(QString, message);
    QFETCH(QString, file);
    QFETCH(QString, logger);

    QVERIFY2(recordedFiles.contains(message), qPrintable(message));
    QCOMPARE(QDir::cleanPath(recordedFiles.value(message)), file);

    // The logger is named after that relative path; the line's text ends with the message.
    const QStringList lines
        = logLines.filter(QRegularExpression("\\): " + QRegularExpression::escape(message) + "$"));
    QCOMPARE(lines.size(), 1);
    QCOMPARE(lines.first().section(QLatin1Char('|'), 0, 0), logger);
}

QTEST_MAIN(tst_LoggerNames)
#include "tst_LoggerNames.moc"
