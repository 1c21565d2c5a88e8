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

#include <QRandomGenerator>
#include <QtTest>

#include <cmath>
#include <memory>

using namespace corvane::base::core::utility;
using namespace corvane::base::core::entity;
using namespace corvane::base::exceptions;
using corvane::base::business::ManagerRegistry;

namespace {

class Record : public EntityBase
{
public:
    Record(QString name, double price, int quantity, QDateTime delivered, long code = 0)
        : name(std::move(name)),
          price(price),
          quantity(quantity),
          delivered(std::move(delivered)),
          code(code)
    {
    }
    void getName(QString& out) const { out = name; }
    void getPrice(double& out) const { out = price; }
    void getQuantity(int& out) const { out = quantity; }
    void getDelivered(QDateTime& out) const { out = delivered; }
    void getCode(long& out) const { out = code; }
    void getLabel(QString& out) const { out = QStringLiteral("n/a"); }

    QString name;
    double price;
    int quantity;
    QDateTime delivered;
    long code;
};

// "label" stands in the string and the int table: read as text, but counted as a number.
class RecordData : public AbstractEntityBaseData
{
public:
    RecordData() { registerFields(); }
    void registerFields() override
    {
        setStringFunction("name", static_cast<StringGetter>(&Record::getName));
        setDoubleFunction("price", static_cast<DoubleGetter>(&Record::getPrice));
        setIntFunction("quantity", static_cast<IntGetter>(&Record::getQuantity));
        setDateTimeFunction("delivered", static_cast<DateTimeGetter>(&Record::getDelivered));
        setLongFunction("code", static_cast<LongGetter>(&Record::getCode));
        setStringFunction("label", static_cast<StringGetter>(&Record::getLabel));
        setIntFunction("label", static_cast<IntGetter>(&Record::getQuantity));
    }
};

QDateTime at(int day, int seconds = 0)
{
    return QDateTime(QDate(2026, 1, day), QTime(0, 0).addSecs(seconds), Qt::UTC);
}

ConditionFilter* condition(const QString& field, CompareOperationEnum::Enum operation,
                           const QString& value)
{
    auto* filter = new ConditionFilter;
    filter->setFieldName(field);
    filter->setCompareOperation(operation);
    filter->setFieldValue(value);
    return filter;
}

RangeFilter* range(const QString& field, CompareOperationEnum::Enum first, const QString& min,
                   CompareOperationEnum::Enum second, const QString& max)
{
    auto* filter = new RangeFilter;
    filter->setFieldName(field);
    filter->setFirstComparison(first);
    filter->setMinValue(min);
    filter->setSecondComparison(second);
    filter->setMaxValue(max);
    return filter;
}

PatternFilter* pattern(const QString& field, PatternPositionEnum::Enum position,
                       const QString& text)
{
    auto* filter = new PatternFilter;
    filter->setFieldName(field);
    filter->setPatternPositionEnum(position);
    filter->setPattern(text);
    return filter;
}

// Owns the filters and the chains of a test. A chain deletes only the first half of its filters
// itself (specified behaviour); the destructor deletes the chains, then the filters they left.
class Filters
{
public:
    ~Filters()
    {
        for (ComplexFilter* complex : chains) {
            QList<Filter*> inChain;
            complex->getFilter(inChain);
            for (int i = 0; i < (inChain.size() + 1) / 2; ++i) {
                kept.remove(inChain.at(i));
            }
            delete complex;
        }
        qDeleteAll(kept);
    }
    template <class F>
    F* keep(F* filter)
    {
        kept.insert(filter);
        return filter;
    }
    ComplexFilter& chain(const QList<QPair<LogicOperationValues::Enum, Filter*>>& steps)
    {
        chains << new ComplexFilter;
        for (const auto& step : steps) {
            chains.last()->addFilter(step.first, step.second);
        }
        return *chains.last();
    }

private:
    QSet<Filter*> kept;
    QList<ComplexFilter*> chains;
};

// Whole seconds as QDateTime::toTime_t() counts them: unsigned 32 bits, with uint(-1) for an
// invalid date-time and for one outside 1970-01-01T00:00:00 .. 2106-02-07T06:28:14 UTC.
uint wholeSeconds(const QDateTime& t)
{
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED
    return t.toTime_t();
    QT_WARNING_POP
}

// A date range: "<=" compares whole seconds, "<" QDateTime's own order.
bool dateInRange(const QDateTime& t, bool firstInclusive, const QString& min, bool secondInclusive,
                 const QString& max)
{
    const QDateTime lo = QDateTime::fromString(min, Qt::ISODate);
    const QDateTime hi = QDateTime::fromString(max, Qt::ISODate);
    return (firstInclusive ? wholeSeconds(lo) <= wholeSeconds(t) : lo < t)
        && (secondInclusive ? wholeSeconds(t) <= wholeSeconds(hi) : t < hi);
}

// --- the reference: the rules, written out for one entity and one filter at a time ----------

struct Reference
{
    static bool known(const QString& field)
    {
        return QStringList {"name", "price", "quantity", "delivered", "label"}.contains(field);
    }

