#include "FakeManagers.h"
#include "TestServices.h"

#include "Exceptions/Exceptions.h"
#include "Plugins/ServiceManager.h"
#include "StartUp/ManagerRegistry.h"

#include <QtTest>

using corvane::base::business::ManagerRegistry;
using corvane::base::business::ServiceManager;
using corvane::base::exceptions::ServiceManagerException;
using namespace corvane::test;

namespace {

QStringList messages;

void captureMessage(QtMsgType type, const QMessageLogContext&, const QString& message)
{
    static const char* const names[] = {"debug", "warning", "critical", "fatal", "info"};
    messages << QStringLiteral("%1 %2").arg(names[type], message);
}

QStringList sorted(QStringList list)
{
    list.sort();
    return list;
}

// Empties the service table when it goes out of scope: declared after a test's services, it
// runs before they are destroyed, so the manager never holds a dangling service.
struct EmptyServiceTable
{
    ~EmptyServiceTable() { ServiceManager::instance()->deinitialize(); }
};

} // namespace

class tst_ServiceManager : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void registerAnnouncesTheService();
    void secondRegistrationOfANameThrowsAndKeepsTheFirst();
    void unknownNamesThrow_data();
    void unknownNamesThrow();
    void servicesByInterface_data();
    void servicesByInterface();
    void deinitializeUnregistersEveryService();

private:
    ServiceManager* manager = nullptr;
    fakes::LoggingManager logging;
};

void tst_ServiceManager::initTestCase()
{
    ManagerRegistry::instance()->registerManager(logging);
    manager = ServiceManager::instance();
}

void tst_ServiceManager::init()
{
    messages.clear();
    qInstallMessageHandler(captureMessage);
}

void tst_ServiceManager::registerAnnouncesTheService()
{
    QSignalSpy available(manager, &ServiceManager::signalServiceAvailable);
    QSignalSpy unavailable(manager, &ServiceManager::signalServiceUnavailable);
    Recorder first(QStringLiteral("first"));
    Recorder second(QStringLiteral("second"));
    const EmptyServiceTable emptyTable;

    manager->registerService(first);
    manager->registerService(second);
    QCOMPARE(available.count(), 2);
    QCOMPARE(available.at(0).at(0).toString(), QStringLiteral("first"));
    QCOMPARE(available.at(1).at(0).toString(), QStringLiteral("second"));
    QVERIFY(manager->getService(QStringLiteral("first")) == &first);
    QVERIFY(manager->isServiceAvailable(QStringLiteral("second")));

    QStringList names {QStringLiteral("stale")};
    manager->getAvailableServices(names);
    QCOMPARE(sorted(names), QStringList({"first", "second"}));

    QString name = QStringLiteral("first");
    manager->unregisterService(name);
    QCOMPARE(unavailable.count(), 1);
    QCOMPARE(unavailable.at(0).at(0).toString(), QStringLiteral("first"));
    QVERIFY(!manager->isServiceAvailable(QStringLiteral("first")));
    QVERIFY(messages.contains("info registerService Service registered: first"));
    QVERIFY(messages.contains("info unregisterService Service unregistered: first"));
}

void tst_ServiceManager::secondRegistrationOfANameThrowsAndKeepsTheFirst()
{
    Recorder first(QStringLiteral("same"));
    Recorder second(QStringLiteral("same"));
    const EmptyServiceTable emptyTable;
    manager->registerService(first);
    QSignalSpy available(manager, &ServiceManager::signalServiceAvailable);
    try {
        manager->registerService(second);
        QFAIL("no exception");
    } catch (const ServiceManagerException& e) {
        QCOMPARE(QByteArray(e.what()),
                 QByteArray("corvane::base::business::ServiceManager::"
                            "registerService Service already registered:same"));
    }
    QCOMPARE(available.count(), 0);
    QVERIFY(manager->getService(QStringLiteral("same")) == &first);
    QCOMPARE(messages.last(),
             QStringLiteral("critical registerService Service already registered: same"));
}

void tst_ServiceManager::unknownNamesThrow_data()
{
    QTest::addColumn<QString>("method");
    QTest::newRow("getService") << "getService";
    QTest::newRow("unregisterService") << "unregisterService";
}

void tst_ServiceManager::unknownNamesThrow()
{
    QFETCH(QString, method);
    QString name = QStringLiteral("nobody");
    try {
        if (method == QLatin1String("getService")) {
            manager->getService(name);
        } else {
            manager->unregisterService(name);
        }
        QFAIL("no exception");
    } catch (const ServiceManagerException& e) {
        QCOMPARE(e.getMethod(), method);
        QCOMPARE(e.getReason(), QStringLiteral("Service not available: nobody"));
    }
    QCOMPARE(messages.last(), "critical " + method + " Service not available: nobody");
}

void tst_ServiceManager::servicesByInterface_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("found");

    const QString calculator = QStringLiteral("corvane::test::Calculator");
    const QString fast = QStringLiteral("corvane::test::FastCalculator");
    const QString printer = QStringLiteral("corvane::test::Printer");
    QTest::newRow("interface of two services")
        << "de.corvane.test.ICalculator/1.0" << QStringList {calculator, fast};
    QTest::newRow("interface of one service")
        << "de.corvane.test.IPrinter/1.0" << QStringList {printer};
    QTest::newRow("concrete class") << fast << QStringList {fast};
    QTest::newRow("base class in the chain") << calculator << QStringList {calculator, fast};
    QTest::newRow("service base class") << "corvane::base::core::utility::AbstractService"
                                        << QStringList {calculator, fast, printer};
    QTest::newRow("unknown") << "de.corvane.test.INothing/1.0" << QStringList();
    QTest::newRow("interface id is case-sensitive")
        << "de.corvane.test.iprinter/1.0" << QStringList();
}

void tst_ServiceManager::servicesByInterface()
{
    QFETCH(QString, name);
    QFETCH(QStringList, found);
    Calculator calculator;
    FastCalculator fast;
    Printer printer;
    const EmptyServiceTable emptyTable;
    manager->registerService(calculator);
    manager->registerService(fast);
    manager->registerService(printer);

    QStringList names {QStringLiteral("stale")};
    manager->getServicesByInterface(name, names);
    QCOMPARE(sorted(names), found);
}

void tst_ServiceManager::deinitializeUnregistersEveryService()
{
    Recorder a(QStringLiteral("a"));
    Recorder b(QStringLiteral("b"));
    Recorder c(QStringLiteral("c"));
    const EmptyServiceTable emptyTable;
    for (Recorder* service : {&a, &b, &c}) {
        manager->registerService(*service);
    }
    events().clear();
    messages.clear();
    QSignalSpy unavailable(manager, &ServiceManager::signalServiceUnavailable);

    manager->deinitialize();
    QCOMPARE(messages.first(), QStringLiteral("info deinit called"));
    QCOMPARE(messages.last(), QStringLiteral("info deinit done"));
    QCOMPARE(unavailable.count(), 3);
    QStringList names;
    for (const QList<QVariant>& arguments : unavailable) {
        names << arguments.at(0).toString();
    }
    QCOMPARE(sorted(names), QStringList({"a", "b", "c"}));
    manager->getAvailableServices(names);
    QVERIFY(names.isEmpty());
    QCOMPARE(events(), QStringList()); // services are not deinitialized by the manager
}

QTEST_MAIN(tst_ServiceManager)
#include "tst_ServiceManager.moc"
