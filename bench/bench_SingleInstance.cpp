// Messages between instances: 100,000 messages of 100 bytes over one connection through
// the sender and receiver, against raw QLocalSocket writes and reads of the same bytes; and
// the median time from starting a second instance of the demo to its exit.

#include "RatioReporter.h"

#include "StartUp/LocalSocketStringMessageReceiver.h"
#include "StartUp/LocalSocketStringMessageSender.h"

#include <QCoreApplication>
#include <QDataStream>
#include <QElapsedTimer>
#include <QLocalServer>
#include <QLocalSocket>
#include <QProcess>
#include <QSemaphore>
#include <QTemporaryDir>
#include <QThread>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <functional>
#include <memory>

using namespace corvane::base::business::internal;

namespace {

constexpr int messages = 100000;
const QString payload(100, QLatin1Char('x'));

QString uniqueName(const char* kind)
{
    static int run = 0;
    return QStringLiteral("bench-%1-%2-%3")
        .arg(kind)
        .arg(QCoreApplication::applicationPid())
        .arg(++run);
}

// A thread with an event loop; run() executes work on it and waits for it.
class ServerThread
{
public:
    ServerThread()
    {
        context.moveToThread(&thread);
        thread.start();
    }
    ~ServerThread()
    {
        run([this] { context.moveToThread(QCoreApplication::instance()->thread()); });
        thread.quit();
        thread.wait();
    }
    void run(const std::function<void()>& work)
    {
        QMetaObject::invokeMethod(&context, work, Qt::BlockingQueuedConnection);
    }

private:
    QThread thread;
    QObject context;
};

void BM_MessagesThroughReceiver(benchmark::State& state)
{
    const QString name = uniqueName("receiver");
    std::atomic<int> received {0};
    QSemaphore done;
    ServerThread thread;
    std::unique_ptr<LocalSocketStringMessageReceiver> receiver;
    thread.run([&] {
        receiver = std::make_unique<LocalSocketStringMessageReceiver>(name);
        receiver->start([&](QString) {
            if (++received == messages) {
                done.release();
            }
            return true;
        });
    });
    for (auto _ : state) {
        received = 0;
        LocalSocketStringMessageSender sender(name, 5000);
        sender.connectToReceiver();
        for (int i = 0; i < messages; ++i) {
            sender.sendValue(payload);
        }
        done.acquire();
        sender.disconnectFromReceiver();
    }
    state.SetItemsProcessed(state.iterations() * messages);
    thread.run([&] { receiver.reset(); });
}
BENCHMARK(BM_MessagesThroughReceiver)->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();

void BM_RawLocalSocket(benchmark::State& state)
{
    const QString name = uniqueName("raw");
    QByteArray frame;
    QDataStream(&frame, QIODevice::WriteOnly) << qint32(payload.toUtf8().size());
    frame += payload.toUtf8();
    const qint64 total = qint64(frame.size()) * messages;
    std::atomic<qint64> bytes {0};
    QSemaphore done;
    ServerThread thread;
    std::unique_ptr<QLocalServer> server;
    thread.run([&] {
        server = std::make_unique<QLocalServer>();
        QObject::connect(server.get(), &QLocalServer::newConnection, [&] {
            QLocalSocket* socket = server->nextPendingConnection();
            QObject::connect(socket, &QLocalSocket::readyRead, [&, socket] {
                if ((bytes += socket->readAll().size()) == total) {
                    done.release();
                }
            });
        });
        server->listen(name);
    });
    for (auto _ : state) {
        bytes = 0;
        QLocalSocket socket;
        socket.connectToServer(name, QIODevice::WriteOnly);
        socket.waitForConnected(5000);
        for (int i = 0; i < messages; ++i) {
            socket.write(frame);
            socket.waitForBytesWritten(10000);
        }
        done.acquire();
        socket.disconnectFromServer();
    }
    state.SetItemsProcessed(state.iterations() * messages);
    thread.run([&] { server.reset(); });
}
BENCHMARK(BM_RawLocalSocket)->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();

// The median of 15 second instances of the GUI demo against a running first one.
double secondInstanceMilliseconds()
{
    QTemporaryDir folder;
    const QDir demo(QStringLiteral(DEMO_FOLDER));
    for (const char* file : {"corvane-demo", "libInventory.so", "libWindow.so", "libHeartbeat.so",
                             "corvane-demo.properties", "inventory.csv"}) {
        QFile::copy(demo.filePath(file), folder.filePath(file));
    }
    QFile config(folder.filePath("single.xml"));
    config.open(QIODevice::WriteOnly);
    config.write(
        QStringLiteral(
            "<config><information><applicationtype>GUI</applicationtype>"
            "<singleappid>bench-%1</singleappid></information><plugins>"
            "<plugin><library>Inventory</library></plugin><plugin><library>Window</library>"
            "</plugin></plugins></config>")
            .arg(QCoreApplication::applicationPid())
            .toUtf8());
    config.close();
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("QT_QPA_PLATFORM", "offscreen");
    QProcess first;
    first.setProcessEnvironment(environment);
    first.start(folder.filePath("corvane-demo"), {"-C", "single.xml"});
    first.waitForStarted();
    QThread::msleep(1500); // the first instance settles; not a synchronisation the result relies on
    QList<double> times;
    for (int i = 0; i < 15; ++i) {
        QElapsedTimer timer;
        timer.start();
        QProcess second;
        second.setProcessEnvironment(environment);
        second.start(folder.filePath("corvane-demo"), {"-C", "single.xml"});
        second.waitForFinished(60000);
        if (second.exitCode() == 255) {
            times << timer.nsecsElapsed() / 1e6;
        }
    }
    first.kill();
    first.waitForFinished();
    if (times.isEmpty()) {
        return -1;
    }
    std::sort(times.begin(), times.end());
    return times.at(times.size() / 2);
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.printRatios({{"BM_MessagesThroughReceiver/iterations:3/real_time",
                           "BM_RawLocalSocket/iterations:3/real_time"}},
                         {1.5});
    std::printf("MEDIAN second instance, start to exit: %.1f ms\n", secondInstanceMilliseconds());
    benchmark::Shutdown();
    return 0;
}