    static QVariant value(const Record& r, const QString& field)
    {
        if (field == "name")
            return r.name;
        if (field == "label")
            return QStringLiteral("n/a");
        if (field == "price")
            return r.price;
        if (field == "quantity")
            return r.quantity;
        return r.delivered;
    }

    static bool passes(const Filter* filter, const Record& r)
    {
        if (auto* c = dynamic_cast<const ConditionFilter*>(filter)) {
            QString field, text;
            CompareOperationEnum op;
            c->getFieldName(field);
            c->getFieldValue(text);
            c->getCompareOperation(op);
            if (!known(field))
                return true;
            const QVariant v = value(r, field);
            long long d;
            if (field == "price" || field == "quantity")
                d = (long long)(v.toDouble() - text.toDouble());
            else if (field == "delivered")
                d = QDateTime::fromString(text, Qt::ISODate).secsTo(v.toDateTime());
            else
                d = QString::localeAwareCompare(v.toString(), text);
            switch (CompareOperationEnum::Enum(op)) {
            case CompareOperationEnum::EQUAL:
                return d == 0;
            case CompareOperationEnum::NOT_EQUAL:
                return d != 0;
            case CompareOperationEnum::LESS:
                return d < 0;
            case CompareOperationEnum::LESS_EQUAL:
                return d <= 0;
            case CompareOperationEnum::GREATER:
                return d > 0;
            default:
                return d >= 0;
            }
        }
        if (auto* g = dynamic_cast<const RangeFilter*>(filter)) {
            QString field, min, max;
            CompareOperationEnum first, second;
            g->getFieldName(field);
            g->getMinValue(min);
            g->getMaxValue(max);
            g->getFirstComparison(first);
            g->getSecondComparison(second);
            if (!known(field))
                return true;
            const QVariant v = value(r, field);
            const bool firstInclusive
                = CompareOperationEnum::Enum(first) == CompareOperationEnum::LESS_EQUAL;
            const bool secondInclusive
                = CompareOperationEnum::Enum(second) == CompareOperationEnum::LESS_EQUAL;
            if (field == "delivered") {
                return dateInRange(v.toDateTime(), firstInclusive, min, secondInclusive, max);
            }
            const double n = v.toDouble();
            return (firstInclusive ? n >= min.toDouble() : n > min.toDouble())
                && (secondInclusive ? n <= max.toDouble() : n < max.toDouble());
        }
        if (auto* p = dynamic_cast<const PatternFilter*>(filter)) {
            QString field, text;
            PatternPositionEnum position;
            p->getFieldName(field);
            p->getPattern(text);
            p->getPatternPositionEnum(position);
            if (!known(field))
                return true;
            const QString s = value(r, field).toString();
            switch (PatternPositionEnum::Enum(position)) {
            case PatternPositionEnum::STARTSWITH:
                return s.startsWith(text);
            case PatternPositionEnum::ENDSWITH:
                return s.endsWith(text);
            default:
                return s.contains(text);
            }
        }
        auto* e = dynamic_cast<const EqualityListFilter*>(filter);
        QString field;
        QStringList values;
        e->getFieldName(field);
        e->getFieldValues(values);
        return !known(field) || values.contains(value(r, field).toString());
    }

