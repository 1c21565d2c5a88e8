#include "FakeManagers.h"

#include "Logging/FunctionLogger.h"

#include <QtTest>

using corvane::base::business::FunctionLogger;

namespace corvane {
namespace test {
class Owner : public QObject
{
    Q_OBJECT
};
} // namespace test
} // namespace corvane

namespace {

class RecordingLoggingManager : public fakes::LoggingManager
{
public:
    void logEntry(Loglevel level, const QString& source, const QString& message,
                  bool checkLevel) override
    {
        entries
            << QStringLiteral("%1 ~ %2 ~ %3 ~ %4").arg(level).arg(source, message).arg(checkLevel);
    }
    QStringList entries;
};

} // namespace

class tst_FunctionLogger : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { FunctionLogger::setLoggingManager(nullptr); }
    void nestedLoggersIndentTheLoggerName();
    void senderFormKeepsTheClassName();
    void withoutManagerNothingIsWritten();
};

void tst_FunctionLogger::nestedLoggersIndentTheLoggerName()
{
    RecordingLoggingManager manager;
    FunctionLogger::setLoggingManager(&manager);
    {
        FunctionLogger outer(QStringLiteral("Owner"), QStringLiteral("load"));
        {
            FunctionLogger inner(QStringLiteral("Owner"), QStringLiteral("parse"));
            FunctionLogger innermost(QStringLiteral("Other"), QStringLiteral("read"));
            innermost.log(QStringLiteral("step"));
        }
    }
    // Level 3 is INFO; the manager's own level check is skipped (false).
    QCOMPARE(manager.entries,
             QStringList({
                 "3 ~ || Owner ~ load() entered ~ 0",
                 "3 ~ ||=>| Owner ~ parse() entered ~ 0",
                 "3 ~ ||=>|=>| Other ~ read() entered ~ 0",
                 "3 ~ ||=>|=>| Other ~ read() step ~ 0",
                 "3 ~ ||=>|=>| Other ~ read() left ~ 0",
                 "3 ~ ||=>| Owner ~ parse() left ~ 0",
                 "3 ~ || Owner ~ load() left ~ 0",
             }));
}

void tst_FunctionLogger::senderFormKeepsTheClassName()
{
    RecordingLoggingManager manager;
    FunctionLogger::setLoggingManager(&manager);
    corvane::test::Owner owner;
    {
        FunctionLogger logger(&owner, QStringLiteral("run"));
    }
    QCOMPARE(manager.entries.first(),
             QStringLiteral("3 ~ || corvane::test::Owner ~ run() entered ~ 0"));
}

void tst_FunctionLogger::withoutManagerNothingIsWritten()
{
    RecordingLoggingManager manager;
    {
        FunctionLogger logger(QStringLiteral("Owner"), QStringLiteral("run"));
        FunctionLogger::setLoggingManager(&manager);
    }
    // Only "left" is written, at depth 1 again: the depth was counted all along.
    QCOMPARE(manager.entries, QStringList({"3 ~ || Owner ~ run() left ~ 0"}));
}

QTEST_MAIN(tst_FunctionLogger)
#include "tst_FunctionLogger.moc"
