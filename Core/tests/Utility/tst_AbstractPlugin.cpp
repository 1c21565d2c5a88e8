#include "FakeManagers.h"
#include "TestServices.h"

#include "Exceptions/Exceptions.h"
#include "Plugins/ServiceManager.h"
#include "StartUp/ManagerRegistry.h"
#include "Utility/AbstractPlugin.h"

#include <QtTest>

using corvane::base::business::ServiceManager;
using namespace corvane::base::exceptions;
using namespace corvane::test;

namespace corvane::test {
class NamespacedPlugin : public base::core::utility::AbstractPlugin
{
    Q_OBJECT
};
struct NullBinder : Calculator
{
    NullBinder() { assignMemberToServiceName(nullptr, QStringLiteral("x")); }
};
} // namespace corvane::test

class GlobalPlugin : public corvane::base::core::utility::AbstractPlugin
{
    Q_OBJECT
};

// "<exception class>: <what()>" of what a call throws.
QString thrown(const std::function<void()>& call)
{
    try {
        call();
    } catch (const BaseException& e) {
        return QString(typeid(e).name()).section(QRegularExpression("\\d+"), -1).chopped(1) + ": "
            + e.what();
    }
    return QString();
}

// The plug-in and the service base class, and the texts of the exceptions they throw.
class tst_AbstractPlugin : public QObject
{
    Q_OBJECT

    fakes::RecordingLoggingManager logging;
    ServiceManager* manager = nullptr;

private slots:
    void initTestCase()
    {
        corvane::base::business::ManagerRegistry::instance()->registerManager(logging);
        manager = ServiceManager::instance();
        corvane::base::business::ManagerRegistry::instance()->registerManager(*manager);
    }

    // what() is source::method reason; replacing the reason arguments leaves it be.
    void exceptionTexts()
    {
        InvalidArgumentException e(QString("S"), "m", "r", "C", "R %1", {42});
        e.setReasonArguments(e.getReasonArguments()); // the very list it holds
        QString texts = e.getReasonArguments().value(0).toString();
        e.setReasonArguments({1, 2});
        texts += e.getReasonArguments().value(1).toString() + e.what();
        QCOMPARE(texts + BaseException((QObject*)nullptr, "m", "r").what() + "|"
                     + SilentExitException(this, "notify").what(),
                 "422S::m runknown source::m r|tst_AbstractPlugin:: Silent Exit Request: notify");
    }

    // Services start first to last, stop and die last to first; the later of one name is found.
    void servicesFollowThePlugin()
    {
        events().clear();
        logging.entries.clear();
        QStringList texts {"stale"};
        {
            GlobalPlugin plugin;
            for (const char* name : {"first", "second", "third"}) {
                plugin.addProvidedService(new Recorder(name), name);
            }
            plugin.addProvidedService(nullptr, "none");
            plugin.addProvidedService(new Recorder("fourth"), "first");
            plugin.addRequiredService("A");
            plugin.addRequiredService("A");
            plugin.addOptionalRequiredService("B");
            QStringList lists[3] = {{"stale"}, {"stale"}, {"stale"}};
            plugin.getProvidedTasks(lists[0]);
            plugin.getRequiredServices(lists[1]);
            plugin.getOptionalRequiredServices(lists[2]);
            QString names[3];
            NamespacedPlugin().getName(names[0]);
            plugin.getName(names[1]);
            plugin.getVersion(names[2]);
            plugin.getProvidedServices(texts);
            texts << lists[0] + lists[1] + lists[2] + QStringList(names, names + 3);
            QVERIFY(plugin.checkCanClose());
            texts
                << static_cast<Recorder*>(plugin.getProvidedServiceForInterfaceName("first"))->name;
            texts << thrown([&] { plugin.deinitialize(); });
            plugin.initialize();
            plugin.deinitialize();
            plugin.initialize(); // destroyed while initialized: logged, services deleted anyway
            texts << thrown([&] { plugin.initialize(); });
        }
        QCOMPARE(texts.join('|'),
                 "first|second|third|none|first|Base|A|A|B|NamespacedPlugin|GlobalPlugin|0.12.0|"
                 "fourth|PluginException: "
                 "GlobalPlugin::deinitialize() Plugin not initialized.|"
                 "PluginException: GlobalPlugin::initialize() Plugin already "
                 "initialized.");
        QCOMPARE(events().join(", "),
                 "init first, init second, init third, init fourth, "
                 "deinit fourth, deinit third, deinit second, deinit first, "
                 "init first, init second, init third, init fourth, "
                 "delete fourth, delete third, delete second, delete first");
        const QString init = "DEBUG initialize: started.|DEBUG initialize: done.|";
        QCOMPARE(logging.entries.mid(0, 6).join('|') + '|',
                 init + "DEBUG deinitialize: started.|DEBUG deinitialize: done.|" + init);
        QVERIFY(logging.entries.last().contains(QRegularExpression(
            "^ERROR ASSERT: \"!m_initialized\" in file .*AbstractPlugin\\.cpp, line \\d+$")));
    }

