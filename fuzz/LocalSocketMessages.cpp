// The single-instance receiver fed arbitrary byte streams through a real local socket, in pieces
// and in one write: the frames' messages in order, each answered with one byte (1 when the
// callback took it), a frame too long dropping the connection, a closed peer let go.

#include "FuzzSupport.h"

#include "StartUp/LocalSocketStringMessageReceiver.h"

#include <QLocalSocket>
#include <QtEndian>

using corvane::base::business::internal::LocalSocketStringMessageReceiver;

namespace {

QString serverName;
LocalSocketStringMessageReceiver* receiver = nullptr;
QStringList received;

// The messages of a stream, their answers (the callback takes those of an even number of
// characters) and whether the stream ends in a frame too long to take.
QStringList decode(const QByteArray& stream, QByteArray& answers, bool& dropped)
{
    QStringList messages;
    for (int position = 0; stream.size() - position >= 4;) {
        const qint32 length = qFromBigEndian<qint32>(stream.constData() + position);
        position += 4;
        dropped = length > LocalSocketStringMessageReceiver::maximumMessageSize;
        if (dropped || (length > 0 && stream.size() - position < length))
            break;
        if (length > 0) {
            messages << QString::fromUtf8(stream.mid(position, length).split('\0')[0]);
            answers += char(messages.last().size() % 2 == 0);
        }
        position += qMax(length, 0);
    }
    return messages;
}

// Writes the pieces one after the other, each seen by the receiver on its own.
void deliver(const QList<QByteArray>& pieces, const QByteArray& stream)
{
    bool dropped = false;
    QByteArray expectedAnswers, answers;
    const QStringList expected = decode(stream, expectedAnswers, dropped);
    QLocalSocket client;
    client.connectToServer(serverName);
    CHECK(client.waitForConnected(5000), client.errorString());
    received.clear();
    for (const QByteArray& piece : pieces) {
        if (client.state() == QLocalSocket::ConnectedState) { // else dropped: nowhere to go
            client.write(piece);
            client.flush();
        }
        fuzz::pump();
    }
    const auto complete = [&] {
        answers += client.readAll();
        return received.size() >= expected.size()
            && (dropped ? client.state() == QLocalSocket::UnconnectedState
                        : answers.size() >= expected.size());
    };
    const bool done = fuzz::pumpUntil(complete);
    for (int i = 0; i < 3; ++i) // anything beyond the expected would show now
        fuzz::pump();
    complete();
    // A dropped connection may lose the answers that were still on their way.
    CHECK(done && received == expected
              && (dropped ? expectedAnswers.startsWith(answers) : answers == expectedAnswers),
          fuzz::show(stream) + QStringLiteral(" in %1 piece(s) gave ").arg(pieces.size())
              + fuzz::show(received) + " answered " + fuzz::show(answers));
    client.abort();
    CHECK(fuzz::pumpUntil([] { return receiver->findChildren<QLocalSocket*>().isEmpty(); }),
          "the connection of a closed peer is kept after " + fuzz::show(stream));
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzz::startApplication();
    serverName = QStringLiteral("corvane-fuzz-messages-%1").arg(QCoreApplication::applicationPid());
    receiver = new LocalSocketStringMessageReceiver(serverName);
    const auto callback = [](QString message) {
        received << message;
        return message.size() % 2 == 0;
    };
    if (!receiver->start(callback))
        fuzz::fail("cannot listen on", serverName);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    QByteArray stream;
    const QList<QByteArray> pieces = fuzz::streamInPieces(data, size, stream);
    deliver(pieces, stream);
    deliver({stream}, stream);
    return 0;
}
