#include "FakeManagers.h"
#include "TestServices.h"

#include "Exceptions/Exceptions.h"
#include "Plugins/ServiceManager.h"
#include "StartUp/ManagerRegistry.h"

#include <QtTest>

using corvane::base::business::ManagerRegistry;
using corvane::base::business::ServiceManager;
using namespace corvane::base::exceptions;
using namespace corvane::test;

namespace {
void silence(QtMsgType, const QMessageLogContext&, const QString&) { }

class NullBinder : public Calculator
{
public:
    void bindNothing() { assignMemberToServiceName(nullptr, QStringLiteral("x")); }
};
} // namespace

class tst_AbstractService : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void registersUnderItsQualifiedName();
    void bindingResolvesToTheOneImplementation();
    void bindingNeedsExactlyOneImplementation_data();
    void bindingNeedsExactlyOneImplementation();
    void bindingToItsOwnInterfaceFails();
    void twoInstancesOfOneClassCollide();
    void wrongInitializationStatesThrow();
    void nullMemberIsRejectedAsAddService();

private:
    fakes::RecordingLoggingManager logging;
    ServiceManager* manager = nullptr;
};

void tst_AbstractService::initTestCase()
{
    qInstallMessageHandler(silence);
    ManagerRegistry::instance()->registerManager(logging);
    manager = ServiceManager::instance();
    ManagerRegistry::instance()->registerManager(*manager);
}

void tst_AbstractService::init()
{
    logging.entries.clear();
}

void tst_AbstractService::cleanup()
{
    manager->deinitialize();
}

void tst_AbstractService::registersUnderItsQualifiedName()
{
    Calculator calculator;
    QSignalSpy available(manager, &ServiceManager::signalServiceAvailable);
    QString text;
    calculator.getName(text);
    QCOMPARE(text, QStringLiteral("corvane::test::Calculator"));
    calculator.getVersion(text);
    QCOMPARE(text, QStringLiteral("0.12.0"));

    calculator.initialize();
    QVERIFY(calculator.isInitialized());
    QCOMPARE(available.count(), 1);
    QCOMPARE(available.at(0).at(0).toString(), QStringLiteral("corvane::test::Calculator"));

    QSignalSpy unavailable(manager, &ServiceManager::signalServiceUnavailable);
    calculator.deinitialize();
    QVERIFY(!calculator.isInitialized());
    QCOMPARE(unavailable.count(), 1);
    QVERIFY(!manager->isServiceAvailable(QStringLiteral("corvane::test::Calculator")));
}

void tst_AbstractService::bindingResolvesToTheOneImplementation()
{
    FastCalculator calculator;
    calculator.initialize();
    Printer printer;
    printer.initialize();
    QCOMPARE(printer.calculator, QStringLiteral("corvane::test::FastCalculator"));
    QVERIFY(printer.getServiceForConcreteName(printer.calculator) == &calculator);
    QVERIFY(printer.getServiceForInterfaceName("de.corvane.test.ICalculator/1.0") == &calculator);
    QVERIFY(logging.entries.contains(
        "DEBUG resolveServiceName: Service resolved: de.corvane.test.ICalculator/1.0"));
    printer.deinitialize();
    calculator.deinitialize();
}

void tst_AbstractService::bindingNeedsExactlyOneImplementation_data()
{
    QTest::addColumn<int>("calculators");
    QTest::newRow("none") << 0;
    QTest::newRow("two") << 2;
}

void tst_AbstractService::bindingNeedsExactlyOneImplementation()
{
    QFETCH(int, calculators);
    Calculator calculator;
    FastCalculator fast;
    if (calculators == 2) {
        calculator.initialize();
        fast.initialize();
    }
    Printer printer;
    QSignalSpy available(manager, &ServiceManager::signalServiceAvailable);
    try {
        printer.initialize();
        QFAIL("no exception");
    } catch (const ServiceUnavailableException& e) {
        QCOMPARE(QByteArray(e.what()),
                 QByteArray("corvane::test::Printer::resolveServiceName "
                            "de.corvane.test.ICalculator/1.0 not available."));
    }
    QVERIFY(!printer.isInitialized());
    QCOMPARE(available.count(), 0);
    QVERIFY_EXCEPTION_THROWN(printer.getServiceForInterfaceName("de.corvane.test.ICalculator/1.0"),
                             ServiceUnavailableException);
    if (calculators == 2) {
        calculator.deinitialize();
        fast.deinitialize();
    }
}

void tst_AbstractService::bindingToItsOwnInterfaceFails()
{
    SelfPrinter printer;
    QVERIFY_EXCEPTION_THROWN(printer.initialize(), ServiceUnavailableException);
    QVERIFY(!manager->isServiceAvailable(QStringLiteral("corvane::test::SelfPrinter")));
}

void tst_AbstractService::twoInstancesOfOneClassCollide()
{
    Calculator first;
    Calculator second;
    first.initialize();
    try {
        second.initialize();
        QFAIL("no exception");
    } catch (const ServiceManagerException& e) {
        QCOMPARE(e.getReason(),
                 QStringLiteral("Service already registered:corvane::test::Calculator"));
    }
    QVERIFY(!second.isInitialized());
    QVERIFY(manager->getService(QStringLiteral("corvane::test::Calculator")) == &first);
    first.deinitialize();
}

void tst_AbstractService::wrongInitializationStatesThrow()
{
    Calculator calculator;
    QSignalSpy unavailable(manager, &ServiceManager::signalServiceUnavailable);
    try {
        calculator.deinitialize();
        QFAIL("no exception");
    } catch (const PluginException& e) {
        QCOMPARE(QByteArray(e.what()),
                 QByteArray("corvane::test::Calculator::deinitialize() Service not initialized."));
    }
    QCOMPARE(unavailable.count(), 0);
    calculator.initialize();
    try {
        calculator.initialize();
        QFAIL("no exception");
    } catch (const PluginException& e) {
        QCOMPARE(e.getReason(), QStringLiteral("Service already initialized."));
        QCOMPARE(e.getMethod(), QStringLiteral("initialize()"));
    }
    calculator.deinitialize();
}

void tst_AbstractService::nullMemberIsRejectedAsAddService()
{
    NullBinder binder;
    try {
        binder.bindNothing();
        QFAIL("no exception");
    } catch (const NullPointerException& e) {
        QCOMPARE(QByteArray(e.what()),
                 QByteArray("corvane::test::Calculator::addService Member is NULL."));
    }
    QCOMPARE(logging.errors(),
             QStringList {"ERROR corvane::test::Calculator::addService Member is NULL."});
}

QTEST_MAIN(tst_AbstractService)
#include "tst_AbstractService.moc"
