// The single-instance receiver fed arbitrary byte streams through a real local socket, each
// stream written twice: in pieces of fuzzer-chosen sizes and in one write. Both deliveries must
// yield the messages that the frame format gives (a big-endian qint32 length and that many
// UTF-8 bytes, cut at the first zero byte; a length of 0 or less carries nothing; a length
// above the maximum drops the connection), in order, and a closed peer must be let go. While the
// pieces go out, a second connection sends its own frames in halves: neither may disturb the
// other.

#include "FuzzSupport.h"

#include "StartUp/LocalSocketStringMessageReceiver.h"

#include <QElapsedTimer>
#include <QLocalSocket>
#include <QRandomGenerator>
#include <QtEndian>

#include <fuzzer/FuzzedDataProvider.h>

#include <memory>

using corvane::base::business::internal::LocalSocketStringMessageReceiver;

namespace {

struct Expected
{
    QStringList messages;
    bool dropped = false;
};

Expected decode(const QByteArray& stream)
{
    Expected expected;
    int position = 0;
    while (stream.size() - position >= 4) {
        const qint32 length = qFromBigEndian<qint32>(stream.constData() + position);
        position += 4;
        if (length <= 0) {
            continue;
        }
        if (length > LocalSocketStringMessageReceiver::maximumMessageSize) {
            expected.dropped = true;
            break;
        }
        if (stream.size() - position < length) {
            break;
        }
        QByteArray payload = stream.mid(position, length);
        position += length;
        const int zero = payload.indexOf('\0');
        if (zero >= 0) {
            payload.truncate(zero);
        }
        expected.messages << QString::fromUtf8(payload);
    }
    return expected;
}

QString serverName;
LocalSocketStringMessageReceiver* receiver = nullptr;
QStringList received;

void pump()
{
    QCoreApplication::processEvents(QEventLoop::AllEvents);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

template <class Condition>
bool pumpUntil(Condition condition, int milliseconds = 5000)
{
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (timer.elapsed() > milliseconds) {
            return false;
        }
        pump();
    }
    return true;
}

int openConnections()
{
    return receiver->findChildren<QLocalSocket*>().size();
}

QByteArray frame(const QByteArray& payload)
{
    QByteArray bytes(4, '\0');
    qToBigEndian<qint32>(payload.size(), bytes.data());
    return bytes + payload;
}

// Writes the pieces one after the other, each flushed and seen by the receiver on its own.
// With a neighbour, a second connection sends frames of its own between the pieces, each cut
// in two, and both connections' messages must come through, each in its own order.
QStringList deliver(const QList<QByteArray>& pieces, const QByteArray& stream,
                    const Expected& expected, bool neighbour)
{
    static const QString mark = QStringLiteral("\x01\x02neighbour ");
    received.clear();
    auto client = std::make_unique<QLocalSocket>();
    client->connectToServer(serverName);
    CHECK(client->waitForConnected(5000), client->errorString());
    std::unique_ptr<QLocalSocket> other;
    QStringList otherMessages;
    if (neighbour) {
        other = std::make_unique<QLocalSocket>();
        other->connectToServer(serverName);
        CHECK(other->waitForConnected(5000), other->errorString());
    }
    for (const QByteArray& piece : pieces) {
        if (other) {
            otherMessages << mark + QString::number(otherMessages.size());
            const QByteArray bytes = frame(otherMessages.last().toUtf8());
            other->write(bytes.left(3));
            other->flush();
            pump();
            other->write(bytes.mid(3));
            other->flush();
        }
        if (client->state() == QLocalSocket::ConnectedState) { // else dropped: nowhere to go
            client->write(piece);
            client->flush();
        }
        pump();
    }
    pumpUntil([&] { return client->bytesToWrite() == 0 || !client->isOpen(); });
    pumpUntil([&] { return received.size() >= expected.messages.size() + otherMessages.size(); });
    for (int i = 0; i < 3; ++i) {
        pump(); // anything beyond the expected messages would show now
    }
    if (expected.dropped) {
        CHECK(pumpUntil([&] { return client->state() == QLocalSocket::UnconnectedState; }),
              "a frame longer than the maximum did not drop the connection: " + fuzz::show(stream));
    }
    QStringList own;
    QStringList neighbours;
    for (const QString& message : qAsConst(received)) {
        (message.startsWith(mark) ? neighbours : own) << message;
    }
    CHECK(neighbours == otherMessages,
          "the neighbour's messages " + fuzz::show(neighbours) + " beside " + fuzz::show(stream));
    client->abort();
    client.reset();
    other.reset();
    CHECK(pumpUntil([] { return openConnections() == 0; }),
          QStringLiteral("the receiver kept %1 connection(s) of closed peers")
              .arg(openConnections()));
    return own;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzz::application();
    serverName = QStringLiteral("corvane-fuzz-messages-%1").arg(QCoreApplication::applicationPid());
    receiver = new LocalSocketStringMessageReceiver(serverName);
    if (!receiver->start([](QString text) {
            received << text;
            return true;
        })) {
        std::fprintf(stderr, "cannot listen on %s\n", qPrintable(serverName));
        std::abort();
    }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider provider(data, size);
    const quint32 seed = provider.ConsumeIntegral<quint32>();
    const int largestPiece = 1 + provider.ConsumeIntegralInRange<int>(0, 15);
    const std::string rest = provider.ConsumeRemainingBytesAsString();
    const QByteArray stream(rest.data(), int(rest.size()));
    const Expected expected = decode(stream);

    QList<QByteArray> pieces;
    QRandomGenerator random(seed);
    for (int position = 0; position < stream.size();) {
        const int length = 1 + int(random.bounded(quint32(largestPiece)));
        pieces << stream.mid(position, length);
        position += length;
    }

    const bool neighbour = !stream.contains("\x01\x02neighbour"); // else its messages mix
    const QStringList inPieces = deliver(pieces, stream, expected, neighbour);
    CHECK(inPieces == expected.messages,
          "stream " + fuzz::show(stream) + " in pieces gave " + fuzz::show(inPieces) + ", expected "
              + fuzz::show(expected.messages));
    const QStringList whole = deliver({stream}, stream, expected, false);
    CHECK(whole == expected.messages,
          "stream " + fuzz::show(stream) + " in one write gave " + fuzz::show(whole) + ", expected "
              + fuzz::show(expected.messages));
    return 0;
}
