// The filter processor on arbitrary chains of condition and range filters over a few entities:
// opened by NOP or NOT, a chain must be the OR of its AND-groups of what doFiltering gives each
// filter on each entity, united in order without repeats, NOT the complement in input order.

#include "FuzzSupport.h"

#include "FakeManagers.h"

#include "Exceptions/Exceptions.h"
#include "StartUp/ManagerRegistry.h"
#include "Utility/AbstractEntityBaseData.h"
#include "Utility/ComplexFilter.h"
#include "Utility/ConditionFilter.h"
#include "Utility/FilterProcessor.h"
#include "Utility/RangeFilter.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <typeinfo>

using namespace corvane::base::core::utility;
using namespace corvane::base::core::entity;
using namespace corvane::base::exceptions;

namespace {

struct Item : EntityBase
{
    QVariantList values;
    void getName(QString& out) const { out = values[0].toString(); }
    void getPrice(double& out) const { out = values[1].toDouble(); }
    void getDelivered(QDateTime& out) const { out = values[2].toDateTime(); }
    void getCode(long& out) const { out = long(values[3].toLongLong()); }
};

struct ItemData : AbstractEntityBaseData
{
    ItemData() { registerFields(); }
    void registerFields() override
    {
        setStringFunction("name", static_cast<StringGetter>(&Item::getName));
        setDoubleFunction("price", static_cast<DoubleGetter>(&Item::getPrice));
        setDateTimeFunction("delivered", static_cast<DateTimeGetter>(&Item::getDelivered));
        setLongFunction("code", static_cast<LongGetter>(&Item::getCode));
    }
};

struct Plan
{
    int kind, operation, second;
    QString field, value, maxValue;
};

Filter* build(const Plan& s)
{
    if (s.kind == FilterTypeEnum::CONDITION_FILTER) {
        auto* filter = new ConditionFilter;
        filter->setFieldName(s.field);
        filter->setCompareOperation(CompareOperationEnum::Enum(s.operation));
        filter->setFieldValue(s.value);
        return filter;
    }
    auto* filter = new RangeFilter;
    filter->setFieldName(s.field);
    filter->setFirstComparison(CompareOperationEnum::Enum(s.operation));
    filter->setSecondComparison(CompareOperationEnum::Enum(s.second));
    filter->setMinValue(s.value);
    filter->setMaxValue(s.maxValue);
    return filter;
}

// {"1"} (passes), {"0"} (fails), {"result", entity indices} or {type, method, message}.
using Outcome = QStringList;

FilterProcessor* processor = nullptr;

// One filter on one entity through doFiltering, into lists that held something before.
Outcome split(const Filter* filter, EntityBase* entity)
{
    static Item before;
    QList<EntityBase*> matched {&before}, notMatched {&before};
    try {
        processor->doFiltering({entity}, filter, matched, notMatched);
    } catch (const BaseException& exception) {
        return {typeid(exception).name(), exception.getMethod(), exception.getReason()};
    }
    CHECK(matched[0] == &before && notMatched[0] == &before
              && matched.mid(1) + notMatched.mid(1) == QList<EntityBase*> {entity},
          "doFiltering did not append the entity to exactly one of the lists");
    return {matched.size() == 2 ? "1" : "0"};
}

Outcome result(const QList<EntityBase*>& result, const QList<EntityBase*>& entities)
{
    QStringList indices;
    for (EntityBase* entity : result)
        indices << QString::number(entities.indexOf(entity));
    return {"result", indices.join(',')};
}

// The chain through applyFilter, into a result list that held something before.
Outcome run(const QList<Plan>& plans, const QList<int>& operations,
            const QList<EntityBase*>& entities)
{
    std::vector<Filter*> filters;
    QList<EntityBase*> list {entities[0]};
    Outcome outcome;
    try {
        ComplexFilter chain;
        for (int i = 0; i < plans.size(); ++i) {
            filters.push_back(build(plans[i]));
            chain.addFilter(LogicOperationEnum::Enum(operations[i]), filters.back());
        }
        processor->applyFilter(entities, chain, list);
        outcome = result(list, entities);
    } catch (const BaseException& exception) {
        outcome = Outcome {typeid(exception).name(), exception.getMethod(), exception.getReason()};
    }
    for (size_t i = (filters.size() + 1) / 2; i < filters.size(); ++i)
        delete filters[i]; // the chain deleted the first half itself
    return outcome;
}

Outcome expectedRun(const QList<int>& operations, const QVector<QVector<Outcome>>& outcomes,
                    const QList<EntityBase*>& entities)
{
    using Logic = LogicOperationEnum;
    if (operations.isEmpty())
        return result(entities, entities);
    if (operations[0] != Logic::NOP && operations[0] != Logic::NOT)
        return {typeid(InvalidOperationException).name(), "applyFilter()",
                "Filter expression starts with false operation, only NOT and NOP are allowed."};
    QList<QList<int>> groups {{0}}; // filter i, or -1 - i when negated
    for (int i = 1; i < operations.size(); ++i) {
        const int operation = operations[i];
        if (operation == Logic::OR || operation == Logic::OR_NOT)
            groups.append(QList<int>());
        else if (operation != Logic::AND && operation != Logic::AND_NOT)
            return {typeid(InvalidOperationException).name(), "filter()",
                    "Invald logic operation for LogicOperationEnum."};
        groups.last() << (operation == Logic::AND_NOT || operation == Logic::OR_NOT ? -1 - i : i);
    }
    QList<EntityBase*> united, complement;
    for (const QList<int>& group : groups) {
        QList<EntityBase*> working = entities;
        for (const int filter : group) {
            QList<EntityBase*> kept;
            for (EntityBase* entity : working) {
                const Outcome& outcome
                    = outcomes[qMax(filter, -1 - filter)][entities.indexOf(entity)];
                if (outcome.size() > 1)
                    return outcome;
                if ((outcome[0] == "1") != (filter < 0))
                    kept << entity;
            }
            working = kept;
        }
        for (EntityBase* entity : working)
            if (!united.contains(entity))
                united << entity;
    }
    for (EntityBase* entity : entities)
        if (!united.contains(entity))
            complement << entity;
    return result(operations[0] == Logic::NOT ? complement : united, entities);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzz::startApplication();
    static fakes::LoggingManager loggingManager;
    corvane::base::business::ManagerRegistry::instance()->registerManager(loggingManager);
    processor = new FilterProcessor(new ItemData);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const QStringList texts
        = QStringLiteral(",0,-0,10,10.7,-3.25,1e10,2147483647.5,nan,ä,apple,Apple,p,true,"
                         "2026-01-05,2300-01-01,2026-01-05T10:00:00Z,2026-01-05T10:00:00.500Z,"
                         "1969-12-31T23:59:59Z,2026-01-05T12:00:00,2106-02-07T06:28:15Z")
              .split(',');
    static const QStringList fields = QStringLiteral("name price delivered code Name").split(' ');
    FuzzedDataProvider provider(data, size);
    const auto pick = [&](const QStringList& choices) {
        return provider.ConsumeBool()
            ? QString::fromStdString(provider.ConsumeRandomLengthString(12))
            : choices.at(provider.ConsumeIntegralInRange(0, choices.size() - 1));
    };
    std::vector<Item> items(provider.ConsumeIntegralInRange<size_t>(1, 6));
    QList<EntityBase*> entities;
    for (Item& item : items) {
        item.values
            = {pick(texts), pick(texts).toDouble(), QDateTime::fromString(pick(texts), Qt::ISODate),
               provider.ConsumeIntegral<int>()};
        entities << &item;
    }
    if (provider.ConsumeBool()) // the same entity twice
        entities << entities[0];

    QList<Plan> plans;
    QList<int> operations; // one per filter, the first one opening the chain
    QVector<QVector<Outcome>> outcomes; // of each filter on each entity, by the library
    for (int i = provider.ConsumeIntegralInRange(0, 4); i > 0; --i) {
        // A condition or a range, with mostly valid comparisons ("<" or "<=" in a range).
        const bool range = provider.ConsumeBool(), valid = provider.ConsumeIntegralInRange(0, 7);
        const auto in = [&](int low, int high) {
            return provider.ConsumeIntegralInRange(valid ? low : -1, valid ? high : 8);
        };
        plans << Plan {range ? FilterTypeEnum::RANGE_FILTER : FilterTypeEnum::CONDITION_FILTER,
                       range ? in(3, 4) : in(1, 6),
                       in(3, 4),
                       pick(fields),
                       pick(texts),
                       pick(texts)};
        // Mostly NOP or NOT to open the chain, AND, OR, AND NOT or OR NOT after that.
        const int operation = provider.ConsumeIntegralInRange(-1, 8);
        const QList<int> valids = plans.size() == 1 ? QList<int> {1, 4} : QList<int> {2, 3, 5, 6};
        operations << (provider.ConsumeIntegralInRange(0, 15) == 0
                           ? operation
                           : valids.at(qAbs(operation) % valids.size()));
        Filter* filter = build(plans.last());
        outcomes.append(QVector<Outcome>());
        for (EntityBase* entity : entities)
            outcomes.last() << split(filter, entity);
        delete filter;
    }
    for (const int opening : {operations.value(0), 5 - operations.value(0)}) { // NOP (1), NOT (4)
        QList<int> chain = operations;
        if (!chain.isEmpty())
            chain[0] = opening;
        const Outcome got = run(plans, chain, entities),
                      expected = expectedRun(chain, outcomes, entities);
        CHECK(got == expected,
              QStringLiteral("opened by %1: ").arg(opening) + fuzz::show(got) + ", expected "
                  + fuzz::show(expected));
    }
    return 0;
}
