// The round trip of OnThreadExecutor::execute with an empty function against Qt's own
// blocking queued call to the same thread.

#include "RatioReporter.h"

#include "Utility/OnThreadExecutor.h"

#include <QCoreApplication>
#include <QLoggingCategory>
#include <QThread>

using corvane::base::core::utility::OnThreadExecutor;

namespace {

QThread* target()
{
    static QThread* thread = [] {
        auto* started = new QThread;
        started->start();
        return started;
    }();
    return thread;
}

void BM_OnThreadExecutor(benchmark::State& state)
{
    OnThreadExecutor executor([] {}, target());
    for (auto _ : state) {
        executor.execute();
    }
}
BENCHMARK(BM_OnThreadExecutor)->UseRealTime();

void BM_BlockingQueuedInvoke(benchmark::State& state)
{
    QObject receiver;
    receiver.moveToThread(target());
    for (auto _ : state) {
        QMetaObject::invokeMethod(
            &receiver, [] {}, Qt::BlockingQueuedConnection);
    }
    QMetaObject::invokeMethod(
        &receiver, [&] { receiver.moveToThread(nullptr); }, Qt::BlockingQueuedConnection);
}
BENCHMARK(BM_BlockingQueuedInvoke)->UseRealTime();

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    // The executor traces each step at debug level; an application's log would filter them.
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.printRatios({{"BM_OnThreadExecutor/real_time", "BM_BlockingQueuedInvoke/real_time"}},
                         {1.5});
    benchmark::Shutdown();
    target()->quit();
    target()->wait();
    return 0;
}
