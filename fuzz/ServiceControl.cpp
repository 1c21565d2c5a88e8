// The service's control socket fed arbitrary byte streams in pieces: every complete line gets
// exactly one answer, in order, "ok" and its signal for a request, else "unknown" and none.

#include "FuzzSupport.h"

#include "StartUp/ServiceControlServer.h"

#include <QLocalSocket>
#include <QRegularExpression>
#include <QTemporaryDir>

using corvane::base::business::ServiceControlServer;

namespace {

QString socketPath;
QStringList signalled;

// "ok" and the signal raised, "unknown", or nothing for a near miss (blanks, case, other
// digits), where either answer will do.
QString expect(const QByteArray& line)
{
    bool number = false;
    const int command = line.mid(8).toInt(&number);
    if (line == "status" || line == "stop" || line == "pause" || line == "resume")
        return line == "status" ? "ok" : "ok " + line;
    if (line.startsWith("command ") && number && QByteArray::number(command) == line.mid(8))
        return "ok command " + QString::number(command);
    const QRegularExpression words(QStringLiteral("status|stop|pause|resume|command"));
    return QString::fromLatin1(line.toLower()).contains(words) ? QString() : "unknown";
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzz::startApplication();
    static QTemporaryDir folder;
    socketPath = folder.filePath("control");
    auto* server = new ServiceControlServer;
    QObject::connect(server, &ServiceControlServer::stopRequested, [] { signalled << "stop"; });
    QObject::connect(server, &ServiceControlServer::pauseRequested, [] { signalled << "pause"; });
    QObject::connect(server, &ServiceControlServer::resumeRequested, [] { signalled << "resume"; });
    QObject::connect(server, &ServiceControlServer::commandRequested,
                     [](int number) { signalled << "command " + QString::number(number); });
    if (!server->listen(socketPath))
        fuzz::fail("cannot listen on", socketPath);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    QByteArray stream;
    const QList<QByteArray> pieces = fuzz::streamInPieces(data, size, stream);
    QList<QByteArray> lines = stream.split('\n');
    lines.removeLast(); // a last piece without its line break is no request yet

    signalled.clear();
    QLocalSocket client;
    client.connectToServer(socketPath);
    CHECK(client.waitForConnected(5000), client.errorString());
    for (const QByteArray& piece : pieces) {
        client.write(piece);
        client.flush();
        fuzz::pump();
    }
    QByteArray answers;
    fuzz::pumpUntil([&] { return (answers += client.readAll()).count('\n') >= lines.size(); });
    for (int i = 0; i < 3; ++i) // a surplus answer would show now
        fuzz::pump();
    const QList<QByteArray> answered = (answers += client.readAll()).split('\n');
    CHECK(answered.size() == lines.size() + 1 && answered.last().isEmpty(),
          QStringLiteral("%1 line(s) of ").arg(lines.size()) + fuzz::show(stream) + " got "
              + fuzz::show(answers));
    QStringList expectedSignals;
    int okAnswers = 0, nearMisses = 0;
    for (int i = 0; i < lines.size(); ++i) {
        const QString expected = expect(lines[i]);
        CHECK(expected.isEmpty() ? answered[i] == "ok" || answered[i] == "unknown"
                                 : answered[i] == expected.section(' ', 0, 0),
              "line " + fuzz::show(lines[i]) + " got " + fuzz::show(answered[i]));
        okAnswers += answered[i] == "ok";
        nearMisses += expected.isEmpty();
        expectedSignals << expected.section(' ', 1);
    }
    expectedSignals.removeAll(QString());
    CHECK(nearMisses == 0 ? signalled == expectedSignals : signalled.size() <= okAnswers,
          fuzz::show(stream) + " raised " + fuzz::show(signalled) + ", expected "
              + fuzz::show(expectedSignals));
    return 0;
}
