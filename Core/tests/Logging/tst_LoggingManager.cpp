#include "Exceptions/Exceptions.h"
#include "Logging/LogMessageHandler.h"
#include "Logging/LoggingManager.h"

#include "HelperProcess.h"
#include "TestFiles.h"

#include <QtTest>

#include <log4cplus/hierarchy.h>
#include <log4cplus/logger.h>

using corvane::base::business::LoggingManager;
using corvane::base::exceptions::PluginManagerException;
using corvane::base::interfaces::ILoggingManager;

namespace corvane {
namespace test {
class Sender : public QObject
{
    Q_OBJECT
};
} // namespace test
} // namespace corvane

Q_DECLARE_METATYPE(ILoggingManager::Loglevel)

namespace {

// The test executable's own folder serves as the application folder: the manager finds
// tst_LoggingManager.properties there and writes its relative log files below it.
QString applicationFolder()
{
    return QCoreApplication::applicationDirPath();
}

QString inApplicationFolder(const QString& relativePath)
{
    return applicationFolder() + QLatin1Char('/') + relativePath;
}

void writeProperties(const QString& appenderFile, const QByteArray& loggers = QByteArray())
{
    writeFile(inApplicationFolder(QStringLiteral("tst_LoggingManager.properties")),
              "log4cplus.appender.A=log4cplus::FileAppender\n"
              "log4cplus.appender.A.File="
                  + appenderFile.toUtf8()
                  + "\n"
                    "log4cplus.appender.A.layout=log4cplus::PatternLayout\n"
                    "log4cplus.appender.A.layout.ConversionPattern=%c|%p|%m%n\n"
                  + loggers);
}

// Closes the appenders, so that everything is on disk, and forgets the configuration.
void resetLog4cplus()
{
    log4cplus::Logger::getDefaultHierarchy().resetConfiguration();
}

QStringList readLines(const QString& path)
{
    resetLog4cplus();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return {QStringLiteral("<cannot open %1>").arg(path)};
    }
    return QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

QStringList capturedMessages;

void captureMessage(QtMsgType, const QMessageLogContext&, const QString& message)
{
    capturedMessages << message;
}

} // namespace

class tst_LoggingManager : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void filePathsInPropertiesAreResolved_data();
    void filePathsInPropertiesAreResolved();
    void badPropertiesNeverThrow_data();
    void badPropertiesNeverThrow();
    void levelsPerLoggerAndInheritance();
    void isLoglevelSetComparesTheLoggersOwnLevel_data();
    void isLoglevelSetComparesTheLoggersOwnLevel();
    void entriesReachTheFile();
    void qtMessagesAreRoutedWithFunctionAndLine();
    void disabledFatalMessageDoesNotEndTheProcess();
    void enabledFatalMessageIsWrittenAndEndsTheProcess_data();
    void enabledFatalMessageIsWrittenAndEndsTheProcess();
    void concurrentWritersLoseNothing();
    void lateMessagesAtExitAreSafe_data();
    void lateMessagesAtExitAreSafe();

private:
    LoggingManager* manager = LoggingManager::instance();
    corvane::test::Sender sender;
};

void tst_LoggingManager::init()
{
    resetLog4cplus();
    for (const char* folder : {"logs", "envlogs", "abs"}) {
        QDir(inApplicationFolder(QString::fromLatin1(folder))).removeRecursively();
    }
    qunsetenv("CT_LOGDIR");
    qunsetenv("CT_UNSET");
    capturedMessages.clear();
}

void tst_LoggingManager::cleanup()
{
    qInstallMessageHandler(nullptr);
    resetLog4cplus();
}

void tst_LoggingManager::filePathsInPropertiesAreResolved_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("resolved"); // as the manager leaves the property
    QTest::addColumn<QString>("logFile"); // where log4cplus writes, empty for nowhere
    QTest::addColumn<QString>("createdFolder");

    const QString app = applicationFolder();
    QTest::newRow("relative") << "logs/app.log" << app + "/logs/app.log" << app + "/logs/app.log"
                              << app + "/logs";
    QTest::newRow("relative, nested") << "logs/a/b/app.log" << app + "/logs/a/b/app.log"
                                      << app + "/logs/a/b/app.log" << app + "/logs/a/b";
    QTest::newRow("absolute") << app + "/abs/app.log" << app + "/abs/app.log"
                              << app + "/abs/app.log" << app + "/abs";
    QTest::newRow("set variable, left for log4cplus")
        << "${CT_LOGDIR}/app.log"
        << "${CT_LOGDIR}/app.log" << app + "/envlogs/app.log" << app + "/envlogs";
    QTest::newRow("unset variable") << "${CT_UNSET}/app.log"
                                    << "${CT_UNSET}/app.log"
                                    << ""
                                    << "";
}

