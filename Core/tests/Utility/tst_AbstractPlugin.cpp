#include "FakeManagers.h"
#include "TestServices.h"

#include "Exceptions/Exceptions.h"
#include "StartUp/ManagerRegistry.h"
#include "Utility/AbstractPlugin.h"

#include <QtTest>

using corvane::base::business::ManagerRegistry;
using corvane::base::core::utility::AbstractPlugin;
using namespace corvane::base::exceptions;
using namespace corvane::test;

namespace corvane {
namespace test {
class NamespacedPlugin : public base::core::utility::AbstractPlugin
{
    Q_OBJECT
};
} // namespace test
} // namespace corvane

class GlobalPlugin : public AbstractPlugin
{
    Q_OBJECT
};

class tst_AbstractPlugin : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanupTestCase();

    void describesItself();
    void declaredServices();
    void servicesStartInOrderAndStopAndDieInReverse();
    void wrongInitializationStatesThrow();
    void failingServiceLeavesThePluginUninitialized();
    void destroyingAnInitializedPluginLogsAndStillDeletes();
    void connectToMemberChecksPointersInOrder_data();
    void connectToMemberChecksPointersInOrder();
    void connectAndDisconnect();
    void disconnectFromMemberOnlyLogs_data();
    void disconnectFromMemberOnlyLogs();

private:
    fakes::RecordingLoggingManager logging;
};

void tst_AbstractPlugin::initTestCase()
{
    ManagerRegistry::instance()->registerManager(logging);
}

void tst_AbstractPlugin::init()
{
    logging.entries.clear();
    events().clear();
}

void tst_AbstractPlugin::cleanupTestCase()
{
    ManagerRegistry::instance()->unregisterManager(logging);
}

void tst_AbstractPlugin::describesItself()
{
    NamespacedPlugin namespaced;
    GlobalPlugin global;
    QString text;
    namespaced.getName(text);
    QCOMPARE(text, QStringLiteral("NamespacedPlugin"));
    global.getName(text);
    QCOMPARE(text, QStringLiteral("GlobalPlugin"));
    global.getVersion(text);
    QCOMPARE(text, QStringLiteral("0.12.0"));
    global.setDescription(QStringLiteral("Says hello"));
    global.getDescription(text);
    QCOMPARE(text, QStringLiteral("Says hello"));

    QStringList tasks {QStringLiteral("stale")};
    global.getProvidedTasks(tasks);
    QCOMPARE(tasks, QStringList {"Base"});
    QVERIFY(global.checkCanClose());
    QVERIFY(global.getLogger() == &logging);

    // Found as a plug-in by the interface id the plug-in manager asks for.
    QObject* object = &global;
    QVERIFY(qobject_cast<corvane::base::interfaces::IPlugin*>(object) != nullptr);
}

void tst_AbstractPlugin::declaredServices()
{
    GlobalPlugin plugin;
    plugin.addRequiredService(QStringLiteral("A"));
    plugin.addRequiredService(QStringLiteral("A"));
    plugin.addOptionalRequiredService(QStringLiteral("B"));
    auto* early = new Recorder(QStringLiteral("early"));
    auto* late = new Recorder(QStringLiteral("late"));
    plugin.addProvidedService(early, QStringLiteral("Printer"));
    plugin.addProvidedService(late, QStringLiteral("Printer"));

    QStringList names {QStringLiteral("stale")};
    plugin.getRequiredServices(names);
    QCOMPARE(names, QStringList({"A", "A"}));
    plugin.getOptionalRequiredServices(names);
    QCOMPARE(names, QStringList {"B"});
    plugin.getProvidedServices(names);
    QCOMPARE(names, QStringList({"Printer", "Printer"}));
    QVERIFY(plugin.getProvidedServiceForInterfaceName(QStringLiteral("Printer")) == late);
    QVERIFY(plugin.getProvidedServiceForInterfaceName(QStringLiteral("printer")) == nullptr);
}

void tst_AbstractPlugin::servicesStartInOrderAndStopAndDieInReverse()
{
    {
        GlobalPlugin plugin;
        for (const char* name : {"first", "second", "third"}) {
            plugin.addProvidedService(new Recorder(QString::fromLatin1(name)), name);
        }
        plugin.addProvidedService(nullptr, QStringLiteral("none"));
        plugin.initialize();
        plugin.deinitialize();
    }
    QCOMPARE(
        events(),
        QStringList({"init first", "init second", "init third", "deinit third", "deinit second",
                     "deinit first", "delete third", "delete second", "delete first"}));
    QCOMPARE(logging.entries,
             QStringList({"DEBUG initialize: started.", "DEBUG initialize: done.",
                          "DEBUG deinitialize: started.", "DEBUG deinitialize: done."}));
}

void tst_AbstractPlugin::wrongInitializationStatesThrow()
{
    GlobalPlugin plugin;
    try {
        plugin.deinitialize();
        QFAIL("no exception");
    } catch (const PluginException& e) {
        QCOMPARE(QByteArray(e.what()),
                 QByteArray("GlobalPlugin::deinitialize() Plugin not initialized."));
    }
    plugin.initialize();
    try {
        plugin.initialize();
        QFAIL("no exception");
    } catch (const PluginException& e) {
        QCOMPARE(QByteArray(e.what()),
                 QByteArray("GlobalPlugin::initialize() Plugin already initialized."));
    }
    plugin.deinitialize();
}

namespace {
class FailingRecorder : public Recorder
{
public:
    FailingRecorder() : Recorder(QStringLiteral("failing")) { }
    void initialize() override
    {
        throw ServiceUnavailableException(QStringLiteral("Failing"), "initialize", "down");
    }
};
} // namespace

