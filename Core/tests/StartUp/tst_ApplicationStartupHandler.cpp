#include "StartUp/ApplicationStartupHandler.h"
#include "StartUp/LocalSocketStringMessageReceiver.h"
#include "Utility/PrivateFolder.h"

#include <QApplication>
#include <QLocalSocket>
#include <QMessageBox>
#include <QScopeGuard>
#include <QtTest>

#include <algorithm>
#include <fcntl.h>
#include <memory>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

using namespace corvane::base::business;
using namespace corvane::base::business::internal;

QByteArray frame(const QByteArray& payload, qint32 length = -1)
{
    QByteArray bytes;
    QDataStream(&bytes, QIODevice::WriteOnly) << (length < 0 ? qint32(payload.size()) : length);
    return bytes + payload;
}

// The warnings of the receiver, each with whether a descriptor could be opened at that moment,
// as a log that rolls over opens its next file.
QStringList warnings;
QtMessageHandler previousHandler = nullptr;

void recordWarning(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    if (type == QtWarningMsg) {
        const int descriptor = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
        warnings << text + (descriptor >= 0 ? " [descriptor free]" : " [no descriptor]");
        if (descriptor >= 0)
            ::close(descriptor);
    }
    previousHandler(type, context, text);
}

int highestOpenDescriptor()
{
    int highest = 2;
    for (const QString& entry : QDir("/proc/self/fd").entryList(QDir::Files | QDir::System))
        highest = qMax(highest, entry.toInt());
    return highest;
}

class tst_ApplicationStartupHandler : public QObject
{
    Q_OBJECT

    static QString guardId()
    {
        return "tst_ApplicationStartupHandler-"
            + QString::number(QCoreApplication::applicationPid());
    }

    // The first call of the process takes the guard's lock and listens for later instances.
    static bool becomeFirstInstance()
    {
        auto& application = *qobject_cast<QApplication*>(QCoreApplication::instance());
        static const int first
            = ApplicationStartupHandler::instance()->getSingleGuiApplicationGuardExitCode(
                application, guardId(), false);
        return first == 1;
    }

    // The socket the guard listens on, in the user's private folder: named after the id's
    // SHA-1 and the user.
    static QString guardSocket()
    {
        const QDir folder(corvane::base::core::utility::PrivateFolder::runtimeFolder());
        const QByteArray digest
            = QCryptographicHash::hash(guardId().toUtf8(), QCryptographicHash::Sha1).toHex();
        const QStringList sockets = folder.entryList(
            {QStringLiteral("*-%1-%2.socket").arg(QString(digest.left(16))).arg(::getuid())},
            QDir::System | QDir::Files);
        return sockets.size() == 1 ? folder.filePath(sockets.first()) : QString();
    }

private slots:
    // Each write on its own; each message answered with 1 (taken by the receiver) or 0.
    void frames_data()
    {
        QTest::addColumn<QList<QByteArray>>("writes");
        QTest::addColumn<QStringList>("messages");
        QTest::addColumn<bool>("dropped"); // the receiver ends the connection
        const QByteArray raise = frame("raise");
        const qint32 most = 16 * 1024 * 1024;
        QTest::newRow("16 MiB, the most a message may have")
            << QList<QByteArray> {raise, frame(QByteArray(most, 'x'))}
            << QStringList {"raise", QString(most, 'x')} << false;
        QTest::newRow("more announced: the connection is dropped")
            << QList<QByteArray> {raise, frame("", most + 1)} << QStringList {"raise"} << true;
        QTest::newRow("length and text in pieces")
            << QList<QByteArray> {raise.left(2), raise.mid(2, 4), raise.mid(6)}
            << QStringList {"raise"} << false;
        QTest::newRow("two frames in one write, one refused")
            << QList<QByteArray> {frame("refused") + frame("load:/a b/ü.csv")}
            << QStringList {"refused", "load:/a b/ü.csv"} << false;
        QTest::newRow("cut at a zero byte")
            << QList<QByteArray> {frame(QByteArray("ab\0cd", 5)), frame(QByteArray("\0ab", 3))}
            << QStringList {"ab", ""} << false;
        QTest::newRow("empty and negative lengths carry nothing")
            << QList<QByteArray> {frame(""), frame("", -7), raise} << QStringList {"raise"}
            << false;
    }

