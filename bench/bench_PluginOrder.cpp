// Ordering plug-ins by their service dependencies: a chain against name order, where each
// pass of the defined passes orders one plug-in, and random acyclic graphs with about three
// requirements per plug-in.

#include "RatioReporter.h"

#include "Plugins/PluginOrder.h"

#include <QHash>
#include <QRandomGenerator>

#include <vector>

using corvane::base::business::PluginOrder;

namespace {

QString nameOf(int index)
{
    return QStringLiteral("P%1").arg(index, 5, 10, QLatin1Char('0'));
}

QString serviceOf(int index)
{
    return QStringLiteral("S%1").arg(index);
}

// P00000 needs P00001's service, which needs P00002's, ...: the last is ordered first.
QList<PluginOrder::Plugin> chain(int count)
{
    QList<PluginOrder::Plugin> plugins;
    for (int i = 0; i < count; ++i) {
        plugins.append({nameOf(i), {serviceOf(i)}, {}, {}});
        if (i + 1 < count) {
            plugins.last().required.append(serviceOf(i + 1));
        }
    }
    return plugins;
}

// Each plug-in requires about three services of plug-ins with a higher index.
QList<PluginOrder::Plugin> randomGraph(int count)
{
    QRandomGenerator random(4711);
    QList<PluginOrder::Plugin> plugins;
    for (int i = 0; i < count; ++i) {
        plugins.append({nameOf(i), {serviceOf(i)}, {}, {}});
        for (int r = 0; r < 3 && i + 1 < count; ++r) {
            plugins.last().required.append(serviceOf(i + 1 + random.bounded(count - i - 1)));
        }
    }
    return plugins;
}

void run(benchmark::State& state, const QList<PluginOrder::Plugin>& plugins)
{
    for (auto _ : state) {
        const PluginOrder::Result result = PluginOrder::order(plugins);
        if (!result.leftOver.isEmpty()) {
            state.SkipWithError("not every plug-in was ordered");
        }
        benchmark::DoNotOptimize(result.order);
    }
    // Seconds per plug-in (shown with an SI prefix: "1.1u" is 1.1 microseconds).
    state.counters["per_plugin"] = benchmark::Counter(double(plugins.size()),
                                                      benchmark::Counter::kIsIterationInvariantRate
                                                          | benchmark::Counter::kInvert);
}

void BM_OrderChain(benchmark::State& state)
{
    run(state, chain(int(state.range(0))));
}
BENCHMARK(BM_OrderChain)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

void BM_OrderRandomGraph(benchmark::State& state)
{
    run(state, randomGraph(int(state.range(0))));
}
BENCHMARK(BM_OrderRandomGraph)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

// For comparison: a plain topological sort (Kahn) of the same graph, from the same plug-in
// records, without passes, name order or lines.
void BM_KahnSortRandomGraph(benchmark::State& state)
{
    const QList<PluginOrder::Plugin> plugins = randomGraph(int(state.range(0)));
    for (auto _ : state) {
        QHash<QString, int> provider;
        for (int i = 0; i < plugins.size(); ++i) {
            for (const QString& service : plugins.at(i).provided) {
                provider.insert(service, i);
            }
        }
        std::vector<std::vector<int>> users(size_t(plugins.size()));
        std::vector<int> waiting(size_t(plugins.size()), 0);
        for (int i = 0; i < plugins.size(); ++i) {
            for (const QString& service : plugins.at(i).required) {
                users[size_t(provider.value(service))].push_back(i);
                ++waiting[size_t(i)];
            }
        }
        std::vector<int> ready;
        for (int i = 0; i < plugins.size(); ++i) {
            if (waiting[size_t(i)] == 0) {
                ready.push_back(i);
            }
        }
        QStringList order;
        while (!ready.empty()) {
            const int next = ready.back();
            ready.pop_back();
            order.append(plugins.at(next).name);
            for (int user : users[size_t(next)]) {
                if (--waiting[size_t(user)] == 0) {
                    ready.push_back(user);
                }
            }
        }
        benchmark::DoNotOptimize(order);
    }
}
BENCHMARK(BM_KahnSortRandomGraph)->Arg(10000)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    for (const char* name : {"BM_OrderChain/10000", "BM_OrderRandomGraph/10000"}) {
        const double milliseconds = reporter.nanosecondsOf(name) / 1e6;
        if (milliseconds > 0) {
            RatioReporter::printGoal(std::string(name) + " (ms)", milliseconds, 5.0);
        }
    }
    benchmark::Shutdown();
    return 0;
}