void tst_LoggingManager::filePathsInPropertiesAreResolved()
{
    QFETCH(QString, value);
    QFETCH(QString, resolved);
    QFETCH(QString, logFile);
    QFETCH(QString, createdFolder);
    qputenv("CT_LOGDIR", inApplicationFolder(QStringLiteral("envlogs")).toUtf8());
    writeProperties(value,
                    "log4cplus.rootLogger=INFO, A\n"
                    "log4cplus.appender.B.FileName=logs/untouched.log\n");

    qInstallMessageHandler(captureMessage);
    manager->initialize();
    QVERIFY(capturedMessages.contains("--> log4cplus.appender.A.File = " + resolved));
    QVERIFY(capturedMessages.contains("--> log4cplus.appender.B.FileName = logs/untouched.log"));
    if (!createdFolder.isEmpty()) {
        QVERIFY(QFileInfo(createdFolder).isDir());
    }

    manager->logInfo(QStringLiteral("app"), QStringLiteral("hello"));
    if (!logFile.isEmpty()) {
        QCOMPARE(readLines(logFile), QStringList({"app|INFO|hello"}));
    }
}

void tst_LoggingManager::badPropertiesNeverThrow_data()
{
    QTest::addColumn<bool>("exists");
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("missing") << false << QByteArray();
    QTest::newRow("empty") << true << QByteArray();
    QTest::newRow("unset variable in a file path")
        << true
        << QByteArray("log4cplus.rootLogger=INFO, A\n"
                      "log4cplus.appender.A=log4cplus::FileAppender\n"
                      "log4cplus.appender.A.File=${CT_UNSET}/nowhere/app.log\n");
    QTest::newRow("garbage") << true
                             << QByteArray("=\n\x01\x02=\xff\nlog4cplus.rootLogger=, , ,\n"
                                           "log4cplus.appender.A=no::Such\n");
}

void tst_LoggingManager::badPropertiesNeverThrow()
{
    QFETCH(bool, exists);
    QFETCH(QByteArray, content);
    const QString properties = inApplicationFolder(QStringLiteral("tst_LoggingManager.properties"));
    QFile::remove(properties);
    if (exists) {
        writeFile(properties, content);
    }
    qInstallMessageHandler(corvane::logging::log4cxxMessageHandler);
    manager->initialize();
    manager->logError(QStringLiteral("app"), QStringLiteral("still running"));
    qWarning("still routed");
    manager->deinitialize();
}

void tst_LoggingManager::levelsPerLoggerAndInheritance()
{
    writeProperties(QStringLiteral("logs/levels.log"),
                    "log4cplus.rootLogger=WARN, A\n"
                    "log4cplus.logger.app=DEBUG\n"
                    "log4cplus.logger.app.quiet=ERROR\n");
    manager->initialize();
    manager->logDebug(QStringLiteral("app"), QStringLiteral("1"));
    manager->logDebug(QStringLiteral("app.child"), QStringLiteral("2 inherits DEBUG"));
    manager->logInfo(QStringLiteral("app.quiet"), QStringLiteral("3 below ERROR"));
    manager->logError(QStringLiteral("app.quiet"), QStringLiteral("4"));
    manager->logInfo(QStringLiteral("other"), QStringLiteral("5 below the root's WARN"));
    manager->logWarn(QStringLiteral("other"), QStringLiteral("6"));
    manager->logTrace(QStringLiteral("app"), QStringLiteral("7 below DEBUG"));
    manager->logFatal(QStringLiteral("app.child"), QStringLiteral("8"));

    QCOMPARE(readLines(inApplicationFolder(QStringLiteral("logs/levels.log"))),
             QStringList({"app|DEBUG|1", "app.child|DEBUG|2 inherits DEBUG", "app.quiet|ERROR|4",
                          "other|WARN|6", "app.child|FATAL|8"}));
}