    void frames()
    {
        QFETCH(QList<QByteArray>, writes);
        QFETCH(QStringList, messages);
        QFETCH(bool, dropped);
        static int runs = 0;
        const QString name = QStringLiteral("tst_ApplicationStartupHandler-%1-%2")
                                 .arg(QCoreApplication::applicationPid())
                                 .arg(++runs);
        QStringList received;
        LocalSocketStringMessageReceiver receiver(name);
        QVERIFY(receiver.start([&received](QString text) {
            received << text;
            return text != "refused";
        }));
        QLocalSocket sender;
        sender.connectToServer(name);
        QVERIFY(sender.waitForConnected(5000));
        for (const QByteArray& bytes : writes) {
            sender.write(bytes);
            QVERIFY(sender.waitForBytesWritten(5000));
            QTest::qWait(1); // let the receiver see each piece on its own
        }
        QTRY_COMPARE(received, messages);
        QByteArray acknowledgements, answered;
        for (const QString& message : messages)
            acknowledgements += message == "refused" ? '\0' : '\1';
        QTRY_COMPARE(answered += sender.readAll(), acknowledgements);
        if (dropped)
            QTRY_COMPARE(sender.state(), QLocalSocket::UnconnectedState);
        else
            QCOMPARE(sender.state(), QLocalSocket::ConnectedState);
    }

    // Small limits, so that each is met at once; the peers write in the order given.
    void limits_data()
    {
        QTest::addColumn<int>("connections");
        QTest::addColumn<int>("idleTimeoutMs");
        QTest::addColumn<qint64>("unreadBytes");
        QTest::addColumn<QList<int>>("writers"); // the peer of each write, in order
        QTest::addColumn<QList<QByteArray>>("writes");
        QTest::addColumn<QStringList>("messages");
        QTest::addColumn<QList<bool>>("open"); // each peer's connection at the end
        QTest::addColumn<QString>("warning");
        const qint64 plenty = 1 << 30;
        QTest::newRow("idle past the time-out")
            << 64 << 300 << plenty << QList<int> {0} << QList<QByteArray> {""} << QStringList()
            << QList<bool> {false}
            << "closeIdleConnections: peer limit: a connection idle for 300 ms closed";
        QTest::newRow("one connection more than allowed: the one idle longest goes")
            << 2 << 30000 << plenty << QList<int> {0, 1, 2}
            << QList<QByteArray> {frame("a"), frame("b"), frame("c")} << QStringList {"a", "b", "c"}
            << QList<bool> {false, true, true}
            << "handleNewConnection: peer limit: more than 2 connections at once; the one idle "
               "longest closed";
        const QByteArray partial = frame(QByteArray(300, 'b'));
        QTest::newRow("unread bytes over the budget: the largest holder goes")
            << 64 << 30000 << qint64(1000) << QList<int> {0, 1, 1}
            << QList<QByteArray> {frame(QByteArray(900, 'a'), 5000), partial.left(154),
                                  partial.mid(154)}
            << QStringList {QString(300, 'b')} << QList<bool> {false, true}
            << "keepToBudget: peer limit: more than 1000 unread bytes; the connection holding "
               "900 closed";
    }

