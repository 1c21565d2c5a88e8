// The filter processor with arbitrary filter chains (condition, range, pattern, pattern-list
// and equality-list filters with any values, operations and positions, joined by any logic
// operations) over a small list of entities with fuzzer-chosen field values. Checked against a
// model of the evaluation written from its description (an OR of AND-groups, each filter
// optionally negated, an opening NOT negating the whole; per-kind comparison rules; the
// exceptions with their exact texts), and, whatever the model says, "NOT chain" must give
// exactly the entities that "NOP chain" does not give, in input order.

#include "FuzzSupport.h"

#include "FakeManagers.h"

#include "Exceptions/Exceptions.h"
#include "StartUp/ManagerRegistry.h"
#include "Utility/AbstractEntityBaseData.h"
#include "Utility/ComplexFilter.h"
#include "Utility/ConditionFilter.h"
#include "Utility/EqualityListFilter.h"
#include "Utility/FilterProcessor.h"
#include "Utility/PatternFilter.h"
#include "Utility/PatternListFilter.h"
#include "Utility/RangeFilter.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <cmath>
#include <memory>
#include <vector>

using namespace corvane::base::core::utility;
using namespace corvane::base::core::entity;
using namespace corvane::base::exceptions;
using corvane::base::business::ManagerRegistry;

namespace {

class Item : public EntityBase
{
public:
    void getName(QString& out) const { out = name; }
    void getFlagText(QString& out) const { out = flag ? "true" : "false"; }
    void getPrice(double& out) const { out = price; }
    void getWeight(float& out) const { out = weight; }
    void getQuantity(int& out) const { out = quantity; }
    void getDelivered(QDateTime& out) const { out = delivered; }
    void getDay(QDate& out) const { out = day; }
    void getCode(long& out) const { out = code; }
    void getFlag(bool& out) const { out = flag; }

