#include "StartUp/LocalSocketStringMessageReceiver.h"
#include "StartUp/LocalSocketStringMessageSender.h"

#include <QDataStream>
#include <QLocalSocket>
#include <QtTest>

#include <memory>

using corvane::base::business::internal::LocalSocketStringMessageReceiver;
using corvane::base::business::internal::LocalSocketStringMessageSender;

namespace {

QByteArray frame(const QByteArray& payload, qint32 length = -1)
{
    QByteArray bytes;
    QDataStream(&bytes, QIODevice::WriteOnly) << (length < 0 ? qint32(payload.size()) : length);
    return bytes + payload;
}

} // namespace

class tst_LocalSocketMessages : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void framesDrivenByteByByte_data();
    void framesDrivenByteByByte();
    void brokenPeerIsDroppedAndTheNextIsHeard();
    void hostilePeersBlockNobody();
    void senderFindsTheReceiver();

private:
    std::unique_ptr<QLocalSocket> connectedClient();

    QString name;
    std::unique_ptr<LocalSocketStringMessageReceiver> receiver;
    QStringList received;
};

void tst_LocalSocketMessages::init()
{
    static int run = 0;
    name = QStringLiteral("tst_LocalSocketMessages-%1-%2")
               .arg(QCoreApplication::applicationPid())
               .arg(++run);
    receiver = std::make_unique<LocalSocketStringMessageReceiver>(name);
    received.clear();
    QVERIFY(receiver->start([this](QString text) {
        received << text;
        return true;
    }));
}

void tst_LocalSocketMessages::cleanup()
{
    receiver.reset();
}

std::unique_ptr<QLocalSocket> tst_LocalSocketMessages::connectedClient()
{
    auto client = std::make_unique<QLocalSocket>();
    client->connectToServer(name);
    client->waitForConnected(5000);
    return client;
}

void tst_LocalSocketMessages::framesDrivenByteByByte_data()
{
    QTest::addColumn<QList<QByteArray>>("writes"); // each written and delivered on its own
    QTest::addColumn<QStringList>("messages");
    const QByteArray raise = frame("raise");
    QTest::newRow("length in two pieces")
        << QList<QByteArray> {raise.left(2), raise.mid(2)} << QStringList {"raise"};
    QTest::newRow("every byte alone") << [&] {
        QList<QByteArray> bytes;
        for (char c : raise) {
            bytes << QByteArray(1, c);
        }
        return bytes;
    }() << QStringList {"raise"};
    QTest::newRow("two frames in one write") << QList<QByteArray> {raise + frame("load:/a b/ü.csv")}
                                             << QStringList {"raise", "load:/a b/ü.csv"};
    QTest::newRow("cut at a zero byte")
        << QList<QByteArray> {frame(QByteArray("ab\0cd", 5))} << QStringList {"ab"};
    QTest::newRow("empty and negative lengths carry nothing")
        << QList<QByteArray> {frame(""), frame("", -7), raise} << QStringList {"raise"};
}

void tst_LocalSocketMessages::framesDrivenByteByByte()
{
    QFETCH(QList<QByteArray>, writes);
    QFETCH(QStringList, messages);
    auto client = connectedClient();
    for (const QByteArray& bytes : writes) {
        client->write(bytes);
        QVERIFY(client->waitForBytesWritten(5000));
        QTest::qWait(1); // let the receiver see each piece on its own
    }
    QTRY_COMPARE(received, messages);
}

void tst_LocalSocketMessages::brokenPeerIsDroppedAndTheNextIsHeard()
{
    auto broken = connectedClient();
    broken->write(frame("complete") + frame("never finished").left(7));
    broken->waitForBytesWritten(5000);
    broken->abort();
    auto next = connectedClient();
    next->write(frame("raise"));
    next->waitForBytesWritten(5000);
    QTRY_COMPARE(received, QStringList({"complete", "raise"}));
}

void tst_LocalSocketMessages::hostilePeersBlockNobody()
{
    auto silent = connectedClient(); // connects and sends nothing
    auto greedy = connectedClient();
    greedy->write(frame("", LocalSocketStringMessageReceiver::maximumMessageSize + 1));
    greedy->waitForBytesWritten(5000);
    QTRY_COMPARE(greedy->state(), QLocalSocket::UnconnectedState); // dropped
    auto next = connectedClient();
    next->write(frame("load:/x"));
    next->waitForBytesWritten(5000);
    QTRY_COMPARE(received, QStringList {"load:/x"});
    QCOMPARE(silent->state(), QLocalSocket::ConnectedState);
}

void tst_LocalSocketMessages::senderFindsTheReceiver()
{
    LocalSocketStringMessageSender nobody(name + "-none", 5000);
    QElapsedTimer timer;
    timer.start();
    QVERIFY(!nobody.connectToReceiver());
    QVERIFY(timer.elapsed() < 1000); // no marker: no waiting for the time-out

    LocalSocketStringMessageSender sender(name, 5000);
    QVERIFY(sender.connectToReceiver());
    sender.sendValue("raise");
    sender.sendValue("Größe ✓");
    sender.disconnectFromReceiver();
    QTRY_COMPARE(received, QStringList({"raise", "Größe ✓"}));
}

QTEST_MAIN(tst_LocalSocketMessages)
#include "tst_LocalSocketMessages.moc"