void tst_LoggingManager::isLoglevelSetComparesTheLoggersOwnLevel_data()
{
    QTest::addColumn<QString>("logger");
    QTest::addColumn<ILoggingManager::Loglevel>("level");
    QTest::addColumn<bool>("set");

    QTest::newRow("own DEBUG, asked DEBUG") << "app" << ILoggingManager::DEBUG << true;
    QTest::newRow("own DEBUG, asked ERROR") << "app" << ILoggingManager::ERROR << true;
    QTest::newRow("own DEBUG, asked TRACE") << "app" << ILoggingManager::TRACE << false;
    QTest::newRow("own ERROR, asked WARN") << "app.quiet" << ILoggingManager::WARN << false;
    QTest::newRow("own ERROR, asked FATAL") << "app.quiet" << ILoggingManager::FATAL << true;
    QTest::newRow("no own level, asked TRACE") << "app.child" << ILoggingManager::TRACE << true;
    QTest::newRow("unknown level counts as TRACE")
        << "app" << static_cast<ILoggingManager::Loglevel>(9) << false;
}

void tst_LoggingManager::isLoglevelSetComparesTheLoggersOwnLevel()
{
    QFETCH(QString, logger);
    QFETCH(ILoggingManager::Loglevel, level);
    QFETCH(bool, set);
    writeProperties(QStringLiteral("logs/levels.log"),
                    "log4cplus.rootLogger=FATAL, A\n"
                    "log4cplus.logger.app=DEBUG\n"
                    "log4cplus.logger.app.quiet=ERROR\n");
    manager->initialize();
    QCOMPARE(manager->isLoglevelSet(logger, level), set);
}

void tst_LoggingManager::entriesReachTheFile()
{
    writeProperties(QStringLiteral("logs/entries.log"), "log4cplus.rootLogger=TRACE, A\n");
    manager->initialize();

    manager->logInfo(&sender, QStringLiteral("by sender"));
    manager->logInfo(static_cast<const QObject*>(nullptr), QStringLiteral("null sender"));
    const PluginManagerException exception(QStringLiteral("PluginManager"),
                                           QStringLiteral("loadPlugin"), QStringLiteral("x"));
    manager->logException(QStringLiteral("app"), exception);
    manager->logException(&sender, exception);
    manager->logInfo(QStringLiteral("app"), QStringLiteral("Größe ✓ über sechzehn Zeichen"));
    manager->changeLoglevel(QStringLiteral("app"), ILoggingManager::ERROR);
    manager->logWarn(QStringLiteral("app"), QStringLiteral("dropped after changeLoglevel"));
    manager->changeLoglevel(&sender, ILoggingManager::FATAL);
    manager->logError(&sender, QStringLiteral("dropped too"));
    manager->logEntry(ILoggingManager::TRACE, QStringLiteral("app"),
                      QStringLiteral("unchecked, still filtered by log4cplus"), false);

    QCOMPARE(readLines(inApplicationFolder(QStringLiteral("logs/entries.log"))),
             QStringList({"corvane.test.Sender|INFO|by sender", "unknown source|INFO|null sender",
                          "app|ERROR|PluginManager::loadPlugin x",
                          "corvane.test.Sender|ERROR|PluginManager::loadPlugin x",
                          "app|INFO|Größe ✓ über sechzehn Zeichen"}));
}