    // Groups in order; within a group, input order; each entity once. NOT: the rest, in order.
    static QList<EntityBase*> apply(const QList<Record*>& records, const QList<Filter*>& filters,
                                    QList<LogicOperationEnum::Enum> operations)
    {
        LogicOperationEnum::Enum opening = LogicOperationEnum::NOP;
        if (operations.size() == filters.size()) {
            opening = operations.takeFirst();
        }
        QList<QList<QPair<Filter*, bool>>> groups {{{filters.first(), false}}};
        for (int i = 1; i <= operations.size(); ++i) {
            const LogicOperationEnum::Enum op = operations.at(i - 1);
            const bool negated
                = op == LogicOperationEnum::AND_NOT || op == LogicOperationEnum::OR_NOT;
            if (op == LogicOperationEnum::OR || op == LogicOperationEnum::OR_NOT) {
                groups.append(QList<QPair<Filter*, bool>>());
            }
            groups.last().append(qMakePair(filters.at(i), negated));
        }
        QList<EntityBase*> chosen;
        for (const auto& group : groups) {
            for (Record* r : records) {
                bool all = true;
                for (const auto& step : group) {
                    all = all && passes(step.first, *r) != step.second;
                }
                if (all && !chosen.contains(r)) {
                    chosen.append(r);
                }
            }
        }
        if (opening != LogicOperationEnum::NOT) {
            return chosen;
        }
        QList<EntityBase*> rest;
        for (Record* r : records) {
            if (!chosen.contains(r))
                rest.append(r);
        }
        return rest;
    }
};

QString namesOf(const QList<EntityBase*>& entities)
{
    QStringList names;
    for (EntityBase* e : entities) {
        names << static_cast<Record*>(e)->name;
    }
    return names.join(',');
}

QString failureOf(const std::function<void()>& call)
{
    try {
        call();
    } catch (const BaseException& e) {
        return QString::fromUtf8(e.what());
    }
    return QStringLiteral("<no exception>");
}

void silence(QtMsgType, const QMessageLogContext&, const QString&) { }

} // namespace

class tst_FilterProcessor : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();

    void chains_data();
    void chains();
    void errors_data();
    void errors();
    void randomChainsAgreeWithTheRules();
    void dateRangeInWholeSeconds_data();
    void dateRangeInWholeSeconds();
    void splittingAppends();
    void earlierGroupsStayInTheResultWhenALaterOneThrows();

private:
    QList<EntityBase*> entities() const;
    fakes::LoggingManager logging;
    RecordData data;
    std::vector<std::unique_ptr<Record>> records;
};

void tst_FilterProcessor::initTestCase()
{
    qInstallMessageHandler(silence);
    ManagerRegistry::instance()->registerManager(logging);
    records.emplace_back(new Record("Anchor", 10.7, 120, at(1)));
    records.emplace_back(new Record("bolt", 9.3, 8, at(2, 1)));
    records.emplace_back(new Record("Brass", 0, 3, at(3)));
    records.emplace_back(new Record("cable", 25, 0, at(4, 7200)));
}

void tst_FilterProcessor::cleanupTestCase()
{
    ManagerRegistry::instance()->unregisterManager(logging);
}

QList<EntityBase*> tst_FilterProcessor::entities() const
{
    QList<EntityBase*> list;
    for (const auto& r : records) {
        list << r.get();
    }
    return list;
}

void tst_FilterProcessor::chains_data()
{
    QTest::addColumn<int>("chain");
    QTest::addColumn<QString>("result");
    QTest::newRow("empty chain") << 0 << "Anchor,bolt,Brass,cable";
    QTest::newRow("10.7 = 10 (difference truncated)") << 1 << "Anchor,bolt";
    QTest::newRow("NOP f0 OR f1 AND f2: f0's hits first") << 2 << "cable,Anchor,Brass";
    QTest::newRow("NOT negates the whole") << 3 << "Anchor,bolt,Brass";
    QTest::newRow("unknown field lets all pass") << 4 << "Anchor,bolt,Brass,cable";
    QTest::newRow("numeric field whose text is no number") << 5 << "Anchor,bolt,Brass,cable";
    QTest::newRow("NOP f0 AND NOT f1") << 6 << "bolt,Brass,cable";
    QTest::newRow("pattern is case-sensitive") << 7 << "Brass";
    QTest::newRow("date range, <= in whole seconds") << 8 << "bolt,Brass";
    QTest::newRow("text condition, locale-aware") << 9 << "bolt,Brass,cable"; // in any locale
}

