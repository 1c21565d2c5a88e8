#include "HelperProcess.h"
#include "TestFiles.h"

#include "Exceptions/Exceptions.h"
#include "Logging/FunctionLogger.h"
#include "Logging/LogMessageHandler.h"
#include "Logging/LoggingManager.h"

#include <QtTest>

#include <log4cplus/hierarchy.h>
#include <log4cplus/logger.h>

using namespace corvane::base::business;
using namespace corvane::logging;
using Level = corvane::base::interfaces::ILoggingManager::Loglevel;

QString folder()
{
    return QCoreApplication::applicationDirPath() + "/";
}

QByteArray fileAppender(const QByteArray& name, const QString& file)
{
    const QByteArray prefix = "log4cplus.appender." + name;
    return prefix + "=log4cplus::FileAppender\n" + prefix + ".File=" + file.toUtf8() + "\n" + prefix
        + ".layout=log4cplus::PatternLayout\n" + prefix + ".layout.ConversionPattern=%c|%p|%m%n\n";
}

QStringList readLines(const QString& relativePath)
{
    log4cplus::Logger::getDefaultHierarchy().resetConfiguration();
    return QString::fromUtf8(readFile(folder() + relativePath)).split('\n', Qt::SkipEmptyParts);
}

QStringList messages;

class tst_LoggingManager : public QObject
{
    Q_OBJECT

    LoggingManager* manager = LoggingManager::instance();

private slots:
    void init()
    {
        log4cplus::Logger::getDefaultHierarchy().resetConfiguration();
        for (const char* made : {"logs", "envlogs", "abs"})
            QDir(folder() + made).removeRecursively();
    }

    void cleanup() { qInstallMessageHandler(nullptr); }