void tst_LoggingManager::qtMessagesAreRoutedWithFunctionAndLine()
{
    writeProperties(QStringLiteral("logs/qt.log"),
                    "log4cplus.rootLogger=TRACE, A\n"
                    "log4cplus.logger.Logging.LoggingManager=INFO\n");
    qInstallMessageHandler(corvane::logging::log4cxxMessageHandler);
    manager->initialize();
    const QString logger = corvane::logging::sanitizeSource(__FILE__);
    const int line = __LINE__ + 1;
    qInfo("routed %s", "Größe ✓ über sechzehn Zeichen");
    qDebug() << "quoted" << QStringLiteral("text");
    const QMessageLogContext unknownType("/a/src/Seven.cpp", 3, "void g()", "default");
    corvane::logging::log4cxxMessageHandler(static_cast<QtMsgType>(7), unknownType,
                                            QStringLiteral("seven"));
    manager->deinitialize();

    const QStringList lines = readLines(inApplicationFolder(QStringLiteral("logs/qt.log")));
    const QString function = QStringLiteral("qtMessagesAreRoutedWithFunctionAndLine");
    QCOMPARE(lines.size(), 4);
    QVERIFY2(QRegularExpression(
                 QStringLiteral("^Logging\\.LoggingManager\\|INFO\\|initialize\\(\\d+\\): "
                                "----------------start of log file-{34}$"))
                 .match(lines.at(0))
                 .hasMatch(),
             qPrintable(lines.at(0)));
    QCOMPARE(lines.at(1),
             QStringLiteral("%1|INFO|%2(%3): routed Größe ✓ über sechzehn Zeichen")
                 .arg(logger, function)
                 .arg(line));
    QCOMPARE(
        lines.at(2),
        QStringLiteral("%1|DEBUG|%2(%3): quoted \"text\"").arg(logger, function).arg(line + 1));
    QCOMPARE(lines.at(3), QStringLiteral("Seven|ERROR|void g(3): seven"));
}

void tst_LoggingManager::disabledFatalMessageDoesNotEndTheProcess()
{
    writeProperties(QStringLiteral("logs/fatal.log"),
                    "log4cplus.rootLogger=TRACE, A\n"
                    "log4cplus.logger.Quiet=OFF\n");
    manager->initialize();
    const QMessageLogContext context("/a/src/Quiet.cpp", 1, "void f()", "default");
    corvane::logging::log4cxxMessageHandler(QtFatalMsg, context, QStringLiteral("not written"));
    QCOMPARE(readLines(inApplicationFolder(QStringLiteral("logs/fatal.log"))), QStringList());
}

// The lines before a fatal message and the fatal line itself are in the file after the abort,
// also when the appender holds them back (in a buffer, or in the queue of its own thread).
void tst_LoggingManager::enabledFatalMessageIsWrittenAndEndsTheProcess_data()
{
    QTest::addColumn<QByteArray>("appender");
    QTest::newRow("file appender")
        << QByteArray("log4cplus.appender.A=log4cplus::FileAppender\n"
                      "log4cplus.appender.A.File=logs/fatal-writer.log\n"
                      "log4cplus.appender.A.layout=log4cplus::PatternLayout\n"
                      "log4cplus.appender.A.layout.ConversionPattern=%c|%p|%m%n\n");
    QTest::newRow("buffered file appender")
        << QByteArray("log4cplus.appender.A=log4cplus::FileAppender\n"
                      "log4cplus.appender.A.File=logs/fatal-writer.log\n"
                      "log4cplus.appender.A.ImmediateFlush=false\n"
                      "log4cplus.appender.A.BufferSize=65536\n"
                      "log4cplus.appender.A.layout=log4cplus::PatternLayout\n"
                      "log4cplus.appender.A.layout.ConversionPattern=%c|%p|%m%n\n");
    // Its thread may or may not have passed the lines on before the abort; the buffer of the
    // file appender behind it holds them back in either case.
    QTest::newRow("asynchronous appender")
        << QByteArray("log4cplus.appender.A=log4cplus::AsyncAppender\n"
                      "log4cplus.appender.A.QueueLimit=1000\n"
                      "log4cplus.appender.A.Appender=log4cplus::FileAppender\n"
                      "log4cplus.appender.A.Appender.File=logs/fatal-writer.log\n"
                      "log4cplus.appender.A.Appender.ImmediateFlush=false\n"
                      "log4cplus.appender.A.Appender.BufferSize=65536\n"
                      "log4cplus.appender.A.Appender.layout=log4cplus::PatternLayout\n"
                      "log4cplus.appender.A.Appender.layout.ConversionPattern=%c|%p|%m%n\n");
}