    // The null checks run in different orders; "2" stands for a signal the sender lacks.
    void connectAndDisconnect_data()
    {
        QTest::addColumn<QStringList>("row"); // present: sender, signal, receiver, member
        QTest::newRow("no sender, receiver") << QStringList {"0101", "Sender", "Sender"};
        QTest::newRow("no signal, receiver") << QStringList {"1001", "SignalString", "Receiver"};
        QTest::newRow("no receiver, member") << QStringList {"1100", "Receiver", "Receiver"};
        QTest::newRow("no signal, member") << QStringList {"1010", "SignalString", "SignalString"};
        QTest::newRow("no member") << QStringList {"1110", "Membername", "Membername"};
        QTest::newRow("no such signal") << QStringList {"1211", "", ""};
        QTest::newRow("connected") << QStringList {"1111", "", ""};
    }
    void connectAndDisconnect()
    {
        QFETCH(QStringList, row);
        QObject source;
        QObject target;
        source.setObjectName("source");
        target.setObjectName("target");
        const char* signalTexts[] = {nullptr, SIGNAL(destroyed()), SIGNAL(noSuchSignal())};
        const QObject* sender = row[0][0] == '1' ? &source : nullptr;
        const char* signal = signalTexts[row[0][1].digitValue()];
        const QObject* receiver = row[0][2] == '1' ? &target : nullptr;
        const char* member = row[0][3] == '1' ? SLOT(deleteLater()) : nullptr;
        const bool fine = row[0] == "1111";
        const QString failed = "ould not %1nect source:2noSuchSignal() %2 target:1deleteLater()";
        const QString what = fine ? ""
            : row[1].isEmpty()
            ? "ConnectFailedException: %1::connectToMember C" + failed.arg("con", "to")
            : "NullPointerException: %1::connectToMember " + row[1] + " is NULL.";
        const QString unlinked
            = row[2].isEmpty() ? "C" + failed.arg("discon", "from") : row[2] + " is NULL.";
        const QString c = "DEBUG connectToMember: ";
        const QString d = "DEBUG disconnectFromMember: ";
        const QString expected = what + "|" + c + "started.|"
            + (fine ? c + "done.|" : "ERROR " + what.section(": ", 1) + "|") + d + "started.|"
            + (fine ? "" : "ERROR disconnectFromMember: " + unlinked + "|") + d + "done.";
        GlobalPlugin plugin;
        logging.entries.clear();
        const QString text = thrown(
            [&] { plugin.connectToMember(sender, signal, receiver, member, Qt::AutoConnection); });
        plugin.disconnectFromMember(sender, signal, receiver, member);
        QCOMPARE(text + "|" + logging.entries.join('|'), expected.arg("GlobalPlugin"));
    }

    // A binding resolves to exactly one other implementation before the service registers.
    void servicesResolveAndRegister()
    {
        Calculator calculator;
        FastCalculator fast;
        Printer printer;
        SelfPrinter self;
        QSignalSpy available(manager, &ServiceManager::signalServiceAvailable);
        QSignalSpy unavailable(manager, &ServiceManager::signalServiceUnavailable);
        const QString id = "de.corvane.test.ICalculator/1.0";
        const QString none = "ServiceUnavailableException: corvane::test::%1::resolveServiceName "
                             "de.corvane.test.%2/1.0 not available.";
        QStringList texts {thrown([&] { printer.initialize(); }),
                           thrown([&] { printer.deinitialize(); })};
        calculator.initialize();
        printer.initialize();
        texts << thrown([&] { printer.initialize(); }) << printer.calculator;
        QVERIFY(printer.getServiceForInterfaceName(id) == &calculator);
        QVERIFY(logging.entries.contains("DEBUG resolveServiceName: Service resolved: " + id));
        printer.deinitialize();
        fast.initialize();
        texts << thrown([&] { printer.initialize(); }) << thrown([&] { self.initialize(); });
        QCOMPARE(texts.join('\n'),
                 none.arg("Printer", "ICalculator")
                     + "\nPluginException: corvane::test::Printer::"
                       "deinitialize() Service not initialized.\nPluginException: corvane::test::"
                       "Printer::initialize() Service already initialized.\ncorvane::test::"
                       "Calculator\n"
                     + none.arg("Printer", "ICalculator") + "\n"
                     + none.arg("SelfPrinter", "IPrinter"));
        calculator.deinitialize();
        fast.deinitialize();
        QCOMPARE(available.count() + unavailable.count(), 6);
        QCOMPARE(thrown([] { NullBinder(); }),
                 "NullPointerException: corvane::test::Calculator::addService Member is NULL.");
        QCOMPARE(logging.errors().last(),
                 QStringLiteral("ERROR corvane::test::Calculator::addService Member is NULL."));
    }
};

QTEST_MAIN(tst_AbstractPlugin)
#include "tst_AbstractPlugin.moc"
