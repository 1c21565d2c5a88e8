#include "FakeManagers.h"
#include "TestServices.h"

#include "Plugins/ServiceCache.h"
#include "Plugins/ServiceManager.h"
#include "StartUp/ManagerRegistry.h"

#include <QtTest>

using corvane::base::business::ManagerRegistry;
using corvane::base::business::ServiceCache;
using corvane::base::business::ServiceManager;
using corvane::base::interfaces::IService;
using namespace corvane::test;

namespace {
void silence(QtMsgType, const QMessageLogContext&, const QString&) { }
// Empties the service table when it goes out of scope: declared after a test's services, it
// runs before they are destroyed, so the manager never holds a dangling service.
struct EmptyServiceTable
{
    ~EmptyServiceTable() { ServiceManager::instance()->deinitialize(); }
};

} // namespace

class tst_ServiceCache : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void cachedUnderEveryClassOfTheChain_data();
    void cachedUnderEveryClassOfTheChain();
    void relatedServiceTakesOverSharedKeys();
    void missIsNotCached();
    void missIsAnsweredThroughTheServiceManagerAndCached();
    void removeDropsEveryEntryOfTheService();
    void getLoggerFallsBackToTheLoggingManager();

private:
    fakes::LoggingManager logging;
    ServiceManager* manager = nullptr;
};

void tst_ServiceCache::initTestCase()
{
    qInstallMessageHandler(silence);
    ManagerRegistry::instance()->registerManager(logging);
    manager = ServiceManager::instance();
    ManagerRegistry::instance()->registerManager(*manager);
}

void tst_ServiceCache::cachedUnderEveryClassOfTheChain_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<bool>("cached");
    QTest::newRow("concrete class") << "corvane::test::FastCalculator" << true;
    QTest::newRow("base class") << "corvane::test::Calculator" << true;
    QTest::newRow("service base class") << "corvane::base::core::utility::AbstractService" << true;
    QTest::newRow("IService is no key") << "corvane::base::interfaces::IService" << false;
    QTest::newRow("QObject is no key") << "QObject" << false;
}

void tst_ServiceCache::cachedUnderEveryClassOfTheChain()
{
    QFETCH(QString, key);
    QFETCH(bool, cached);
    FastCalculator fast;
    ServiceCache::addServiceToCache(&fast);
    // Nothing is registered: an answer can only come from the cache.
    QCOMPARE(ServiceCache::getServiceByInterface(key) == &fast, cached);
    ServiceCache::removeServiceFromCache(&fast);
}

void tst_ServiceCache::relatedServiceTakesOverSharedKeys()
{
    FastCalculator fast;
    Calculator calculator;
    ServiceCache::addServiceToCache(&fast);
    ServiceCache::addServiceToCache(&calculator);
    QVERIFY(ServiceCache::getServiceByInterface("corvane::test::FastCalculator") == &fast);
    QVERIFY(ServiceCache::getServiceByInterface("corvane::test::Calculator") == &calculator);
    ServiceCache::removeServiceFromCache(&fast);
    ServiceCache::removeServiceFromCache(&calculator);
    QVERIFY(ServiceCache::getServiceByInterface("corvane::test::Calculator") == nullptr);
}

void tst_ServiceCache::missIsNotCached()
{
    QVERIFY(ServiceCache::getServiceByInterface("de.corvane.test.IPrinter/1.0") == nullptr);
    Recorder unrelated(QStringLiteral("unrelated"));
    manager->registerService(unrelated);
    Calculator calculator;
    const EmptyServiceTable emptyTable;
    manager->registerService(calculator);
    QVERIFY(ServiceCache::getServiceByInterface("de.corvane.test.ICalculator/1.0") == &calculator);
    ServiceCache::removeServiceFromCache(&calculator);
}

void tst_ServiceCache::missIsAnsweredThroughTheServiceManagerAndCached()
{
    Calculator calculator;
    const EmptyServiceTable emptyTable;
    manager->registerService(calculator);
    QVERIFY(ServiceCache::getServiceByInterface("de.corvane.test.ICalculator/1.0") == &calculator);

    // The entry outlives the registration until the service is removed from the cache.
    QString name = QStringLiteral("corvane::test::Calculator");
    manager->unregisterService(name);
    QVERIFY(ServiceCache::getServiceByInterface("de.corvane.test.ICalculator/1.0") == &calculator);
    ServiceCache::removeServiceFromCache(&calculator);
    QVERIFY(ServiceCache::getServiceByInterface("de.corvane.test.ICalculator/1.0") == nullptr);
}

void tst_ServiceCache::removeDropsEveryEntryOfTheService()
{
    Calculator calculator;
    Printer printer;
    const EmptyServiceTable emptyTable;
    manager->registerService(calculator);
    ServiceCache::addServiceToCache(&calculator);
    ServiceCache::addServiceToCache(&printer);
    QVERIFY(ServiceCache::getServiceByInterface("de.corvane.test.ICalculator/1.0") == &calculator);
    manager->deinitialize();

    ServiceCache::removeServiceFromCache(&calculator);
    for (const char* key : {"de.corvane.test.ICalculator/1.0", "corvane::test::Calculator"}) {
        QVERIFY2(ServiceCache::getServiceByInterface(key) == nullptr, key);
    }
    // The other service's entries stay, the shared base class key included.
    QVERIFY(ServiceCache::getServiceByInterface("corvane::test::Printer") == &printer);
    QVERIFY(ServiceCache::getServiceByInterface("corvane::base::core::utility::AbstractService")
            == &printer);
    ServiceCache::removeServiceFromCache(&printer);
}

void tst_ServiceCache::getLoggerFallsBackToTheLoggingManager()
{
    QVERIFY(ServiceCache::getLogger() == &logging);
    ManagerRegistry::instance()->unregisterManager(logging);
    QVERIFY(ServiceCache::getLogger() != nullptr);
    QVERIFY(ServiceCache::getLogger() != &logging);
    ManagerRegistry::instance()->registerManager(logging);
}

QTEST_MAIN(tst_ServiceCache)
#include "tst_ServiceCache.moc"