void tst_LoggingManager::enabledFatalMessageIsWrittenAndEndsTheProcess()
{
    QFETCH(QByteArray, appender);
    writeFile(inApplicationFolder(QStringLiteral("FatalWriter.properties")),
              "log4cplus.rootLogger=TRACE, A\n" + appender);
    const HelperRun run = runHelper(inApplicationFolder(QStringLiteral("FatalWriter")));
    QVERIFY2(run.finished && run.gone && run.status == QProcess::CrashExit,
             qPrintable(run.report()));
    QVERIFY(!run.out.contains("survived"));

    const QStringList lines
        = QString::fromUtf8(readFile(inApplicationFolder(QStringLiteral("logs/fatal-writer.log"))))
              .split(QLatin1Char('\n'))
              .filter(QRegularExpression(QStringLiteral("^Fatal\\.Writer\\|")));
    QCOMPARE(lines,
             QStringList({"Fatal.Writer|INFO|first", "Fatal.Writer|WARN|stop(7): second",
                          "Fatal.Writer|FATAL|stop(7): the end"}));
}

void tst_LoggingManager::concurrentWritersLoseNothing()
{
    writeProperties(QStringLiteral("logs/threads.log"),
                    "log4cplus.rootLogger=INFO, A\n"
                    "log4cplus.appender.A.ImmediateFlush=false\n"
                    "log4cplus.appender.A.layout.ConversionPattern=%m%n\n");
    qInstallMessageHandler(corvane::logging::log4cxxMessageHandler);
    manager->initialize();

    constexpr int threadCount = 8;
    constexpr int messagesPerThread = 20000;
    const QString padding(40, QLatin1Char('x'));
    QList<QThread*> threads;
    for (int t = 0; t < threadCount; ++t) {
        threads << QThread::create([this, t, &padding] {
            for (int i = 0; i < messagesPerThread; ++i) {
                const QString message = QStringLiteral("T%1-%2-%3").arg(t).arg(i).arg(padding);
                if (i % 2 == 0) {
                    manager->logInfo(QStringLiteral("threads"), message);
                } else {
                    qInfo().noquote() << message;
                }
            }
        });
        threads.last()->start();
    }
    for (QThread* thread : threads) {
        QVERIFY(thread->wait(300000));
        delete thread;
    }

    const QRegularExpression whole(QStringLiteral("^(?:\\w+\\(\\d+\\): )?(T\\d-\\d+)-x{40}$"));
    QSet<QString> seen;
    for (const QString& line : readLines(inApplicationFolder(QStringLiteral("logs/threads.log")))) {
        if (!line.contains(QLatin1String("-xxxx")) && !line.startsWith(QLatin1Char('T'))) {
            continue; // the manager's own start-up lines
        }
        const QRegularExpressionMatch match = whole.match(line);
        QVERIFY2(match.hasMatch(), qPrintable(line));
        QVERIFY2(!seen.contains(match.captured(1)), qPrintable(line));
        seen.insert(match.captured(1));
    }
    QCOMPARE(seen.size(), threadCount * messagesPerThread);
}

// A Qt message or a direct log call while the process or a thread ends, after the logging
// manager's per-thread state may be gone: it must neither crash nor touch freed memory.
void tst_LoggingManager::lateMessagesAtExitAreSafe_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("Qt message from a static destructor") << QStringList {"static", "qt"};
    QTest::newRow("logInfo from a static destructor") << QStringList {"static", "direct"};
    QTest::newRow("Qt message as a thread ends") << QStringList {"thread", "qt"};
    QTest::newRow("logInfo as a thread ends") << QStringList {"thread", "direct"};
}

void tst_LoggingManager::lateMessagesAtExitAreSafe()
{
    QFETCH(QStringList, arguments);
    writeFile(inApplicationFolder(QStringLiteral("LateLogger.properties")),
              "log4cplus.rootLogger=TRACE, A\n"
              "log4cplus.appender.A=log4cplus::FileAppender\n"
              "log4cplus.appender.A.File=logs/late.log\n");
    const HelperRun run = runHelper(inApplicationFolder(QStringLiteral("LateLogger")), arguments);
    QVERIFY2(run.exitedCleanly(), qPrintable(run.report()));
    QCOMPARE(run.out, QByteArray("late message written\n"));
}

QTEST_MAIN(tst_LoggingManager)
#include "tst_LoggingManager.moc"