void tst_FilterProcessor::chains()
{
    QFETCH(int, chain);
    QFETCH(QString, result);
    using L = LogicOperationEnum;
    using C = CompareOperationEnum;
    Filters f;
    const QList<QList<QPair<LogicOperationValues::Enum, Filter*>>> chains {
        {},
        {{L::NOP, f.keep(condition("price", C::EQUAL, "10"))}},
        {{L::NOP, f.keep(condition("quantity", C::EQUAL, "0"))},
         {L::OR, f.keep(pattern("name", PatternPositionEnum::SOMEWHERE, "r"))},
         {L::AND, f.keep(condition("price", C::GREATER_EQUAL, "0"))}},
        {{L::NOT, f.keep(pattern("name", PatternPositionEnum::STARTSWITH, "c"))}},
        {{L::NOP, f.keep(condition("nosuchfield", C::EQUAL, "x"))}},
        {{L::NOP, f.keep(condition("label", C::EQUAL, "n/a"))}},
        {{L::NOP, f.keep(condition("quantity", C::GREATER_EQUAL, "0"))},
         {L::AND_NOT, f.keep(condition("name", C::EQUAL, "Anchor"))}},
        {{L::NOP, f.keep(pattern("name", PatternPositionEnum::SOMEWHERE, "ras"))}},
        {{L::NOP,
          f.keep(range("delivered", C::LESS_EQUAL, "2026-01-02T00:00:01Z", C::LESS,
                       "2026-01-04T00:00:00Z"))}},
        {{L::NOP, f.keep(condition("name", C::GREATER, "B"))}},
    };
    FilterProcessor processor(&data);
    QList<EntityBase*> out {records.front().get()};
    processor.applyFilter(entities(), f.chain(chains.at(chain)), out);
    QCOMPARE(namesOf(out), result);
}

void tst_FilterProcessor::errors_data()
{
    QTest::addColumn<int>("chain");
    QTest::addColumn<QString>("what");
    const QString p = "corvane::base::core::utility::FilterProcessor::";
    QTest::newRow("opening AND") << 0
                                 << p
            + "applyFilter() Filter expression starts with false operation, only NOT and NOP are "
              "allowed.";
    QTest::newRow("NOT later") << 1
                               << p + "filter() Invald logic operation for LogicOperationEnum.";
    QTest::newRow("range with >") << 2
                                  << p
            + "useRangeFilter() Wrong compare operation enum or unknown.";
    QTest::newRow("range on text")
        << 3 << p + "useRangeFilter() Unknown QVariant can't be converted.";
    QTest::newRow("condition UNKNOWN")
        << 4 << p + "useConditionFilter() Wrong compare operation enum or unknown.";
    QTest::newRow("pattern UNKNOWN")
        << 5 << p + "usePatternFilter() Wrong pattern filter enum or unknown.";
    QTest::newRow("pattern list NOT")
        << 6 << p + "usePatternListFilter() Logic operation not supported: NOT";
    QTest::newRow("null filter") << 7 << p + "doFiltering() Wrong filter type or unknown.";
}

void tst_FilterProcessor::errors()
{
    QFETCH(int, chain);
    QFETCH(QString, what);
    using L = LogicOperationEnum;
    using C = CompareOperationEnum;
    Filters f;
    auto* patterns = f.keep(new PatternListFilter);
    patterns->setFieldName("name");
    patterns->setPatternList({"a"});
    patterns->setPatternPositionEnum(PatternPositionEnum::SOMEWHERE);
    patterns->setLogicOperation(L::NOT);
    const QList<QList<QPair<LogicOperationValues::Enum, Filter*>>> chains {
        {{L::AND, f.keep(condition("price", C::EQUAL, "1"))}},
        {{L::NOP, f.keep(condition("price", C::EQUAL, "1"))},
         {L::NOT, f.keep(condition("price", C::EQUAL, "1"))}},
        {{L::NOP, f.keep(range("price", C::GREATER, "1", C::LESS, "2"))}},
        {{L::NOP, f.keep(range("name", C::LESS, "a", C::LESS, "b"))}},
        {{L::NOP, f.keep(condition("price", C::UNKNOWN, "1"))}},
        {{L::NOP, f.keep(pattern("name", PatternPositionEnum::UNKNOWN, "a"))}},
        {{L::NOP, patterns}},
        {{L::NOP, nullptr}},
    };
    const ComplexFilter& complex = f.chain(chains.at(chain));
    FilterProcessor processor(&data);
    QList<EntityBase*> out;
    QCOMPARE(failureOf([&] { processor.applyFilter(entities(), complex, out); }), what);
}

