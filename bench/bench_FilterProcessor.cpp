// applyFilter over many entities with "NOP price >= 50 OR name STARTSWITH A AND NOT delivered
// in [day 10, day 20)", against a hand-written loop that makes the same comparisons through
// the entities' getters and builds the same list in the same order.

#include "RatioReporter.h"

#include "Interfaces/ILoggingManager.h"
#include "Logging/LoggingManager.h"
#include "StartUp/ManagerRegistry.h"
#include "Utility/AbstractEntityBaseData.h"
#include "Utility/ComplexFilter.h"
#include "Utility/ConditionFilter.h"
#include "Utility/FilterProcessor.h"
#include "Utility/PatternFilter.h"
#include "Utility/RangeFilter.h"

#include <QRandomGenerator>
#include <QSet>

#include <cstdio>
#include <memory>

using namespace corvane::base::core::entity;
using namespace corvane::base::core::utility;

namespace {

class Item : public EntityBase
{
public:
    Item(QString name, double price, QDateTime delivered)
        : name(std::move(name)), price(price), delivered(std::move(delivered))
    {
    }
    void getName(QString& out) const { out = name; }
    void getPrice(double& out) const { out = price; }
    void getDelivered(QDateTime& out) const { out = delivered; }

private:
    QString name;
    double price;
    QDateTime delivered;
};

class ItemData : public AbstractEntityBaseData
{
public:
    ItemData() { registerFields(); }
    void registerFields() override
    {
        setStringFunction("name", static_cast<StringGetter>(&Item::getName));
        setDoubleFunction("price", static_cast<DoubleGetter>(&Item::getPrice));
        setDateTimeFunction("delivered", static_cast<DateTimeGetter>(&Item::getDelivered));
    }
};

const QDateTime start(QDate(2026, 1, 1), QTime(0, 0), Qt::UTC);

struct Items
{
    explicit Items(int count)
    {
        QRandomGenerator random(7);
        const QStringList names {"Anchor", "Bolt", "Cable", "Anvil", "Drill"};
        for (int i = 0; i < count; ++i) {
            owned.emplace_back(new Item(names.at(random.bounded(names.size())) + QString::number(i),
                                        random.bounded(100.0),
                                        start.addSecs(random.bounded(30 * 86400))));
            list << owned.back().get();
        }
    }
    std::vector<std::unique_ptr<Item>> owned;
    QList<EntityBase*> list;
};

const Items& items(int count)
{
    static std::map<int, std::unique_ptr<Items>> cache;
    auto& entry = cache[count];
    if (!entry) {
        entry = std::make_unique<Items>(count);
    }
    return *entry;
}

void BM_ApplyFilter(benchmark::State& state)
{
    const Items& input = items(int(state.range(0)));
    ItemData data;
    FilterProcessor processor(&data);
    auto* price = new ConditionFilter;
    price->setFieldName("price");
    price->setCompareOperation(CompareOperationEnum::GREATER_EQUAL);
    price->setFieldValue("50");
    auto* name = new PatternFilter;
    name->setFieldName("name");
    name->setPatternPositionEnum(PatternPositionEnum::STARTSWITH);
    name->setPattern("A");
    auto* delivered = new RangeFilter;
    delivered->setFieldName("delivered");
    delivered->setFirstComparison(CompareOperationEnum::LESS_EQUAL);
    delivered->setMinValue(start.addDays(10).toString(Qt::ISODate));
    delivered->setSecondComparison(CompareOperationEnum::LESS);
    delivered->setMaxValue(start.addDays(20).toString(Qt::ISODate));
    ComplexFilter chain;
    chain.addFilter(LogicOperationEnum::NOP, price);
    chain.addFilter(LogicOperationEnum::OR, name);
    chain.addFilter(LogicOperationEnum::AND_NOT, delivered);
    QList<EntityBase*> result;
    for (auto _ : state) {
        processor.applyFilter(input.list, chain, result);
        benchmark::DoNotOptimize(result.size());
    }
    state.counters["kept"] = double(result.size());
    state.counters["per_entity"] = benchmark::Counter(double(input.list.size()),
                                                      benchmark::Counter::kIsIterationInvariantRate
                                                          | benchmark::Counter::kInvert);
    delete delivered; // a chain deletes only the first half of its filters
}
BENCHMARK(BM_ApplyFilter)->Arg(10000)->Arg(1000000)->Unit(benchmark::kMillisecond);

void BM_HandWrittenLoop(benchmark::State& state)
{
    const Items& input = items(int(state.range(0)));
    const QDateTime min = start.addDays(10);
    const QDateTime max = start.addDays(20);
    QList<EntityBase*> result;
    for (auto _ : state) {
        result.clear();
        QSet<EntityBase*> kept;
        for (EntityBase* entity : input.list) {
            double price = 0;
            static_cast<Item*>(entity)->getPrice(price);
            if (int(price - 50) >= 0) {
                result << entity;
                kept.insert(entity);
            }
        }
        for (EntityBase* entity : input.list) {
            QString name;
            QDateTime delivered;
            static_cast<Item*>(entity)->getName(name);
            static_cast<Item*>(entity)->getDelivered(delivered);
            const bool inRange
                = min.toSecsSinceEpoch() <= delivered.toSecsSinceEpoch() && delivered < max;
            if (name.startsWith("A") && !inRange && !kept.contains(entity)) {
                result << entity;
            }
        }
        benchmark::DoNotOptimize(result.size());
    }
    state.counters["kept"] = double(result.size());
    state.counters["per_entity"] = benchmark::Counter(double(input.list.size()),
                                                      benchmark::Counter::kIsIterationInvariantRate
                                                          | benchmark::Counter::kInvert);
}
BENCHMARK(BM_HandWrittenLoop)->Arg(10000)->Arg(1000000)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    using namespace corvane::base::business;
    ManagerRegistry::instance()->registerManager(*LoggingManager::instance());
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.printRatios({{"BM_ApplyFilter/10000", "BM_HandWrittenLoop/10000"},
                          {"BM_ApplyFilter/1000000", "BM_HandWrittenLoop/1000000"}},
                         {2.0, 2.0});
    const double small = reporter.nanosecondsOf("BM_ApplyFilter/10000") / 10000;
    const double large = reporter.nanosecondsOf("BM_ApplyFilter/1000000") / 1000000;
    if (small > 0 && large > 0) {
        RatioReporter::printRatio("per entity at 1,000,000 / at 10,000", large / small, 1.5);
    }
    benchmark::Shutdown();
    return 0;
}
