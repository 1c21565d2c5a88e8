// The running service's control socket fed arbitrary byte streams in arbitrary pieces through a
// real connection. One request per line: every complete line is answered once, in order, with
// "ok" or "unknown"; "status", "stop", "pause", "resume" and "command <number>" are "ok" and
// raise their signal (status none); a line naming none of them is "unknown" and raises nothing;
// how the pieces fall changes nothing, and neither does a second connection asking for the
// status at the same time.

#include "FuzzSupport.h"

#include "StartUp/ServiceControlServer.h"

#include <QDir>
#include <QElapsedTimer>
#include <QLocalSocket>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <fuzzer/FuzzedDataProvider.h>

#include <memory>

using corvane::base::business::ServiceControlServer;

namespace {

std::unique_ptr<QTemporaryDir> folder;
QString socketPath;
QStringList events;

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

// What a line must give: an answer and the signals, or only that it is one of the answers.
struct Expectation
{
    bool settled = false;
    QString answer;
    QStringList events;
};

Expectation expect(const QByteArray& line)
{
    static const QList<QByteArray> plain {"status", "stop", "pause", "resume"};
    if (plain.contains(line)) {
        return {true, "ok",
                line == "status" ? QStringList() : QStringList {QString::fromLatin1(line)}};
    }
    if (line.startsWith("command ")) {
        bool ok = false;
        const int number = line.mid(8).toInt(&ok);
        if (ok && QByteArray::number(number) == line.mid(8)) {
            return {true, "ok", {"command " + QString::number(number)}};
        }
    }
    const QByteArray lower = line.toLower();
    for (const char* word : {"status", "stop", "pause", "resume", "command"}) {
        if (lower.contains(word)) {
            return {}; // a near miss (blanks, case, other digits): either answer will do
        }
    }
    return {true, "unknown", {}};
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzz::application();
    folder = std::make_unique<QTemporaryDir>(QDir::tempPath() + "/corvane-fuzz-control-XXXXXX");
    socketPath = folder->filePath("control");
    auto* server = new ServiceControlServer;
    QObject::connect(server, &ServiceControlServer::stopRequested, [] { events << "stop"; });
    QObject::connect(server, &ServiceControlServer::pauseRequested, [] { events << "pause"; });
    QObject::connect(server, &ServiceControlServer::resumeRequested, [] { events << "resume"; });
    QObject::connect(server, &ServiceControlServer::commandRequested,
                     [](int number) { events << "command " + QString::number(number); });
    if (!server->listen(socketPath)) {
        std::fprintf(stderr, "cannot listen on %s\n", qPrintable(socketPath));
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

    QList<QByteArray> lines = stream.split('\n');
    lines.removeLast(); // a last piece without its line break is no request yet
    QStringList expectedEvents;
    int okAnswers = 0;
    bool settled = true;
    QList<Expectation> expectations;
    for (const QByteArray& line : lines) {
        expectations << expect(line);
        settled = settled && expectations.last().settled;
        expectedEvents += expectations.last().events;
    }

    events.clear();
    QLocalSocket client;
    client.connectToServer(socketPath);
    CHECK(client.waitForConnected(5000), client.errorString());
    // A second connection asks for the status between the pieces, each request in two halves.
    QLocalSocket neighbour;
    neighbour.connectToServer(socketPath);
    CHECK(neighbour.waitForConnected(5000), neighbour.errorString());
    int statusRequests = 0;
    QRandomGenerator random(seed);
    for (int position = 0; position < stream.size();) {
        neighbour.write("sta");
        neighbour.flush();
        const int length = 1 + int(random.bounded(quint32(largestPiece)));
        client.write(stream.mid(position, length));
        client.flush();
        pump();
        neighbour.write("tus\n");
        neighbour.flush();
        ++statusRequests;
        position += length;
    }
    QByteArray answers;
    auto answerLines = [&] {
        answers += client.readAll();
        return answers.count('\n');
    };
    pumpUntil([&] {
        return answerLines() >= lines.size() || client.state() != QLocalSocket::ConnectedState;
    });
    for (int i = 0; i < 3; ++i) {
        pump();
    }
    answerLines();
    QList<QByteArray> received = answers.split('\n');
    const QByteArray unfinished = received.takeLast();
    CHECK(received.size() == lines.size() && unfinished.isEmpty(),
          QStringLiteral("%1 line(s) got the answers ").arg(lines.size()) + fuzz::show(answers)
              + " for " + fuzz::show(stream));
    for (int i = 0; i < lines.size(); ++i) {
        const QString answer = QString::fromLatin1(received.at(i));
        CHECK(answer == "ok" || answer == "unknown", "answer " + fuzz::show(received.at(i)));
        okAnswers += answer == "ok" ? 1 : 0;
        CHECK(!expectations.at(i).settled || answer == expectations.at(i).answer,
              "line " + fuzz::show(lines.at(i)) + " got " + answer + ", expected "
                  + expectations.at(i).answer);
    }
    if (settled) {
        CHECK(events == expectedEvents,
              "signals " + fuzz::show(events) + ", expected " + fuzz::show(expectedEvents) + " for "
                  + fuzz::show(stream));
    } else {
        CHECK(events.size() <= okAnswers,
              "more signals than \"ok\" answers: " + fuzz::show(events));
    }
    QByteArray neighbourAnswers;
    pumpUntil([&] {
        neighbourAnswers += neighbour.readAll();
        return neighbourAnswers.count('\n') >= statusRequests;
    });
    CHECK(neighbourAnswers == QByteArray("ok\n").repeated(statusRequests),
          QStringLiteral("%1 status request(s) beside ").arg(statusRequests) + fuzz::show(stream)
              + " got " + fuzz::show(neighbourAnswers));
    client.abort();
    neighbour.abort();
    pump();
    return 0;
}