void tst_FilterProcessor::randomChainsAgreeWithTheRules()
{
    QRandomGenerator random(12345);
    using C = CompareOperationEnum;
    const QStringList names {"Anchor", "bolt", "Brass", "cable", "Drill", "anchor", "Bolt"};
    FilterProcessor processor(&data);
    for (int round = 0; round < 400; ++round) {
        std::vector<std::unique_ptr<Record>> owned;
        QList<Record*> list;
        for (int i = random.bounded(12); i >= 0; --i) {
            owned.emplace_back(new Record(names.at(random.bounded(names.size())),
                                          random.bounded(40) / 4.0, random.bounded(20),
                                          at(1 + random.bounded(5), random.bounded(3) * 3600)));
            list << owned.back().get();
            if (random.bounded(6) == 0) {
                list << owned.back().get(); // the same entity twice
            }
        }
        Filters f;
        QList<Filter*> filters;
        QList<LogicOperationEnum::Enum> operations;
        const int count = 1 + random.bounded(4);
        operations << (random.bounded(2) ? LogicOperationEnum::NOT : LogicOperationEnum::NOP);
        for (int i = 0; i < count; ++i) {
            const QString field
                = QStringList {"name", "price", "quantity", "delivered", "other"}.at(
                    random.bounded(5));
            const int kind = random.bounded(4);
            Filter* filter = nullptr;
            if (kind == 0) {
                const QString value = field == "delivered"
                    ? at(1 + random.bounded(5)).toString(Qt::ISODate)
                    : field == "name" ? names.at(random.bounded(names.size()))
                                      : QString::number(random.bounded(40) / 4.0);
                filter = condition(field, C::Enum(1 + random.bounded(6)), value);
            } else if (kind == 1
                       && (field == "price" || field == "quantity" || field == "delivered")) {
                const auto bound = [&](int v) {
                    return field == "delivered" ? at(1 + v % 5, 3600).toString(Qt::ISODate)
                                                : QString::number(v);
                };
                filter = range(
                    field, random.bounded(2) ? C::LESS : C::LESS_EQUAL, bound(random.bounded(10)),
                    random.bounded(2) ? C::LESS : C::LESS_EQUAL, bound(5 + random.bounded(15)));
            } else if (kind == 2) {
                filter = pattern(field, PatternPositionEnum::Enum(1 + random.bounded(3)),
                                 QStringList {"a", "B", "ol", "e", "1"}.at(random.bounded(5)));
            } else {
                filter = new EqualityListFilter(
                    field, {names.at(random.bounded(names.size())), "8", "2.5"});
            }
            filters << f.keep(filter);
            if (i > 0) {
                operations << QList<LogicOperationEnum::Enum> {LogicOperationEnum::AND,
                                                               LogicOperationEnum::OR,
                                                               LogicOperationEnum::AND_NOT,
                                                               LogicOperationEnum::OR_NOT}
                                  .at(random.bounded(4));
            }
        }
        QList<QPair<LogicOperationValues::Enum, Filter*>> steps;
        for (int i = 0; i < filters.size(); ++i) {
            steps << qMakePair(LogicOperationValues::Enum(operations.at(i)), filters.at(i));
        }
        ComplexFilter& complex = f.chain(steps);
        QList<EntityBase*> actual;
        processor.applyFilter(QList<EntityBase*>(list.cbegin(), list.cend()), complex, actual);
        const QList<EntityBase*> expected = Reference::apply(list, filters, operations);
        QVERIFY2(actual == expected,
                 qPrintable(QStringLiteral("round %1: %2 instead of %3")
                                .arg(round)
                                .arg(namesOf(actual), namesOf(expected))));
    }
}