    QString name;
    double price = 0;
    float weight = 0;
    int quantity = 0;
    QDateTime delivered;
    QDate day;
    long code = 0;
    bool flag = false;
};

class ItemData : public AbstractEntityBaseData
{
public:
    ItemData() { registerFields(); }
    void registerFields() override
    {
        setStringFunction("name", static_cast<StringGetter>(&Item::getName));
        setDoubleFunction("price", static_cast<DoubleGetter>(&Item::getPrice));
        setFloatFunction("weight", static_cast<FloatGetter>(&Item::getWeight));
        setIntFunction("quantity", static_cast<IntGetter>(&Item::getQuantity));
        setDateTimeFunction("delivered", static_cast<DateTimeGetter>(&Item::getDelivered));
        setDateFunction("day", static_cast<DateGetter>(&Item::getDay));
        setLongFunction("code", static_cast<LongGetter>(&Item::getCode));
        setBoolFunction("flag", static_cast<BoolGetter>(&Item::getFlag));
    }
};

// The fields as the model sees them: the value a field holds, and its kind.
enum class Kind { Unknown, Text, Number, Date, Bool };

Kind kindOf(const QString& field)
{
    if (field == "name") {
        return Kind::Text;
    }
    if (field == "price" || field == "weight" || field == "quantity") {
        return Kind::Number;
    }
    if (field == "delivered" || field == "day") {
        return Kind::Date;
    }
    if (field == "flag") {
        return Kind::Bool;
    }
    return Kind::Unknown; // "code" (a long field, invisible to the field queries) and others
}

QVariant valueOf(const QString& field, const Item& item)
{
    if (field == "name")
        return QVariant(item.name);
    if (field == "price")
        return QVariant(item.price);
    if (field == "weight")
        return QVariant(item.weight);
    if (field == "quantity")
        return QVariant(item.quantity);
    if (field == "delivered")
        return QVariant(item.delivered);
    if (field == "day")
        return QVariant(item.day);
    if (field == "flag")
        return QVariant(item.flag);
    return QVariant();
}

// One filter as drawn from the input; built into a real filter object as often as needed.
struct Spec
{
    int kind = 1; // FilterTypeEnum value
    QString field;
    int operation = 0; // compare operation, or the pattern list's logic operation
    int second = 0; // second comparison of a range
    int position = 0;
    QString value, maxValue;
    QStringList values;
};

Filter* build(const Spec& spec)
{
    switch (spec.kind) {
    case FilterTypeEnum::CONDITION_FILTER: {
        auto* filter = new ConditionFilter;
        filter->setFieldName(spec.field);
        filter->setCompareOperation(CompareOperationEnum::Enum(spec.operation));
        filter->setFieldValue(spec.value);
        return filter;
    }
    case FilterTypeEnum::RANGE_FILTER: {
        auto* filter = new RangeFilter;
        filter->setFieldName(spec.field);
        filter->setFirstComparison(CompareOperationEnum::Enum(spec.operation));
        filter->setSecondComparison(CompareOperationEnum::Enum(spec.second));
        filter->setMinValue(spec.value);
        filter->setMaxValue(spec.maxValue);
        return filter;
    }
    case FilterTypeEnum::PATTERN_FILTER: {
        auto* filter = new PatternFilter;
        filter->setFieldName(spec.field);
        filter->setPattern(spec.value);
        filter->setPatternPositionEnum(PatternPositionEnum::Enum(spec.position));
        return filter;
    }
    case FilterTypeEnum::PATTERN_LIST_FILTER: {
        auto* filter = new PatternListFilter;
        filter->setFieldName(spec.field);
        filter->setPatternList(spec.values);
        filter->setPatternPositionEnum(PatternPositionEnum::Enum(spec.position));
        filter->setLogicOperation(LogicOperationEnum::Enum(spec.operation));
        return filter;
    }
    default: {
        auto* filter = new EqualityListFilter(spec.field, spec.values);
        return filter;
    }
    }
}

// What the model expects of one filter on one entity.
struct Verdict
{
    enum Outcome { Pass, Fail, Throw, Unsettled } outcome;
    QString exception; // "operation" or "argument"; empty: either
    QString method;
    QString message;
};

Verdict pass(bool passes)
{
    return {passes ? Verdict::Pass : Verdict::Fail, {}, {}, {}};
}

Verdict thrown(const char* exception, const char* method, const QString& message)
{
    return {Verdict::Throw, exception, method, message};
}

const Verdict unsettled {Verdict::Unsettled, {}, {}, {}};

bool compare(int operation, qint64 difference)
{
    switch (operation) {
    case CompareOperationEnum::EQUAL:
        return difference == 0;
    case CompareOperationEnum::NOT_EQUAL:
        return difference != 0;
    case CompareOperationEnum::LESS:
        return difference < 0;
    case CompareOperationEnum::LESS_EQUAL:
        return difference <= 0;
    case CompareOperationEnum::GREATER:
        return difference > 0;
    default:
        return difference >= 0;
    }
}

bool validComparison(int operation)
{
    return operation >= CompareOperationEnum::EQUAL
        && operation <= CompareOperationEnum::GREATER_EQUAL;
}

bool validRangeComparison(int operation)
{
    return operation == CompareOperationEnum::LESS || operation == CompareOperationEnum::LESS_EQUAL;
}

bool matches(const QString& text, const QString& pattern, int position)
{
    switch (position) {
    case PatternPositionEnum::STARTSWITH:
        return text.startsWith(pattern);
    case PatternPositionEnum::ENDSWITH:
        return text.endsWith(pattern);
    default:
        return text.indexOf(pattern) != -1;
    }
}

bool validPosition(int position)
{
    return position >= PatternPositionEnum::SOMEWHERE && position <= PatternPositionEnum::ENDSWITH;
}

// Whole seconds since 1970 as an unsigned 32-bit number is only what it says inside that range.
bool inTimeTRange(const QDateTime& dateTime)
{
    return dateTime.isValid() && dateTime.toSecsSinceEpoch() >= 0
        && dateTime.toSecsSinceEpoch() <= 0xFFFFFFFELL;
}

Verdict evaluate(const Spec& spec, const Item& item)
{
    const Kind kind = kindOf(spec.field);
    if (kind == Kind::Unknown) {
        return pass(true);
    }
    const QVariant value = valueOf(spec.field, item);
    const QString text = value.toString();
    const bool readsAsZero = value.toDouble() == 0 && text != QLatin1String("0");

    switch (spec.kind) {
    case FilterTypeEnum::CONDITION_FILTER: {
        if (!validComparison(spec.operation)) {
            return thrown("operation", "useConditionFilter()",
                          "Wrong compare operation enum or unknown.");
        }
        if (kind == Kind::Number && !readsAsZero) {
            const double difference = value.toDouble() - spec.value.toDouble();
            if (std::isnan(difference) || std::fabs(difference) >= 2147483648.0) {
                return unsettled; // no 32-bit integer holds it
            }
            return pass(compare(spec.operation, qint64(std::trunc(difference))));
        }
        if (kind == Kind::Date && !value.toDateTime().toString().isEmpty()) {
            const QDateTime filterValue = QDateTime::fromString(spec.value, Qt::ISODate);
            return pass(compare(spec.operation, filterValue.secsTo(value.toDateTime())));
        }
        return pass(compare(spec.operation, QString::localeAwareCompare(text, spec.value)));
    }
    case FilterTypeEnum::RANGE_FILTER: {
        const bool valid
            = validRangeComparison(spec.operation) && validRangeComparison(spec.second);
        if (kind == Kind::Number) {
            if (readsAsZero) {
                return unsettled; // not settled: such a value does not count as a number
            }
            if (!validRangeComparison(spec.operation)) {
                return thrown("operation", "useRangeFilter()",
                              "Wrong compare operation enum or unknown.");
            }
            const double number = value.toDouble();
            const double min = spec.value.toDouble();
            const double max = spec.maxValue.toDouble();
            if (!(spec.operation == CompareOperationEnum::LESS_EQUAL ? number >= min
                                                                     : number > min)) {
                return pass(false);
            }
            if (!validRangeComparison(spec.second)) {
                return thrown("operation", "useRangeFilter()",
                              "Wrong compare operation enum or unknown.");
            }
            return pass(spec.second == CompareOperationEnum::LESS_EQUAL ? number <= max
                                                                        : number < max);
        }
        if (kind == Kind::Date) {
            const QDateTime dateTime = value.toDateTime();
            const QDateTime min = QDateTime::fromString(spec.value, Qt::ISODate);
            const QDateTime max = QDateTime::fromString(spec.maxValue, Qt::ISODate);
            if (!inTimeTRange(dateTime) || !inTimeTRange(min) || !inTimeTRange(max)) {
                return unsettled;
            }
            if (!validRangeComparison(spec.operation)) {
                return thrown("operation", "useRangeFilter()",
                              "Wrong compare operation enum or unknown.");
            }
            const bool first = spec.operation == CompareOperationEnum::LESS_EQUAL
                ? min.toSecsSinceEpoch() <= dateTime.toSecsSinceEpoch()
                : min < dateTime;
            if (!first) {
                return pass(false);
            }
            if (!validRangeComparison(spec.second)) {
                return thrown("operation", "useRangeFilter()",
                              "Wrong compare operation enum or unknown.");
            }
            return pass(spec.second == CompareOperationEnum::LESS_EQUAL
                            ? dateTime.toSecsSinceEpoch() <= max.toSecsSinceEpoch()
                            : dateTime < max);
        }
        if (!valid) {
            return thrown("", "useRangeFilter()", QString()); // either complaint may come first
        }
        return thrown("argument", "useRangeFilter()", "Unknown QVariant can't be converted.");
    }
    case FilterTypeEnum::PATTERN_FILTER:
        if (!validPosition(spec.position)) {
            return thrown("argument", "usePatternFilter()",
                          "Wrong pattern filter enum or unknown.");
        }
        return pass(matches(text, spec.value, spec.position));
    case FilterTypeEnum::PATTERN_LIST_FILTER: {
        if (spec.operation != LogicOperationEnum::AND && spec.operation != LogicOperationEnum::OR) {
            return thrown(
                "argument", "usePatternListFilter()",
                "Logic operation not supported: "
                    + LogicOperationEnum::asName(LogicOperationEnum::Enum(spec.operation)));
        }
        if (spec.values.isEmpty()) {
            return pass(spec.operation == LogicOperationEnum::AND);
        }
        if (!validPosition(spec.position)) {
            return thrown("argument", "usePatternListFilter()",
                          "Wrong pattern filter enum or unknown.");
        }
        bool all = true;
        bool any = false;
        for (const QString& pattern : spec.values) {
            const bool hit = matches(text, pattern, spec.position);
            all = all && hit;
            any = any || hit;
        }
        return pass(spec.operation == LogicOperationEnum::AND ? all : any);
    }
    default:
        return pass(spec.values.contains(text));
    }
}

// The model's result of a whole chain: the entities, an exception, or unsettled.
struct ChainVerdict
{
    Verdict::Outcome outcome = Verdict::Pass; // Pass: a result list
    QList<int> result; // indices into the input list
    Verdict exception;
};

ChainVerdict evaluateChain(const QList<Spec>& specs, QList<int> operations,
                           const QList<const Item*>& items)
{
    ChainVerdict chain;
    QList<int> all;
    for (int i = 0; i < items.size(); ++i) {
        all << items.indexOf(items.at(i)); // a repeated entity by its first place
    }
    if (specs.isEmpty()) {
        chain.result = all;
        return chain;
    }
    const int opening
        = operations.size() == specs.size() ? operations.takeFirst() : int(LogicOperationEnum::NOP);
    if (opening != LogicOperationEnum::NOT && opening != LogicOperationEnum::NOP) {
        chain.outcome = Verdict::Throw;
        chain.exception = thrown(
            "operation", "applyFilter()",
            "Filter expression starts with false operation, only NOT and NOP are allowed.");
        return chain;
    }
    QList<QList<QPair<int, bool>>> groups {{{0, false}}};
    for (int i = 1; i <= operations.size(); ++i) {
        switch (operations.at(i - 1)) {
        case LogicOperationEnum::AND:
            groups.last() << qMakePair(i, false);
            break;
        case LogicOperationEnum::OR:
            groups.append({{i, false}});
            break;
        case LogicOperationEnum::AND_NOT:
            groups.last() << qMakePair(i, true);
            break;
        case LogicOperationEnum::OR_NOT:
            groups.append({{i, true}});
            break;
        default:
            chain.outcome = Verdict::Throw;
            chain.exception
                = thrown("operation", "filter()", "Invald logic operation for LogicOperationEnum.");
            return chain;
        }
    }
    QList<const Item*> united;
    bool settled = true;
    for (const auto& group : groups) {
        QList<int> working = all;
        for (const auto& [index, negated] : group) {
            QList<int> kept;
            for (int entity : working) {
                const Verdict verdict = evaluate(specs.at(index), *items.at(entity));
                if (verdict.outcome == Verdict::Throw) {
                    chain.outcome = settled ? Verdict::Throw : Verdict::Unsettled;
                    chain.exception = verdict;
                    return chain;
                }
                if (verdict.outcome == Verdict::Unsettled) {
                    settled = false; // the rest still runs: an exception may come in any case
                    continue;
                }
                if ((verdict.outcome == Verdict::Pass) != negated) {
                    kept << entity;
                }
            }
            working = kept;
        }
        for (int entity : working) {
            if (!united.contains(items.at(entity))) {
                united << items.at(entity);
            }
        }
    }
    if (!settled) {
        chain.outcome = Verdict::Unsettled;
        return chain;
    }
    for (int i = 0; i < items.size(); ++i) {
        if (opening == LogicOperationEnum::NOT && !united.contains(items.at(i))) {
            chain.result << items.indexOf(items.at(i)); // a repeated entity by its first place
        }
    }
    if (opening == LogicOperationEnum::NOP) {
        for (const Item* item : united) {
            chain.result << items.indexOf(item);
        }
    }
    return chain;
}

struct Run
{
    bool threw = false;
    QString exception, method, message;
    QList<int> result;
};

QString describe(const Run& run)
{
    if (run.threw) {
        return QStringLiteral("%1 exception in %2: %3").arg(run.exception, run.method, run.message);
    }
    QStringList indices;
    for (int index : run.result) {
        indices << QString::number(index);
    }
    return '[' + indices.join(',') + ']';
}

ItemData* itemData = nullptr;
FilterProcessor* processor = nullptr;

Run run(const QList<Spec>& specs, const QList<int>& operations, const QList<EntityBase*>& entities)
{
    std::vector<Filter*> filters;
    Run outcome;
    {
        ComplexFilter chain;
        for (int i = 0; i < specs.size(); ++i) {
            filters.push_back(build(specs.at(i)));
        }
        for (int i = 0; i < specs.size(); ++i) {
            chain.addFilter(LogicOperationEnum::Enum(operations.at(i)), filters[size_t(i)]);
        }
        QList<EntityBase*> result {entities.value(0)};
        try {
            processor->applyFilter(entities, chain, result);
        } catch (const BaseException& exception) {
            outcome.threw = true;
            outcome.exception = dynamic_cast<const InvalidOperationException*>(&exception)
                ? "operation"
                : dynamic_cast<const InvalidArgumentException*>(&exception) ? "argument"
                                                                            : "other";
            outcome.method = exception.getMethod();
            outcome.message = exception.getReason();
        }
        for (EntityBase* entity : result) {
            outcome.result << entities.indexOf(entity);
        }
    }
    // The chain deleted the first half of its filters itself.
    for (size_t i = (filters.size() + 1) / 2; i < filters.size(); ++i) {
        delete filters[i];
    }
    return outcome;
}

QString pickText(FuzzedDataProvider& provider, const QStringList& choices)
{
    if (provider.ConsumeBool()) {
        return QString::fromUtf8(QByteArray::fromStdString(provider.ConsumeRandomLengthString(12)));
    }
    return choices.at(provider.ConsumeIntegralInRange<int>(0, choices.size() - 1));
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzz::application();
    static fakes::LoggingManager loggingManager;
    ManagerRegistry::instance()->registerManager(loggingManager);
    itemData = new ItemData;
    processor = new FilterProcessor(itemData);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider provider(data, size);
    static const QStringList names {"",   "apple", "Apple", "apples", "pear",
                                    "10", "0",     "-0",    "ä",      "b"};
    static const QList<double> numbers {0.0, -0.0, 0.5,   -0.5,         10.0, 10.7,    -3.25,
                                        1e6, 1e10, -1e10, 2147483647.5, NAN,  INFINITY};
    static const QList<QDateTime> dates {
        QDateTime(),
        QDateTime(QDate(2026, 1, 5), QTime(0, 0), Qt::UTC),
        QDateTime(QDate(2026, 1, 5), QTime(10, 0, 0, 500), Qt::UTC),
        QDateTime(QDate(2026, 1, 5), QTime(12, 0), Qt::LocalTime),
        QDateTime(QDate(1969, 12, 31), QTime(23, 59, 59), Qt::UTC),
        QDateTime(QDate(1900, 1, 1), QTime(0, 0), Qt::UTC),
        QDateTime(QDate(2200, 1, 1), QTime(0, 0), Qt::UTC)};
    static const QStringList values {"",
                                     "0",
                                     "10",
                                     "10.7",
                                     "-3",
                                     "1e10",
                                     "apple",
                                     "Apple",
                                     "p",
                                     "2026-01-05",
                                     "2026-01-05T00:00:00Z",
                                     "2026-01-05T10:00:00Z",
                                     "2026-01-05T10:00:00.500Z",
                                     "1969-12-31T23:59:59Z",
                                     "1900-01-01T00:00:00Z",
                                     "2300-01-01",
                                     "true",
                                     "false",
                                     "x"};
    static const QStringList fields {"name", "price", "weight", "quantity", "delivered",
                                     "day",  "code",  "flag",   "missing",  "Name"};

    std::vector<Item> items(size_t(provider.ConsumeIntegralInRange<int>(1, 6)));
    for (Item& item : items) {
        item.name = pickText(provider, names);
        item.price = numbers.at(provider.ConsumeIntegralInRange<int>(0, numbers.size() - 1));
        if (provider.ConsumeBool()) {
            item.price = provider.ConsumeIntegralInRange<int>(-400, 400) / 4.0;
        }
        item.weight = float(provider.ConsumeIntegralInRange<int>(-40, 40) / 8.0);
        item.quantity = provider.ConsumeIntegralInRange<int>(-20, 20);
        item.delivered = dates.at(provider.ConsumeIntegralInRange<int>(0, dates.size() - 1));
        item.day = item.delivered.date().addDays(provider.ConsumeIntegralInRange<int>(-1, 1));
        item.code = provider.ConsumeIntegral<int>();
        item.flag = provider.ConsumeBool();
    }
    QList<EntityBase*> entities;
    QList<const Item*> inputItems;
    for (Item& item : items) {
        entities << &item;
        inputItems << &item;
    }
    if (provider.ConsumeBool()) { // the same entity twice in the input
        entities << &items.front();
        inputItems << &items.front();
    }

    QList<Spec> specs;
    const int count = provider.ConsumeIntegralInRange<int>(0, 4);
    for (int i = 0; i < count; ++i) {
        Spec spec;
        spec.kind = provider.ConsumeIntegralInRange<int>(1, 5);
        spec.field = fields.at(provider.ConsumeIntegralInRange<int>(0, fields.size() - 1));
        const bool mostlyValid = provider.ConsumeIntegralInRange<int>(0, 7) != 0;
        spec.operation = mostlyValid ? provider.ConsumeIntegralInRange<int>(1, 6)
                                     : provider.ConsumeIntegralInRange<int>(-1, 8);
        if (spec.kind == FilterTypeEnum::RANGE_FILTER && mostlyValid) {
            spec.operation = provider.ConsumeBool() ? 3 : 4;
        }
        if (spec.kind == FilterTypeEnum::PATTERN_LIST_FILTER && mostlyValid) {
            spec.operation = provider.ConsumeBool() ? 2 : 3;
        }
        spec.second = mostlyValid ? provider.ConsumeIntegralInRange<int>(3, 4)
                                  : provider.ConsumeIntegralInRange<int>(-1, 8);
        spec.position = mostlyValid ? provider.ConsumeIntegralInRange<int>(1, 3)
                                    : provider.ConsumeIntegralInRange<int>(-1, 5);
        spec.value = pickText(provider, values);
        spec.maxValue = pickText(provider, values);
        const int listSize = provider.ConsumeIntegralInRange<int>(0, 3);
        for (int v = 0; v < listSize; ++v) {
            spec.values << pickText(provider, values + names);
        }
        specs << spec;
    }

    // One operation per filter (a chain holds them in pairs); the first one opens the chain.
    QList<int> operations;
    for (int i = 0; i < specs.size(); ++i) {
        const bool mostlyValid = provider.ConsumeIntegralInRange<int>(0, 15) != 0;
        int operation = mostlyValid ? provider.ConsumeIntegralInRange<int>(2, 6)
                                    : provider.ConsumeIntegralInRange<int>(-1, 8);
        if (i == 0 && mostlyValid) {
            operation = provider.ConsumeBool() ? LogicOperationEnum::NOP : LogicOperationEnum::NOT;
        } else if (operation == LogicOperationEnum::NOT && mostlyValid) {
            operation = LogicOperationEnum::AND_NOT;
        }
        operations << operation;
    }

    const Run outcome = run(specs, operations, entities);
    const ChainVerdict verdict = evaluateChain(specs, operations, inputItems);
    const QString context
        = QStringLiteral("%1 filter(s), operations %2, got ").arg(specs.size()).arg(fuzz::show([&] {
              QStringList texts;
              for (int operation : operations) {
                  texts << QString::number(operation);
              }
              return texts;
          }()))
        + describe(outcome);
    if (verdict.outcome == Verdict::Throw) {
        const Verdict& expected = verdict.exception;
        CHECK(outcome.threw
                  && (expected.exception.isEmpty() || outcome.exception == expected.exception)
                  && outcome.method == expected.method
                  && (expected.message.isEmpty() || outcome.message == expected.message),
              context + ", expected " + expected.exception + " exception in " + expected.method
                  + ": " + expected.message);
    } else if (verdict.outcome == Verdict::Pass) {
        Run expected;
        expected.result = verdict.result;
        CHECK(!outcome.threw && outcome.result == verdict.result,
              context + ", expected " + describe(expected));
    }

    // NOT chain against NOP chain, in the form with an opening operation.
    if (!specs.isEmpty()
        && (operations.first() == LogicOperationEnum::NOP
            || operations.first() == LogicOperationEnum::NOT)) {
        QList<int> nop = operations;
        nop[0] = LogicOperationEnum::NOP;
        QList<int> negated = operations;
        negated[0] = LogicOperationEnum::NOT;
        const Run plain = run(specs, nop, entities);
        const Run inverse = run(specs, negated, entities);
        CHECK(plain.threw == inverse.threw,
              "NOP: " + describe(plain) + ", NOT: " + describe(inverse));
        if (!plain.threw) {
            QList<int> complement;
            for (int i = 0; i < entities.size(); ++i) {
                bool in = false;
                for (int index : plain.result) {
                    in = in || entities.at(index) == entities.at(i);
                }
                if (!in) {
                    complement << entities.indexOf(entities.at(i));
                }
            }
            CHECK(inverse.result == complement,
                  "NOT gave " + describe(inverse) + " where NOP gave " + describe(plain));
        }
    }
    return 0;
}
