#include "FakeManagers.h"

#include "Plugins/ServiceManager.h"
#include "StartUp/ApplicationQuitHandler.h"
#include "StartUp/ManagerRegistry.h"
#include "StartUp/StartUpManager.h"

#include <QtTest>

using namespace corvane::base::business;

class tst_ManagerRegistry : public QObject
{
    Q_OBJECT

    ManagerRegistry* registry = ManagerRegistry::instance();
    fakes::ConfigurationManager configuration;
    fakes::PluginManager plugin;
    fakes::RecordingLoggingManager logging;
    // In the registry's order: configuration, start-up, service, plug-in, logging.
    fakes::IManager* managers[5] = {&configuration, nullptr, nullptr, &plugin, &logging};

    QObject* get(int kind)
    {
        return kind == 0 ? static_cast<QObject*>(registry->getConfigurationManager())
            : kind == 1  ? static_cast<QObject*>(registry->getStartUpManager())
            : kind == 2  ? static_cast<QObject*>(registry->getServiceManager())
            : kind == 3  ? static_cast<QObject*>(registry->getPluginManager())
                         : static_cast<QObject*>(registry->getLoggingManager());
    }

    QString filled() const // "1" for a filled slot, "0" for an empty one
    {
        QString marks;
        for (bool filled : {registry->hasConfigurationManager(), registry->hasStartUpManager(),
                            registry->hasServiceManager(), registry->hasPluginManager(),
                            registry->hasLoggingManager()})
            marks += filled ? '1' : '0';
        return marks;
    }

private slots:
    void initTestCase()
    {
        QCOMPARE(failureOf([] { StartUpManager::instance(); }),
                 "ManagerRegistry::getLoggingManager loggingManager not registered!");
        registry->registerManager(logging); // which the singletons ask for when made
        managers[1] = StartUpManager::instance();
        managers[2] = ServiceManager::instance();
        registry->unregisterManager(logging);
    }

    void cleanup()
    {
        for (int kind = 0; kind < 5; ++kind)
            if (filled().at(kind) == '1')
                registry->unregisterManager(*managers[kind]);
    }

    void oneSlotPerKind_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<QString>("name"); // as the messages spell it
        QTest::newRow("configuration") << 0 << "ConfigurationManager";
        QTest::newRow("start-up") << 1 << "StartUpManager";
        QTest::newRow("service") << 2 << "ServiceManager";
        QTest::newRow("plug-in") << 3 << "PluginManager";
        QTest::newRow("logging") << 4 << "loggingManager";
    }

    void oneSlotPerKind()
    {
        QFETCH(int, kind);
        QFETCH(QString, name);
        const QString getter = QStringLiteral("get") + name.at(0).toUpper() + name.mid(1);
        QCOMPARE(failureOf([&] { get(kind); }),
                 "ManagerRegistry::" + getter + " " + name + " not registered!");
        for (int other = 0; other < 5; ++other) {
            if (other != kind)
                registry->registerManager(*managers[other]);
        }
        // Every other slot is filled: only the slot of the manager's own kind counts.
        QCOMPARE(failureOf([&] { registry->unregisterManager(*managers[kind]); }),
                 "ManagerRegistry::unregisterManager " + name + " already unregistered!");
        registry->registerManager(*managers[kind]);
        QCOMPARE(failureOf([&] { registry->registerManager(*managers[kind]); }),
                 "ManagerRegistry::registerManager " + name + " already registered!");
        QCOMPARE(get(kind), dynamic_cast<QObject*>(managers[kind]));
        registry->unregisterManager(*managers[kind]);
        QCOMPARE(filled(), QString("11111").replace(kind, 1, '0'));
    }

    void managerOfTwoKinds()
    {
        fakes::ConfigurationAndPluginManager both;
        registry->registerManager(both.asManager());
        QCOMPARE(filled(), QStringLiteral("10010"));
        configuration.nameRequests = 0;
        registry->unregisterManager(configuration); // clears the slot whichever object it holds
        QVERIFY(filled() == "00010" && configuration.nameRequests == 1); // asked, though not used
        registry->unregisterManager(plugin);
        // No roll-back: the configuration slot, tested first, keeps what it got before.
        registry->registerManager(plugin);
        QCOMPARE(failureOf([&] { registry->registerManager(both.asManager()); }),
                 "ManagerRegistry::registerManager PluginManager already registered!");
        QVERIFY(filled() == "10010" && get(3) == &plugin);
        registry->unregisterManager(plugin);
        QCOMPARE(failureOf([&] { registry->unregisterManager(both.asManager()); }),
                 "ManagerRegistry::unregisterManager PluginManager already unregistered!");
        QCOMPARE(filled(), QStringLiteral("00000"));
    }

    // The quit handler takes down, once, what the start-up manager brought up, or says it cannot.
    void startUpManagerAndQuitHandler()
    {
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
        registry->registerManager(logging);
        registry->registerManager(configuration);
        registry->registerManager(*StartUpManager::instance());
        QDir::setCurrent(QDir::rootPath());
        StartUpManager::instance()->initialize();
        QVERIFY(QDir::currentPath() == QCoreApplication::applicationDirPath()
                && filled() == "11111");
        ApplicationQuitHandler handler;
        QEvent quit(QEvent::Quit), other(QEvent::User);
        QVERIFY(!handler.eventFilter(nullptr, &other) && filled() == "11111");
        QVERIFY(!handler.eventFilter(nullptr, &quit) && filled() == "10001");
        QVERIFY(!handler.eventFilter(nullptr, &quit) && logging.errors().isEmpty()); // only quits
        registry->registerManager(*StartUpManager::instance());
        QVERIFY(!handler.eventFilter(nullptr, &quit));
        QCOMPARE(logging.errors(), QStringList {"ERROR deinitialize of startUpManager failed."});
    }
};

QTEST_MAIN(tst_ManagerRegistry)
#include "tst_ManagerRegistry.moc"
