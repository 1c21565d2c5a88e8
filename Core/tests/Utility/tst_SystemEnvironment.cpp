#include "Utility/SystemEnvironment.h"

#include "Exceptions/InvalidArgumentException.h"

#include <QtTest>

using corvane::base::core::utility::SystemEnvironment;
using corvane::base::exceptions::InvalidArgumentException;

namespace {

// Sets the NAME=value pairs of a ';'-separated list.
void setEnvironment(const QString& pairs)
{
    for (const QString& pair : pairs.split(';', Qt::SkipEmptyParts)) {
        const int equals = pair.indexOf('=');
        qputenv(pair.left(equals).toUtf8().constData(), pair.mid(equals + 1).toUtf8());
    }
}

} // namespace

class tst_SystemEnvironment : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void expands_data();
    void expands();
    void rejects_data();
    void rejects();
};

// Every variable the tests use starts unset.
void tst_SystemEnvironment::init()
{
    for (const char* name :
         {"CT_HOME", "CT_USER", "CT_NESTED", "CT_EMPTY", "CT_SELF", "CT_PING", "CT_PONG"}) {
        qunsetenv(name);
    }
}

void tst_SystemEnvironment::expands_data()
{
    QTest::addColumn<QString>("environment"); // NAME=value pairs separated by ';'
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expanded");

    QTest::newRow("two references") << "CT_HOME=/home/ada;CT_USER=ada"
                                    << "${CT_HOME}/logs/${CT_USER}.log"
                                    << "/home/ada/logs/ada.log";
    QTest::newRow("reference inside a value") << "CT_NESTED=${CT_HOME}/sub;CT_HOME=/h"
                                              << "${CT_NESTED}/x"
                                              << "/h/sub/x";
    QTest::newRow("UTF-8 value") << "CT_USER=Jürgen ✓"
                                 << "~${CT_USER}~"
                                 << "~Jürgen ✓~";
    QTest::newRow("no braces") << ""
                               << "$CT_HOME/x"
                               << "$CT_HOME/x";
    QTest::newRow("empty name") << ""
                                << "${}"
                                << "${}";
    QTest::newRow("name with a dash") << ""
                                      << "${CT-HOME}"
                                      << "${CT-HOME}";
    QTest::newRow("unclosed") << ""
                              << "${CT_HOME"
                              << "${CT_HOME";
    QTest::newRow("line break hides references") << ""
                                                 << "first\n${CT_HOME}"
                                                 << "first\n${CT_HOME}";
    QTest::newRow("plain text") << ""
                                << "logs/app.log"
                                << "logs/app.log";
    // Many references are no cycle, also when a name comes back after its expansion closed.
    QTest::newRow("5000 references")
        << "CT_HOME=/h" << QString("${CT_HOME},").repeated(5000) << QString("/h,").repeated(5000);
    QTest::newRow("5000 references through values")
        << "CT_NESTED=${CT_USER}${CT_HOME};CT_USER=u;CT_HOME=${CT_USER}"
        << QString("${CT_NESTED}.").repeated(2500) << QString("uu.").repeated(2500);
}

void tst_SystemEnvironment::expands()
{
    QFETCH(QString, environment);
    QFETCH(QString, text);
    QFETCH(QString, expanded);
    setEnvironment(environment);
    try {
        QCOMPARE(SystemEnvironment::expandEnvironmentVariables(text), expanded);
    } catch (const InvalidArgumentException& e) {
        QFAIL(e.what());
    }
}

void tst_SystemEnvironment::rejects_data()
{
    QTest::addColumn<QString>("environment");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("reason");

    QTest::newRow("last reference is tried first") << ""
                                                   << "${CT_HOME}/logs/${CT_USER}.log"
                                                   << "Environment variable 'CT_USER' is not set";
    QTest::newRow("earlier reference unset") << "CT_USER=ada"
                                             << "${CT_HOME}/logs/${CT_USER}.log"
                                             << "Environment variable 'CT_HOME' is not set";
    QTest::newRow("empty value counts as unset") << "CT_EMPTY="
                                                 << "${CT_EMPTY}"
                                                 << "Environment variable 'CT_EMPTY' is not set";
    QTest::newRow("value refers to itself") << "CT_SELF=x${CT_SELF}"
                                            << "${CT_SELF}"
                                            << "Environment variable 'CT_SELF' refers to itself";
    QTest::newRow("two values refer to each other")
        << "CT_PING=${CT_PONG};CT_PONG=${CT_PING}"
        << "${CT_PING}"
        << "Environment variable 'CT_PING' refers to itself";
    QTest::newRow("cycle through three values behind 3000 references")
        << "CT_HOME=/h;CT_PING=${CT_PONG};CT_PONG=${CT_NESTED};CT_NESTED=x${CT_PING}"
        << "${CT_PING}" + QString("${CT_HOME}").repeated(3000)
        << "Environment variable 'CT_PING' refers to itself";
    QTest::newRow("unset variable behind 3000 references")
        << "CT_HOME=/h"
        << "${CT_USER}" + QString("${CT_HOME}").repeated(3000)
        << "Environment variable 'CT_USER' is not set";
}

void tst_SystemEnvironment::rejects()
{
    QFETCH(QString, environment);
    QFETCH(QString, text);
    QFETCH(QString, reason);
    setEnvironment(environment);
    try {
        SystemEnvironment::expandEnvironmentVariables(text);
        QFAIL("no exception");
    } catch (const InvalidArgumentException& e) {
        QCOMPARE(QString::fromUtf8(e.what()),
                 "Core/src/Utility/SystemEnvironment.cpp::expandEnvironmentVariables " + reason);
    }
}

QTEST_MAIN(tst_SystemEnvironment)
#include "tst_SystemEnvironment.moc"
