#include "FakeManagers.h"

#include "Exceptions/Exceptions.h"
#include "StartUp/ApplicationQuitHandler.h"
#include "StartUp/ManagerRegistry.h"
#include "StartUp/StartUpManager.h"

#include <QtTest>

using corvane::base::business::ApplicationQuitHandler;
using corvane::base::business::ManagerRegistry;
using corvane::base::business::StartUpManager;
using corvane::base::exceptions::ManagerRegistryException;

namespace {
void silence(QtMsgType, const QMessageLogContext&, const QString&) { }
} // namespace

class tst_StartUpManager : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { qInstallMessageHandler(silence); }
    void needsTheLoggingManager();
    void startsAndStopsThePluginAndServiceManagers();
    void quitHandlerTakesTheManagersDownOnce();

private:
    ManagerRegistry* registry = ManagerRegistry::instance();
    fakes::RecordingLoggingManager logging;
    fakes::ConfigurationManager configuration;
};

void tst_StartUpManager::needsTheLoggingManager()
{
    QVERIFY_EXCEPTION_THROWN(StartUpManager::instance(), ManagerRegistryException);
    registry->registerManager(logging);
    registry->registerManager(configuration);
    QVERIFY(StartUpManager::instance() != nullptr);
}

void tst_StartUpManager::startsAndStopsThePluginAndServiceManagers()
{
    QDir::setCurrent(QDir::rootPath());
    StartUpManager::instance()->initialize();
    QCOMPARE(QDir::currentPath(), QCoreApplication::applicationDirPath());
    QVERIFY(registry->hasPluginManager());
    QVERIFY(registry->hasServiceManager());

    StartUpManager::instance()->deinitialize();
    QVERIFY(!registry->hasPluginManager());
    QVERIFY(!registry->hasServiceManager());
    QVERIFY(registry->hasLoggingManager());
    QVERIFY(registry->hasConfigurationManager());
    try {
        StartUpManager::instance()->deinitialize();
        QFAIL("no exception");
    } catch (const ManagerRegistryException& e) {
        QCOMPARE(e.getReason(), QStringLiteral("PluginManager not registered!"));
    }
}

void tst_StartUpManager::quitHandlerTakesTheManagersDownOnce()
{
    registry->registerManager(*StartUpManager::instance());
    StartUpManager::instance()->initialize();
    ApplicationQuitHandler handler;
    QObject watched;
    QEvent quit(QEvent::Quit);
    QEvent other(QEvent::User);

    QVERIFY(!handler.eventFilter(&watched, &other));
    QVERIFY(registry->hasStartUpManager());
    QVERIFY(!handler.eventFilter(&watched, &quit));
    QVERIFY(!registry->hasStartUpManager());
    QVERIFY(!registry->hasPluginManager());
    QVERIFY(!handler.eventFilter(&watched, &quit)); // a second quit only quits
    QCOMPARE(logging.errors(), QStringList());

    // A start-up manager whose managers are already gone cannot be taken down: reported.
    registry->registerManager(*StartUpManager::instance());
    QVERIFY(!handler.eventFilter(&watched, &quit));
    QCOMPARE(logging.errors(), QStringList {"ERROR deinitialize of startUpManager failed."});
}

QTEST_MAIN(tst_StartUpManager)
#include "tst_StartUpManager.moc"