void tst_AbstractPlugin::failingServiceLeavesThePluginUninitialized()
{
    GlobalPlugin plugin;
    plugin.addProvidedService(new Recorder(QStringLiteral("first")), QStringLiteral("first"));
    plugin.addProvidedService(new FailingRecorder, QStringLiteral("failing"));
    QVERIFY_EXCEPTION_THROWN(plugin.initialize(), ServiceUnavailableException);
    QCOMPARE(events(), QStringList {"init first"});
    QVERIFY_EXCEPTION_THROWN(plugin.deinitialize(), PluginException);
}

void tst_AbstractPlugin::destroyingAnInitializedPluginLogsAndStillDeletes()
{
    {
        GlobalPlugin plugin;
        plugin.addProvidedService(new Recorder(QStringLiteral("only")), QStringLiteral("only"));
        plugin.initialize();
        logging.entries.clear();
    }
    QCOMPARE(events(), QStringList({"init only", "delete only"}));
    QCOMPARE(logging.errors().size(), 1);
    QVERIFY2(QRegularExpression("^ERROR ASSERT: \"!m_initialized\" in file .*AbstractPlugin\\.cpp, "
                                "line \\d+$")
                 .match(logging.errors().first())
                 .hasMatch(),
             qPrintable(logging.errors().first()));
}

void tst_AbstractPlugin::connectToMemberChecksPointersInOrder_data()
{
    QTest::addColumn<bool>("sender");
    QTest::addColumn<bool>("signal");
    QTest::addColumn<bool>("receiver");
    QTest::addColumn<bool>("member");
    QTest::addColumn<QString>("reason");

    QTest::newRow("sender and receiver null")
        << false << true << false << true << "Sender is NULL.";
    QTest::newRow("signal null") << true << false << false << false << "SignalString is NULL.";
    QTest::newRow("receiver and member null")
        << true << true << false << false << "Receiver is NULL.";
    QTest::newRow("member null") << true << true << true << false << "Membername is NULL.";
}

void tst_AbstractPlugin::connectToMemberChecksPointersInOrder()
{
    QFETCH(bool, sender);
    QFETCH(bool, signal);
    QFETCH(bool, receiver);
    QFETCH(bool, member);
    QFETCH(QString, reason);
    GlobalPlugin plugin;
    QObject object;
    try {
        plugin.connectToMember(sender ? &object : nullptr, signal ? SIGNAL(destroyed()) : nullptr,
                               receiver ? &object : nullptr,
                               member ? SLOT(deleteLater()) : nullptr);
        QFAIL("no exception");
    } catch (const NullPointerException& e) {
        const QString what = "GlobalPlugin::connectToMember " + reason;
        QCOMPARE(QString::fromUtf8(e.what()), what);
        QCOMPARE(logging.errors(), QStringList {"ERROR " + what});
    }
}

void tst_AbstractPlugin::connectAndDisconnect()
{
    GlobalPlugin plugin;
    QObject sender;
    sender.setObjectName(QStringLiteral("source"));
    QObject receiver;
    receiver.setObjectName(QStringLiteral("target"));

    plugin.connectToMember(&sender, SIGNAL(objectNameChanged(QString)), &receiver,
                           SLOT(deleteLater()));
    plugin.disconnectFromMember(&sender, SIGNAL(objectNameChanged(QString)), &receiver,
                                SLOT(deleteLater()));
    QCOMPARE(logging.errors(), QStringList());

    try {
        plugin.connectToMember(&sender, SIGNAL(noSuchSignal()), &receiver, SLOT(deleteLater()));
        QFAIL("no exception");
    } catch (const ConnectFailedException& e) {
        QCOMPARE(QString::fromUtf8(e.what()),
                 QStringLiteral("GlobalPlugin::connectToMember Could not connect source:%1 to "
                                "target:%2")
                     .arg(SIGNAL(noSuchSignal()), SLOT(deleteLater())));
    }
}

void tst_AbstractPlugin::disconnectFromMemberOnlyLogs_data()
{
    QTest::addColumn<bool>("sender");
    QTest::addColumn<bool>("signal");
    QTest::addColumn<bool>("receiver");
    QTest::addColumn<bool>("member");
    QTest::addColumn<QString>("error");

    QTest::newRow("sender null") << false << false << false << false
                                 << "disconnectFromMember: Sender is NULL.";
    QTest::newRow("receiver before signal")
        << true << false << false << true << "disconnectFromMember: Receiver is NULL.";
    QTest::newRow("signal null") << true << false << true << false
                                 << "disconnectFromMember: SignalString is NULL.";
    QTest::newRow("member null") << true << true << true << false
                                 << "disconnectFromMember: Membername is NULL.";
    QTest::newRow("not connected")
        << true << true << true << true
        << "disconnectFromMember: Could not disconnect source:2destroyed() "
           "from target:1deleteLater()";
}

void tst_AbstractPlugin::disconnectFromMemberOnlyLogs()
{
    QFETCH(bool, sender);
    QFETCH(bool, signal);
    QFETCH(bool, receiver);
    QFETCH(bool, member);
    QFETCH(QString, error);
    GlobalPlugin plugin;
    QObject source;
    source.setObjectName(QStringLiteral("source"));
    QObject target;
    target.setObjectName(QStringLiteral("target"));
    plugin.disconnectFromMember(sender ? &source : nullptr, signal ? SIGNAL(destroyed()) : nullptr,
                                receiver ? &target : nullptr,
                                member ? SLOT(deleteLater()) : nullptr);
    QCOMPARE(logging.entries,
             QStringList({"DEBUG disconnectFromMember: started.", "ERROR " + error,
                          "DEBUG disconnectFromMember: done."}));
}

QTEST_MAIN(tst_AbstractPlugin)
#include "tst_AbstractPlugin.moc"