    void limits()
    {
        QFETCH(int, connections);
        QFETCH(int, idleTimeoutMs);
        QFETCH(qint64, unreadBytes);
        QFETCH(QList<int>, writers);
        QFETCH(QList<QByteArray>, writes);
        QFETCH(QStringList, messages);
        QFETCH(QList<bool>, open);
        QFETCH(QString, warning);
        // Short enough for a socket path under Qt 6, which refuses longer names.
        const QString name = QStringLiteral("tst-limits-%1-%2")
                                 .arg(QCoreApplication::applicationPid())
                                 .arg(qHash(QByteArray(QTest::currentDataTag())));
        QStringList received;
        LocalSocketStringMessageReceiver receiver(name);
        receiver.setLimits({connections, idleTimeoutMs, unreadBytes});
        QVERIFY(receiver.start([&received](QString text) {
            received << text;
            return true;
        }));
        QTest::ignoreMessage(QtWarningMsg, qPrintable(warning));
        std::vector<std::unique_ptr<QLocalSocket>> peers;
        for (int i = 0; i < writes.size(); ++i) {
            while (int(peers.size()) <= writers[i]) {
                peers.push_back(std::make_unique<QLocalSocket>());
                peers.back()->connectToServer(name);
                QVERIFY2(peers.back()->waitForConnected(5000),
                         qPrintable(peers.back()->errorString()));
            }
            peers[writers[i]]->write(writes[i]);
            QVERIFY(writes[i].isEmpty() || peers[writers[i]]->waitForBytesWritten(5000));
            QTest::qWait(20); // the receiver sees each write on its own, in this order
        }
        QTRY_COMPARE(received, messages);
        QList<bool> connected;
        QTRY_COMPARE_WITH_TIMEOUT((connected.clear(),
                                   std::for_each(peers.begin(), peers.end(),
                                                 [&](const auto& peer) {
                                                     connected << (peer->state()
                                                                   == QLocalSocket::ConnectedState);
                                                 }),
                                   connected),
                                  open, 10000);
    }

    // Out of descriptors (the rest held elsewhere in the process), the receiver gives half of its
    // connections back and takes the new one; the warning it writes then can still reach a log
    // that needs a descriptor.
    void outOfDescriptors()
    {
        const QString name = QStringLiteral("tst_ApplicationStartupHandler-descriptors-%1")
                                 .arg(QCoreApplication::applicationPid());
        QStringList received;
        LocalSocketStringMessageReceiver receiver(name);
        QVERIFY(receiver.start([&received](QString text) {
            received << text;
            return true;
        }));
        std::vector<std::unique_ptr<QLocalSocket>> peers;
        for (int i = 0; i < 6; ++i) {
            peers.push_back(std::make_unique<QLocalSocket>());
            peers.back()->connectToServer(name);
            QVERIFY(peers.back()->waitForConnected(5000));
            peers.back()->write(frame("peer"));
            QVERIFY(peers.back()->waitForBytesWritten(5000));
        }
        QTRY_COMPARE(received.size(), 6);

        rlimit saved {};
        QVERIFY(::getrlimit(RLIMIT_NOFILE, &saved) == 0);
        QVector<int> held;
        warnings.clear();
        previousHandler = qInstallMessageHandler(recordWarning);
        const auto restore = qScopeGuard([&] {
            qInstallMessageHandler(previousHandler);
            for (const int descriptor : qAsConst(held))
                ::close(descriptor);
            ::setrlimit(RLIMIT_NOFILE, &saved);
        });
        rlimit lowered = saved;
        lowered.rlim_cur = qMin<rlim_t>(saved.rlim_cur, rlim_t(highestOpenDescriptor()) + 64);
        QVERIFY(::setrlimit(RLIMIT_NOFILE, &lowered) == 0);
        for (int descriptor; (descriptor = ::open("/dev/null", O_RDONLY | O_CLOEXEC)) >= 0;)
            held << descriptor;
        QCOMPARE(errno, EMFILE);
        ::close(held.takeLast()); // for the latecomer's end of the connection

        QLocalSocket latecomer;
        latecomer.connectToServer(name);
        QVERIFY(latecomer.waitForConnected(5000));
        latecomer.write(frame("load:/late.csv"));
        QVERIFY(latecomer.waitForBytesWritten(5000));
        QTRY_COMPARE(received.size(), 7);
        QCOMPARE(received.last(), QString("load:/late.csv"));
        QCOMPARE(warnings.value(0),
                 "start: peer limit: out of descriptors; at most 3 connections at once "
                 "[descriptor free]");
        QTRY_COMPARE(int(std::count_if(peers.begin(), peers.end(),
                                       [](const auto& peer) {
                                           return peer->state() == QLocalSocket::ConnectedState;
                                       })),
                     2);
        QCOMPARE(latecomer.state(), QLocalSocket::ConnectedState);
    }

