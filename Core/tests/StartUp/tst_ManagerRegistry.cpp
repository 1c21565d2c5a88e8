#include "FakeManagers.h"

#include "Exceptions/Exceptions.h"
#include "StartUp/ManagerRegistry.h"

#include <QtTest>

using corvane::base::business::ManagerRegistry;
using corvane::base::exceptions::ManagerRegistryException;
using corvane::base::interfaces::IManager;

namespace {

enum Kind { Configuration, StartUp, Service, Plugin, Logging };

const QString registryPrefix = QStringLiteral("corvane::base::business::ManagerRegistry::");

} // namespace

Q_DECLARE_METATYPE(Kind)

class tst_ManagerRegistry : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void registersByKind_data();
    void registersByKind();
    void secondRegistrationThrowsAndKeepsFirst_data();
    void secondRegistrationThrowsAndKeepsFirst();
    void unregisterOfEmptySlotThrows_data();
    void unregisterOfEmptySlotThrows();
    void getterOfEmptySlotThrows_data();
    void getterOfEmptySlotThrows();

    void unregisterClearsSlotWhicheverObjectItHolds();
    void unregisterAsksForTheName();
    void managerOfNoKindIsAcceptedAndStoredNowhere();
    void twoInterfaceManagerFillsBothSlots();
    void twoInterfaceManagerFailureKeepsEarlierSlot();
    void twoInterfaceManagerUnregisterFailureKeepsEarlierClear();

private:
    IManager& fakeOf(Kind kind);
    bool has(Kind kind) const;
    QObject* get(Kind kind);
    QVector<bool> filledSlots() const;

    ManagerRegistry* registry = ManagerRegistry::instance();
    fakes::ConfigurationManager configuration;
    fakes::StartUpManager startUp;
    fakes::ServiceManager service;
    fakes::PluginManager plugin;
    fakes::LoggingManager logging;
};

IManager& tst_ManagerRegistry::fakeOf(Kind kind)
{
    IManager* managers[] = {&configuration, &startUp, &service, &plugin, &logging};
    return *managers[kind];
}

bool tst_ManagerRegistry::has(Kind kind) const
{
    return filledSlots().at(kind);
}

QObject* tst_ManagerRegistry::get(Kind kind)
{
    switch (kind) {
    case Configuration:
        return registry->getConfigurationManager();
    case StartUp:
        return registry->getStartUpManager();
    case Service:
        return registry->getServiceManager();
    case Plugin:
        return registry->getPluginManager();
    case Logging:
        return registry->getLoggingManager();
    }
    return nullptr;
}

QVector<bool> tst_ManagerRegistry::filledSlots() const
{
    return {registry->hasConfigurationManager(), registry->hasStartUpManager(),
            registry->hasServiceManager(), registry->hasPluginManager(),
            registry->hasLoggingManager()};
}

// The registry is a process-wide singleton: empty every slot between tests.
void tst_ManagerRegistry::cleanup()
{
    for (Kind kind : {Configuration, StartUp, Service, Plugin, Logging}) {
        if (has(kind)) {
            registry->unregisterManager(fakeOf(kind));
        }
    }
}

void tst_ManagerRegistry::registersByKind_data()
{
    QTest::addColumn<Kind>("kind");
    QTest::newRow("configuration") << Configuration;
    QTest::newRow("start-up") << StartUp;
    QTest::newRow("service") << Service;
    QTest::newRow("plug-in") << Plugin;
    QTest::newRow("logging") << Logging;
}

void tst_ManagerRegistry::registersByKind()
{
    QFETCH(Kind, kind);
    registry->registerManager(fakeOf(kind));

    QVector<bool> expected(5, false);
    expected[kind] = true;
    QCOMPARE(filledSlots(), expected);
    QCOMPARE(get(kind), static_cast<QObject*>(&fakeOf(kind)));
}

void tst_ManagerRegistry::secondRegistrationThrowsAndKeepsFirst_data()
{
    QTest::addColumn<Kind>("kind");
    QTest::addColumn<QString>("reason");
    QTest::newRow("configuration") << Configuration << "ConfigurationManager already registered!";
    QTest::newRow("start-up") << StartUp << "StartUpManager already registered!";
    QTest::newRow("service") << Service << "ServiceManager already registered!";
    QTest::newRow("plug-in") << Plugin << "PluginManager already registered!";
    QTest::newRow("logging") << Logging << "loggingManager already registered!";
}

void tst_ManagerRegistry::secondRegistrationThrowsAndKeepsFirst()
{
    QFETCH(Kind, kind);
    QFETCH(QString, reason);
    fakes::ConfigurationManager otherConfiguration;
    fakes::StartUpManager otherStartUp;
    fakes::ServiceManager otherService;
    fakes::PluginManager otherPlugin;
    fakes::LoggingManager otherLogging;
    IManager* others[]
        = {&otherConfiguration, &otherStartUp, &otherService, &otherPlugin, &otherLogging};

    registry->registerManager(fakeOf(kind));
    try {
        registry->registerManager(*others[kind]);
        QFAIL("no exception");
    } catch (const ManagerRegistryException& e) {
        QCOMPARE(QString::fromUtf8(e.what()), registryPrefix + "registerManager " + reason);
    }
    QCOMPARE(get(kind), static_cast<QObject*>(&fakeOf(kind)));
}