    // Entries written directly, through Qt's messages and by function loggers; file paths.
    void entriesReachTheFile()
    {
        qputenv("CT_LOGDIR", (folder() + "envlogs").toUtf8());
        writeFile(folder() + "tst_LoggingManager.properties",
                  fileAppender("A", "logs/entries.log") + fileAppender("B", folder() + "abs/b.log")
                      + fileAppender("C", "${CT_LOGDIR}/c.log")
                      + fileAppender("D", "${CT_UNSET}/d.log")
                      + "log4cplus.appender.E.FileName=logs/e.log\nlog4cplus.rootLogger=INFO, "
                        "A\nlog4cplus.logger.app=DEBUG\nlog4cplus.logger.app.quiet="
                        "ERROR\nlog4cplus.logger.Logging=INFO\nlog4cplus.logger.Core.tests="
                        "TRACE\nlog4cplus.logger.Quiet=OFF\n");
        messages.clear();
        qInstallMessageHandler(
            [](QtMsgType type, const QMessageLogContext& context, const QString& text) {
                messages << text;
                log4cxxMessageHandler(type, context, text);
            });
        manager->initialize();
        for (const QString& property :
             {"A.File = " + folder() + "logs/entries.log", "B.File = " + folder() + "abs/b.log",
              QString("C.File = ${CT_LOGDIR}/c.log"), QString("D.File = ${CT_UNSET}/d.log"),
              QString("E.FileName = logs/e.log")})
            QVERIFY2(messages.contains("--> log4cplus.appender." + property), qPrintable(property));
        QVERIFY(QDir(folder() + "abs").exists() && QDir(folder() + "envlogs").exists());
        // The logger's own level counts, not the inherited one; an unknown level is TRACE.
        QVERIFY(manager->isLoglevelSet("app", Level::DEBUG)
                && manager->isLoglevelSet("app", Level::ERROR));
        QVERIFY(!manager->isLoglevelSet("app", Level::TRACE)
                && !manager->isLoglevelSet("app", Level(9)));
        QVERIFY(!manager->isLoglevelSet("app.quiet", Level::WARN)
                && manager->isLoglevelSet("app.quiet", Level::FATAL));
        QVERIFY(manager->isLoglevelSet("app.child", Level::TRACE));
        manager->logDebug("app", "1");
        manager->logTrace("app", "below DEBUG");
        manager->logInfo("app.quiet", "below ERROR");
        manager->logError("app.quiet", "2");
        manager->logWarn("other", "3");
        manager->logFatal("app.child", "4");
        manager->logInfo(manager, "by sender");
        manager->logWarn(static_cast<const QObject*>(nullptr), "null sender");
        const corvane::base::exceptions::PluginManagerException exception("PluginManager",
                                                                          "loadPlugin", "x");
        manager->logException("app", exception);
        manager->logException(manager, exception);
        manager->logInfo("app", "Größe ✓");
        manager->changeLoglevel("app", Level::ERROR);
        manager->logWarn("app", "below the changed level");
        manager->changeLoglevel(manager, Level::FATAL);
        manager->logError(manager, "below the changed level");
        QVERIFY(!manager->isLoglevelSet(manager, Level::ERROR)
                && manager->isLoglevelSet(manager, Level::FATAL));
        manager->logFatal(manager, "fatal by sender");
        manager->changeLoglevel(manager, Level::TRACE);
        manager->logTrace(manager, "trace by sender");
        manager->logEntry(Level::INFO, "app", "unchecked, still filtered", false);
        const int line = __LINE__ + 1;
        qInfo("routed %s", "Größe ✓");
        qDebug() << "quoted" << QStringLiteral("text");
        log4cxxMessageHandler(QtMsgType(7), {"src\\app\\quiet.c", 3, "int f(int)", ""}, "seven");
        log4cxxMessageHandler(QtCriticalMsg,
                              {"x/src/app/src/g.h", 4, "void a::B::g(std::vector<a::C>) const", ""},
                              "critical");
        log4cxxMessageHandler(QtInfoMsg, {"Makefile", 5, nullptr, ""}, "made");
        log4cxxMessageHandler(QtFatalMsg, {"/a/src/Quiet.cpp", 1, "void f()", ""}, "not written");
        FunctionLogger::setLoggingManager(manager);
        {
            FunctionLogger outer("Owner", "load");
            FunctionLogger inner(manager, "parse");
            inner.log("step");
        }
        FunctionLogger::setLoggingManager(nullptr);
        FunctionLogger("Owner", "unwritten");
        QCOMPARE(formatLogMessage({nullptr, 0, nullptr, ""}, "m"), QStringLiteral("(0): m"));

        QStringList lines = readLines("logs/entries.log");
        lines.first().replace(QRegularExpression("\\(\\d+\\)"), "(N)");
        QCOMPARE(
            lines.join(" / "),
            QStringLiteral(
                "Logging.LoggingManager|INFO|initialize(N): ----------------start of log "
                "file---------------------------------- / app|DEBUG|1 / app.quiet|ERROR|2 / "
                "other|WARN|3 / app.child|FATAL|4 / corvane.base.business.LoggingManager|INFO|by "
                "sender / unknown source|WARN|null sender / app|ERROR|PluginManager::loadPlugin x "
                "/ corvane.base.business.LoggingManager|ERROR|PluginManager::loadPlugin x / "
                "app|INFO|Größe ✓ / corvane.base.business.LoggingManager|FATAL|fatal by sender / "
                "corvane.base.business.LoggingManager|TRACE|trace by sender / "
                "Core.tests.Logging.tst_LoggingManager|INFO|entriesReachTheFile(%1): routed Größe "
                "✓ / Core.tests.Logging.tst_LoggingManager|DEBUG|entriesReachTheFile(%2): quoted "
                "\"text\" / src.app.quiet|ERROR|int f(3): seven / app.src.g|ERROR|g(4): critical / "
                "Makefil|INFO|(5): made / || Owner|INFO|load() entered / ||=>| "
                "corvane::base::business::LoggingManager|INFO|parse() entered / ||=>| "
                "corvane::base::business::LoggingManager|INFO|parse() step / ||=>| "
                "corvane::base::business::LoggingManager|INFO|parse() left / || Owner|INFO|load() "
                "left")
                .arg(line)
                .arg(line + 1));
    }