void tst_FilterProcessor::dateRangeInWholeSeconds_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("bound"); // the bound of the "<=" comparison
    QTest::addColumn<bool>("first"); // "<=" as first comparison, else as second
    const struct
    {
        const char* name;
        const char* value;
        const char* bound;
        bool first;
    } rows[] = {
        {"empty bound, first", "2026-01-02T00:00:00Z", "", true},
        {"empty bound, second", "2026-01-02T00:00:00Z", "", false},
        {"unparsable bound, first", "2026-01-02T00:00:00Z", "2026-13-45", true},
        {"unparsable bound, second", "2026-01-02T00:00:00Z", "2026-13-45", false},
        {"value before 1970, first", "1969-12-31T23:59:58Z", "1970-01-01T00:00:00Z", true},
        {"value before 1970, second", "1969-12-31T23:59:58Z", "1970-01-01T00:00:00Z", false},
        {"both before 1970, first", "1960-01-01T00:00:00Z", "1965-01-01T00:00:00Z", true},
        {"both before 1970, second", "1965-01-01T00:00:00Z", "1960-01-01T00:00:00Z", false},
        {"from 2106-02-07T06:28:15, first", "2106-02-07T06:28:15Z", "2200-01-01T00:00:00Z", true},
        {"from 2106-02-07T06:28:15, second", "2200-01-01T00:00:00Z", "2106-02-07T06:28:15Z", false},
        {"equal seconds, other milliseconds, first", "2026-01-02T00:00:00.100Z",
         "2026-01-02T00:00:00.900Z", true},
        {"equal seconds, other milliseconds, second", "2026-01-02T00:00:00.900Z",
         "2026-01-02T00:00:00.100Z", false},
    };
    for (const auto& row : rows) {
        QTest::newRow(row.name) << row.value << row.bound << row.first;
    }
}

// The other comparison is a "<" far away, so that the "<=" alone decides.
void tst_FilterProcessor::dateRangeInWholeSeconds()
{
    QFETCH(QString, value);
    QFETCH(QString, bound);
    QFETCH(bool, first);
    using C = CompareOperationEnum;
    const QString min = first ? bound : QStringLiteral("1000-01-01T00:00:00Z");
    const QString max = first ? QStringLiteral("3000-01-01T00:00:00Z") : bound;
    const Record record("r", 1, 1, QDateTime::fromString(value, Qt::ISODate));
    QVERIFY(record.delivered.isValid());
    Filters f;
    RangeFilter* filter = f.keep(range("delivered", first ? C::LESS_EQUAL : C::LESS, min,
                                       first ? C::LESS : C::LESS_EQUAL, max));
    FilterProcessor processor(&data);
    QCOMPARE(processor.useRangeFilter(*filter, record),
             dateInRange(record.delivered, first, min, !first, max));
}

void tst_FilterProcessor::splittingAppends()
{
    using C = CompareOperationEnum;
    Filters f;
    FilterProcessor processor(&data);
    QList<EntityBase*> matched {records.back().get()};
    QList<EntityBase*> notMatched {records.front().get()};
    processor.doFiltering(entities(), f.keep(condition("quantity", C::GREATER, "5")), matched,
                          notMatched);
    QCOMPARE(namesOf(matched), QStringLiteral("cable,Anchor,bolt"));
    QCOMPARE(namesOf(notMatched), QStringLiteral("Anchor,Brass,cable"));
}

void tst_FilterProcessor::earlierGroupsStayInTheResultWhenALaterOneThrows()
{
    using L = LogicOperationEnum;
    using C = CompareOperationEnum;
    Filters f;
    const ComplexFilter& complex
        = f.chain({{L::NOP, f.keep(condition("quantity", C::GREATER, "5"))},
                   {L::OR, f.keep(range("price", C::GREATER, "1", C::LESS, "2"))}});
    FilterProcessor processor(&data);
    QList<EntityBase*> out {records.back().get()};
    QCOMPARE(failureOf([&] { processor.applyFilter(entities(), complex, out); }),
             QStringLiteral("corvane::base::core::utility::FilterProcessor::useRangeFilter() "
                            "Wrong compare operation enum or unknown."));
    QCOMPARE(namesOf(out), QStringLiteral("Anchor,bolt"));
}

QTEST_MAIN(tst_FilterProcessor)
#include "tst_FilterProcessor.moc"