void tst_ManagerRegistry::unregisterOfEmptySlotThrows_data()
{
    QTest::addColumn<Kind>("kind");
    QTest::addColumn<QString>("reason");
    QTest::newRow("configuration") << Configuration << "ConfigurationManager already unregistered!";
    QTest::newRow("start-up") << StartUp << "StartUpManager already unregistered!";
    QTest::newRow("service") << Service << "ServiceManager already unregistered!";
    QTest::newRow("plug-in") << Plugin << "PluginManager already unregistered!";
    QTest::newRow("logging") << Logging << "loggingManager already unregistered!";
}

void tst_ManagerRegistry::unregisterOfEmptySlotThrows()
{
    QFETCH(Kind, kind);
    QFETCH(QString, reason);
    // Every other slot is filled: only the slot of the manager's own kind counts.
    for (Kind other : {Configuration, StartUp, Service, Plugin, Logging}) {
        if (other != kind) {
            registry->registerManager(fakeOf(other));
        }
    }
    try {
        registry->unregisterManager(fakeOf(kind));
        QFAIL("no exception");
    } catch (const ManagerRegistryException& e) {
        QCOMPARE(QString::fromUtf8(e.what()), registryPrefix + "unregisterManager " + reason);
    }
    QCOMPARE(filledSlots().count(true), 4);
}

void tst_ManagerRegistry::getterOfEmptySlotThrows_data()
{
    QTest::addColumn<Kind>("kind");
    QTest::addColumn<QString>("method");
    QTest::addColumn<QString>("reason");
    QTest::newRow("configuration") << Configuration << "getConfigurationManager"
                                   << "ConfigurationManager not registered!";
    QTest::newRow("start-up") << StartUp << "getStartUpManager"
                              << "StartUpManager not registered!";
    QTest::newRow("service") << Service << "getServiceManager"
                             << "ServiceManager not registered!";
    QTest::newRow("plug-in") << Plugin << "getPluginManager"
                             << "PluginManager not registered!";
    QTest::newRow("logging") << Logging << "getLoggingManager"
                             << "loggingManager not registered!";
}

void tst_ManagerRegistry::getterOfEmptySlotThrows()
{
    QFETCH(Kind, kind);
    QFETCH(QString, method);
    QFETCH(QString, reason);
    try {
        get(kind);
        QFAIL("no exception");
    } catch (const ManagerRegistryException& e) {
        QCOMPARE(e.getSource(), QStringLiteral("corvane::base::business::ManagerRegistry"));
        QCOMPARE(e.getMethod(), method);
        QCOMPARE(e.getReason(), reason);
        QCOMPARE(QString::fromUtf8(e.what()), registryPrefix + method + " " + reason);
    }
}

void tst_ManagerRegistry::unregisterClearsSlotWhicheverObjectItHolds()
{
    fakes::ServiceManager other;
    registry->registerManager(service);
    registry->unregisterManager(other);
    QVERIFY(!registry->hasServiceManager());
}

void tst_ManagerRegistry::unregisterAsksForTheName()
{
    registry->registerManager(plugin);
    plugin.nameRequests = 0;
    registry->unregisterManager(plugin);
    QCOMPARE(plugin.nameRequests, 1);
}

void tst_ManagerRegistry::managerOfNoKindIsAcceptedAndStoredNowhere()
{
    fakes::PlainManager plain;
    registry->registerManager(plain);
    registry->unregisterManager(plain);
    QCOMPARE(filledSlots(), QVector<bool>(5, false));
}

void tst_ManagerRegistry::twoInterfaceManagerFillsBothSlots()
{
    fakes::ConfigurationAndPluginManager both;
    registry->registerManager(both.asManager());
    QCOMPARE(filledSlots(), QVector<bool>({true, false, false, true, false}));
    QVERIFY(registry->getConfigurationManager()
            == static_cast<fakes::ConfigurationManager*>(&both));
    QVERIFY(registry->getPluginManager() == static_cast<fakes::PluginManager*>(&both));

    registry->unregisterManager(both.asManager());
    QCOMPARE(filledSlots(), QVector<bool>(5, false));
}

void tst_ManagerRegistry::twoInterfaceManagerFailureKeepsEarlierSlot()
{
    fakes::ConfigurationAndPluginManager both;
    registry->registerManager(plugin);
    try {
        registry->registerManager(both.asManager());
        QFAIL("no exception");
    } catch (const ManagerRegistryException& e) {
        QCOMPARE(e.getReason(), QStringLiteral("PluginManager already registered!"));
    }
    QVERIFY(registry->getConfigurationManager()
            == static_cast<fakes::ConfigurationManager*>(&both));
    QVERIFY(registry->getPluginManager() == &plugin);
}

void tst_ManagerRegistry::twoInterfaceManagerUnregisterFailureKeepsEarlierClear()
{
    fakes::ConfigurationAndPluginManager both;
    registry->registerManager(configuration);
    try {
        registry->unregisterManager(both.asManager());
        QFAIL("no exception");
    } catch (const ManagerRegistryException& e) {
        QCOMPARE(e.getReason(), QStringLiteral("PluginManager already unregistered!"));
    }
    QVERIFY(!registry->hasConfigurationManager());
}

QTEST_MAIN(tst_ManagerRegistry)
#include "tst_ManagerRegistry.moc"