    // Every initialize() applies the properties file as it stands, so a file appender cuts its
    // log unless the file says Append=true; the service's reload() keeps the log whatever the
    // file says. The properties logged are the file's.
    void repeatedRuns_data()
    {
        QTest::addColumn<QByteArray>("more"); // beside appender A
        QTest::addColumn<QString>("second"); // how the manager is run again
        QTest::addColumn<QStringList>("lines"); // of the log
        QTest::addColumn<QStringList>("logged"); // the second run's lines naming Append
        const QStringList both {"run|INFO|first", "run|INFO|second"};
        QTest::newRow("initialize, as the file says") << QByteArray() << "initialize"
                                                      << QStringList {"run|INFO|second"}
                                                      << QStringList();
        QTest::newRow("initialize, the file appends")
            << QByteArray("log4cplus.appender.A.Append=true\n") << "initialize" << both
            << QStringList {"--> log4cplus.appender.A.Append = true"};
        QTest::newRow("reload") << QByteArray() << "reload" << both << QStringList();
        QTest::newRow("reload, the file says not to append")
            << QByteArray("log4cplus.appender.A.Append=false\n") << "reload" << both
            << QStringList {"--> log4cplus.appender.A.Append = false"};
    }
    void repeatedRuns()
    {
        QFETCH(QByteArray, more);
        QFETCH(QString, second);
        QFETCH(QStringList, lines);
        QFETCH(QStringList, logged);
        writeFile(folder() + "tst_LoggingManager.properties",
                  fileAppender("A", "logs/runs.log") + more + "log4cplus.rootLogger=INFO, A\n");
        qInstallMessageHandler(
            [](QtMsgType, const QMessageLogContext&, const QString& text) { messages << text; });
        manager->initialize();
        manager->logInfo("run", "first");
        messages.clear();
        if (second == "reload")
            manager->reload();
        else
            manager->initialize();
        manager->logInfo("run", "second");
        QCOMPARE(readLines("logs/runs.log"), lines);
        QCOMPARE(messages.filter(".Append = "), logged);
    }

    void concurrentWritersLoseNothing()
    {
        writeFile(folder() + "tst_LoggingManager.properties",
                  fileAppender("A", "logs/threads.log")
                      + "log4cplus.rootLogger=INFO, "
                        "A\nlog4cplus.appender.A.ImmediateFlush=false\nlog4cplus.appender.A.layout."
                        "ConversionPattern=%m%n\n");
        qInstallMessageHandler(log4cxxMessageHandler);
        manager->initialize();
        QList<QThread*> threads;
        for (int t = 0; t < 8; ++t) {
            threads << QThread::create([this, t] {
                for (int i = 0; i < 20000; ++i) {
                    const QString message
                        = QStringLiteral("T%1-%2-%3").arg(t).arg(i).arg(QString(40, 'x'));
                    if (i % 2 == 0)
                        manager->logInfo("threads", message);
                    else
                        qInfo().noquote() << message;
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
        for (const QString& line : readLines("logs/threads.log").filter("-xxxx")) {
            const QRegularExpressionMatch match = whole.match(line);
            QVERIFY2(match.hasMatch() && !seen.contains(match.captured(1)), qPrintable(line));
            seen.insert(match.captured(1));
        }
        QCOMPARE(seen.size(), 8 * 20000);
    }

    // A written fatal message ends the process, whatever the appender holds back; a message as
    // the process ends, after the manager's own state may be gone, is safe.
    void helpers_data()
    {
        QTest::addColumn<QString>("arguments");
        QTest::addColumn<QByteArray>("appender"); // A
        const QByteArray file = fileAppender("A", "logs/late.log");
        const QByteArray buffered = "ImmediateFlush=false\nlog4cplus.appender.A.BufferSize=65536\n";
        QTest::newRow("fatal, file appender") << "fatal" << file;
        QTest::newRow("fatal, buffered") << "fatal" << file + "log4cplus.appender.A." + buffered;
        const QByteArray queued = "log4cplus.appender.A=log4cplus::AsyncAppender\nlog4cplus."
                                  "appender.A.QueueLimit=1000\n";
        QTest::newRow("fatal, asynchronous") << "fatal"
                                             << queued
                + QByteArray(file + "log4cplus.appender.A." + buffered)
                      .replace(".A", ".A.Appender");
        QTest::newRow("Qt message from a static destructor") << "static qt" << file;
        QTest::newRow("logInfo from a static destructor") << "static direct" << file;
    }

    void helpers()
    {
        QFETCH(QString, arguments);
        QFETCH(QByteArray, appender);
        writeFile(folder() + "LateLogger.properties", "log4cplus.rootLogger=TRACE, A\n" + appender);
        const HelperRun run = runHelper(folder() + "LateLogger", arguments.split(' '));
        if (arguments != "fatal") {
            QVERIFY2(run.exitedCleanly(), qPrintable(run.report()));
            QCOMPARE(run.out, QByteArray("late message written\n"));
            return;
        }
        QVERIFY2(run.finished && run.gone && run.status == QProcess::CrashExit,
                 qPrintable(run.report()));
        QCOMPARE(run.out, QByteArray());
        QCOMPARE(readLines("logs/late.log").filter("Fatal.Writer|"),
                 QStringList({"Fatal.Writer|INFO|first", "Fatal.Writer|WARN|stop(7): second",
                              "Fatal.Writer|FATAL|stop(7): the end"}));
    }
};

QTEST_MAIN(tst_LoggingManager)
#include "tst_LoggingManager.moc"