    // The log shows the path of a requested file whole up to 1024 characters and cuts a longer
    // one there, with its length; the signal carries the whole path.
    void loadRequestsAreLoggedShortened_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("logged");
        QTest::newRow("a usual path") << "/home/anna/Lager ü.csv"
                                      << "/home/anna/Lager ü.csv";
        const QString longest = "/" + QString(1019, 'a') + ".csv";
        QTest::newRow("1024 characters") << longest << longest;
        const QString longer = "/" + QString(1020, 'b') + ".csv";
        QTest::newRow("1025 characters")
            << longer << "/" + QString(1020, 'b') + ".cs... (1025 characters)";
        const QString huge = "/" + QString(999995, 'c') + ".csv";
        QTest::newRow("a million characters")
            << huge << "/" + QString(1023, 'c') + "... (1000000 characters)";
    }

    void loadRequestsAreLoggedShortened()
    {
        QFETCH(QString, file);
        QFETCH(QString, logged);
        QVERIFY(becomeFirstInstance());
        QSignalSpy loads(ApplicationStartupHandler::instance(),
                         &ApplicationStartupHandler::loadRequest);
        QLocalSocket sender;
        sender.connectToServer(guardSocket());
        QVERIFY(sender.waitForConnected(5000));
        QTest::ignoreMessage(QtInfoMsg, qPrintable("handleMessage: load requested: " + logged));
        sender.write(frame("load:" + file.toUtf8()));
        QVERIFY(sender.waitForBytesWritten(5000));
        QTRY_COMPARE(loads.count(), 1);
        QCOMPARE(loads.first().first().toString(), file);
    }

    // The first call holds the guard's lock: a second one meets its receiver, which gets "raise".
    void secondInstanceIsTurnedAway_data()
    {
        QTest::addColumn<QString>("box"); // shown, empty for none
        QTest::addColumn<bool>("held"); // as while the first instance starts its plug-ins
        QTest::newRow("without notification") << "" << false;
        QTest::newRow("held until delivered") << "" << true;
        QTest::newRow("with notification, in German")
            << "Guarded: GUI: Das Programm wurde bereits gestartet.\nEs darf jedoch nur eine "
               "Instanz laufen.\nDaher wird diese Instanz beendet."
            << false;
    }

    void secondInstanceIsTurnedAway()
    {
        QFETCH(QString, box);
        QFETCH(bool, held);
        auto* handler = ApplicationStartupHandler::instance();
        auto& application = *qobject_cast<QApplication*>(QCoreApplication::instance());
        const QString id = guardId();
        QVERIFY(becomeFirstInstance());
        QSignalSpy raised(handler, &ApplicationStartupHandler::raiseRequest);
        QApplication::setApplicationDisplayName(QStringLiteral("Guarded"));
        QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
        QString shown;
        QTimer closer; // events run while the request is handed over, before any box is shown
        connect(&closer, &QTimer::timeout, [&shown] {
            if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
                shown = box->windowTitle() + ": " + box->text();
                box->accept();
            }
        });
        closer.start(10);
        if (held)
            handler->holdRequests();
        QCOMPARE(handler->getSingleGuiApplicationGuardExitCode(application, id, !box.isEmpty()),
                 -1);
        QLocale::setDefault(QLocale::c());
        if (held) { // acknowledged, so already taken in
            QCOMPARE(raised.count(), 0);
            handler->deliverHeldRequests();
            QCOMPARE(raised.count(), 1);
        }
        QTRY_COMPARE(raised.count(), 1);
        QCOMPARE(shown, box);
    }
};

QTEST_MAIN(tst_ApplicationStartupHandler)
#include "tst_ApplicationStartupHandler.moc"
