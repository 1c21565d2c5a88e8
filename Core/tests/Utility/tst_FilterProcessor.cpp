#include "FakeManagers.h"

#include "Exceptions/Exceptions.h"
#include "StartUp/ManagerRegistry.h"
#include "Utility/AbstractEntityBaseData.h"
#include "Utility/ComplexFilter.h"
#include "Utility/ConditionFilter.h"
#include "Utility/DatatypeEnum.h"
#include "Utility/EqualityListFilter.h"
#include "Utility/FilterProcessor.h"
#include "Utility/PatternFilter.h"
#include "Utility/PatternListFilter.h"
#include "Utility/RangeFilter.h"

#include <QtTest>

using namespace corvane::base::core::utility;
using namespace corvane::base::core::entity;
using namespace corvane::base::exceptions;
using C = CompareOperationEnum;
using L = LogicOperationEnum;
using P = PatternPositionEnum;
using Steps = QList<QPair<L::Enum, Filter*>>;

namespace {

struct Record : EntityBase
{
    Record(QString n, double p, int q, QDateTime d) : name(n), price(p), quantity(q), day(d) { }
    void getName(QString& out) const { out = name; }
    void getLabel(QString& out) const { out = QStringLiteral("n/a"); }
    void getPrice(double& out) const { out = price; }
    void getQuantity(int& out) const { out = quantity; }
    void getDelivered(QDateTime& out) const { out = day; }
    void getCode(long& out) const { out = 1L << 40; }
    void getWeight(float& out) const { out = 0.5f; }
    void getPaid(bool& out) const { out = true; }
    QString name;
    double price;
    int quantity;
    QDateTime day;
};

// "label" stands in the int and the string table: read as text, but counted as a number.
struct RecordData : AbstractEntityBaseData
{
    RecordData() { registerFields(); }
    void registerFields() override
    {
        setStringFunction("name", static_cast<StringGetter>(&Record::getName));
        setIntFunction("label", static_cast<IntGetter>(&Record::getQuantity));
        setStringFunction("label", static_cast<StringGetter>(&Record::getLabel));
        setDoubleFunction("price", static_cast<DoubleGetter>(&Record::getPrice));
        setIntFunction("quantity", static_cast<IntGetter>(&Record::getQuantity));
        setDateTimeFunction("delivered", static_cast<DateTimeGetter>(&Record::getDelivered));
        setLongFunction("code", static_cast<LongGetter>(&Record::getCode));
        setFloatFunction("weight", static_cast<FloatGetter>(&Record::getWeight));
        setBoolFunction("paid", static_cast<BoolGetter>(&Record::getPaid));
    }
};

Filter* condition(const QString& field, C::Enum operation, const QString& value)
{
    auto* f = new ConditionFilter;
    return f->setFieldName(field), f->setCompareOperation(operation), f->setFieldValue(value), f;
}

Filter* range(const QString& field, C::Enum first, const QString& min, C::Enum second,
              const QString& max)
{
    auto* f = new RangeFilter;
    return f->setFieldName(field), f->setFirstComparison(first), f->setMinValue(min),
           f->setSecondComparison(second), f->setMaxValue(max), f;
}

Filter* pattern(const QString& field, P::Enum position, const QString& text)
{
    auto* f = new PatternFilter;
    return f->setFieldName(field), f->setPatternPositionEnum(position), f->setPattern(text), f;
}

Filter* patterns(const QString& field, P::Enum position, const QStringList& list, L::Enum join)
{
    auto* f = new PatternListFilter;
    return f->setFieldName(field), f->setPatternPositionEnum(position), f->setPatternList(list),
           f->setLogicOperation(join), f;
}

// A chain deletes only the first ceil(n/2) of its n filters itself; this one deletes the rest.
struct Chain : ComplexFilter
{
    explicit Chain(const Steps& steps)
    {
        for (const auto& step : steps) {
            addFilter(step.first, step.second);
        }
    }
    ~Chain()
    {
        QList<Filter*> all;
        getFilter(all);
        qDeleteAll(all.mid((all.size() + 1) / 2));
    }
};

struct Step
{
    L::Enum operation;
    QString field;
    std::function<bool(const QVariant&)> test;
    bool passes(const Record& r) const // unknown fields pass
    {
        const QVariant x
            = QVariantList {r.name, "n/a", r.price, r.quantity, r.day, 0.5f, true}.value(
                QStringList {"name", "label", "price", "quantity", "delivered", "weight", "paid"}
                    .indexOf(field));
        return (!x.isValid() || test(x)) != (operation == L::AND_NOT || operation == L::OR_NOT);
    }
};

// The reference. Numbers compare by their difference truncated (10.7 = 10), dates by seconds.
bool compared(const QString& field, const QVariant& x, C::Enum operation, const QString& value)
{
    const qint64 d = field == "price" || field == "quantity" || field == "weight"
        ? qint64(x.toDouble() - value.toDouble())
        : field == "delivered" ? QDateTime::fromString(value, Qt::ISODate).secsTo(x.toDateTime())
                               : QString::localeAwareCompare(x.toString(), value);
    const bool results[] = {d == 0, d != 0, (d < 0), d <= 0, (d > 0), d >= 0};
    return results[operation - 1];
}

// QDateTime::toTime_t(), which Qt 6 no longer has; there, what Qt 5.15 computes: whole seconds
// since 1970 (towards zero), 0xFFFFFFFF for an invalid date-time and outside 32 unsigned bits.
uint timeT(const QDateTime& t)
{
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED
    return t.toTime_t();
    QT_WARNING_POP
#else
    if (!t.isValid()) {
        return uint(-1);
    }
    const qint64 seconds = t.toMSecsSinceEpoch() / 1000;
    return seconds < 0 || seconds >= qint64(0xFFFFFFFF) ? uint(-1) : uint(seconds);
#endif
}

// Dates: "<=" in whole seconds as toTime_t() counts them, "<" by QDateTime's own order; a
// number field whose text reads as no number ("label") is never in range.
bool inRange(const QString& field, const QVariant& x, bool in1, const QString& min, bool in2,
             const QString& max)
{
    const QDateTime t = x.toDateTime();
    const QDateTime lo = QDateTime::fromString(min, Qt::ISODate);
    const QDateTime hi = QDateTime::fromString(max, Qt::ISODate);
    if (field == "delivered") {
        return (in1 ? timeT(lo) <= timeT(t) : lo < t) && (in2 ? timeT(t) <= timeT(hi) : t < hi);
    }
    const double n = x.toDouble();
    return field != "label" && (in1 ? n >= min.toDouble() : n > min.toDouble())
        && (in2 ? n <= max.toDouble() : n < max.toDouble());
}

// OR of AND-groups, each entity once in the order found; an opening NOT takes the rest.
QList<EntityBase*> reference(const QList<EntityBase*>& entities, const QList<Step>& steps)
{
    QList<QList<Step>> groups;
    for (const Step& step : steps) {
        if (groups.isEmpty() || step.operation == L::OR || step.operation == L::OR_NOT) {
            groups.append(QList<Step>());
        }
        groups.last() << step;
    }
    QList<EntityBase*> chosen;
    QList<EntityBase*> rest;
    for (const auto& group : groups) {
        for (EntityBase* e : entities) {
            const auto passes = [e](const Step& s) {
                return s.passes(*static_cast<Record*>(e));
            };
            if (!chosen.contains(e) && std::all_of(group.begin(), group.end(), passes)) {
                chosen << e;
            }
        }
    }
    std::copy_if(entities.begin(), entities.end(), std::back_inserter(rest),
                 [&](EntityBase* e) { return !chosen.contains(e); });
    return steps.isEmpty() ? entities : steps.first().operation == L::NOT ? rest : chosen;
}

QString namesOf(const QList<EntityBase*>& entities)
{
    QStringList names;
    for (EntityBase* e : entities) {
        names << static_cast<Record*>(e)->name;
    }
    return names.join(',');
}

template <class E>
QString table(int highest)
{
    QStringList entries;
    for (int value = 0; value <= highest + 1; ++value) {
        const QString name = E::asName(typename E::Enum(value));
        const QString marks
            = QString(E::asEnum(name) == value ? "" : "?") + (E::asEnum(value) == value ? "" : "!");
        entries << QString::number(value) + "=" + name + marks;
    }
    return entries.join(' ');
}

} // namespace

class tst_FilterProcessor : public QObject
{
    Q_OBJECT

    fakes::LoggingManager logging;
    RecordData data;
    const QDateTime day {QDate(2026, 1, 1), QTime(0, 0), Qt::UTC};
    Record records[4] {{"Anchor", 10.7, 120, day},
                       {"bolt", 9.3, 8, day.addSecs(86401)},
                       {"Brass", 0, 3, day.addDays(2)},
                       {"cable", 25, 0, day.addDays(3)}};
    const QList<EntityBase*> entities {&records[0], &records[1], &records[2], &records[3]};

private slots:
    void initTestCase()
    {
        corvane::base::business::ManagerRegistry::instance()->registerManager(logging);
    }
    void randomChainsAgreeWithTheRules();
    void errors();
    void lookupAddsAndClearKeepsTheLongTable()
    {
        RecordData fields;
        AbstractEntityBaseData::DateGetter date = nullptr;
        fields.getDateFunction("born", date);
        QCOMPARE(fields.keys().join(' '),
                 "label name born delivered label quantity weight price paid");
        fields.clear();
        QCOMPARE(fields.keys().join(' ') + fields.get("code", records[0]).toString(),
                 "1099511627776");
    }
    // "value=name" up to one past each table; "?"/"!": asEnum of the name/number gives 0.
    void enumerations()
    {
        LogicOperationEnum assigned;
        QCOMPARE(
            QStringList({table<FilterTypeEnum>(5), table<DatatypeEnum>(6), table<C>(6), table<P>(3),
                         table<L>(6)})
                    .join('\n')
                + QString(" %1%2%3")
                      .arg(assigned = 7)
                      .arg(PatternPositionEnum() == "any")
                      .arg(PatternPositionEnum() == "SOMEWHERE"),
            "0=UNKNOWN 1=CONDITION_FILTER 2=RANGE_FILTER 3=PATTERN_FILTER 4=PATTERN_LIST_FILTER "
            "5=EQUALITY_LIST_FILTER 6=?!\n0=UNKNOWN 1=TEXT 2=NUMERIC 3=DATE 4=TIME 5=DATETIME "
            "6=BOOL 7=?!\n0=UNKNOWN 1== 2=<> 3=< 4=<= 5=> 6=>= 7=?!\n0=UNKNOWN 1=SOMEWHERE "
            "2=STARTSWITH 3=ENDSWITH 4=?!\n0=UNKNOWN 1=NOP 2=AND 3=OR 4=NOT 5=AND NOT 6=OR NOT "
            "7=?! 010");
    }
};

void tst_FilterProcessor::randomChainsAgreeWithTheRules()
{
    QRandomGenerator random(12345);
    const auto pick = [&](const QString& list) {
        return list.split('|').at(random.bounded(list.count('|') + 1));
    };
    const QString names = "Anchor|bolt|Brass|cable|Drill|anchor|Bolt";
    const QString times = "2026-01-02T00:00:00Z|2026-01-02T00:00:00.900Z|1969-12-31T23:59:58Z|"
                          "2026-01-03T01:00:00.100Z|1960-01-01T00:00:00Z|2106-02-07T06:28:15Z|"
                          "2200-01-01T00:00:00Z";
    const QString bounds = times
        + "||2026-13-45|1970-01-01T00:00:00Z|2026-01-02T00:00:00.100Z|"
          "2026-01-03T01:00:00Z|1965-01-01T00:00:00Z";
    FilterProcessor processor(&data);
    for (int round = 0; round < 3000; ++round) {
        std::vector<std::unique_ptr<Record>> owned;
        QList<EntityBase*> list;
        for (int i = random.bounded(12); i > 0; --i) {
            owned.emplace_back(new Record(pick(names), random.bounded(40) / 4.0, random.bounded(20),
                                          QDateTime::fromString(pick(times), Qt::ISODate)));
            list << owned.back().get();
            if (random.bounded(6) == 0) {
                list << owned.back().get(); // the same entity twice
            }
        }
        QList<Step> steps;
        Steps chain;
        for (int i = random.bounded(5); i > 0; --i) {
            const L::Enum operation = steps.isEmpty()
                ? (random.bounded(2) ? L::NOT : L::NOP)
                : L::Enum(QList<int> {L::AND, L::OR, L::AND_NOT, L::OR_NOT}.at(random.bounded(4)));
            const int kind = random.bounded(5); // ranges on numbers and dates only
            const QString field
                = pick(kind == 1 ? "price|quantity|delivered|label|code|weight"
                                 : "name|price|quantity|delivered|label|code|x|weight|paid");
            const auto value = [&] {
                return field == "delivered" ? pick(bounds)
                    : field == "name"       ? pick(names)
                                            : QString::number(random.bounded(50) / 4.0);
            };
            const QString v = value();
            const QString w = value();
            const auto compare = C::Enum(1 + random.bounded(6));
            const auto position = P::Enum(1 + random.bounded(3));
            const bool in1 = random.bounded(2);
            const bool in2 = random.bounded(2);
            const bool all = random.bounded(2);
            QStringList texts;
            for (int n = random.bounded(4); n > 0; --n) {
                texts << pick("a|B|ol|e|1|2.5|8||bolt|Brass");
            }
            Filter* made[]
                = {condition(field, compare, v),
                   range(field, in1 ? C::LESS_EQUAL : C::LESS, v, in2 ? C::LESS_EQUAL : C::LESS, w),
                   pattern(field, position, texts.value(0)),
                   patterns(field, position, texts, all ? L::AND : L::OR),
                   new EqualityListFilter(field, texts)};
            chain << qMakePair(operation, made[kind]);
            std::swap(made[kind], made[4]);
            qDeleteAll(made, made + 4);
            const auto test = [=](const QVariant& x) {
                const auto hit = [&](const QString& p) {
                    return position == P::STARTSWITH ? x.toString().startsWith(p)
                        : position == P::ENDSWITH    ? x.toString().endsWith(p)
                                                     : x.toString().contains(p);
                };
                const bool results[] = {compared(field, x, compare, v),
                                        inRange(field, x, in1, v, in2, w), hit(texts.value(0)),
                                        all ? std::all_of(texts.begin(), texts.end(), hit)
                                            : std::any_of(texts.begin(), texts.end(), hit),
                                        texts.contains(x.toString())};
                return results[kind];
            };
            steps << Step {operation, field, test};
        }
        QList<EntityBase*> actual {entities.first()}; // cleared first
        processor.applyFilter(list, Chain(chain), actual);
        const QList<EntityBase*> expected = reference(list, steps);
        // std::equal, not QList's ==: Qt 6.4's compares two empty lists with memcmp(null, null).
        QVERIFY2(actual.size() == expected.size()
                     && std::equal(actual.begin(), actual.end(), expected.begin()),
                 qPrintable(QStringLiteral("round %1: %2 instead of %3")
                                .arg(round)
                                .arg(namesOf(actual), namesOf(expected))));
    }
}

// Each throw names its method and leaves in the result what the groups before it found.
void tst_FilterProcessor::errors()
{
    const QString o = "InvalidOperation FilterProcessor::";
    const QString a = "InvalidArgument FilterProcessor::";
    const QString compare = "Wrong compare operation enum or unknown.";
    const QString position = "Wrong pattern filter enum or unknown.";
    const QList<QPair<Steps, QString>> cases {
        {{{L::AND, condition("price", C::EQUAL, "1")}},
         o
             + "applyFilter() Filter expression starts with false operation, only NOT and NOP are "
               "allowed."},
        {{{L::NOP, condition("price", C::EQUAL, "1")}, {L::NOT, condition("price", C::EQUAL, "1")}},
         o + "filter() Invald logic operation for LogicOperationEnum."},
        {{{L::NOP, range("price", C::GREATER, "1", C::LESS, "2")}},
         o + "useRangeFilter() " + compare},
        {{{L::NOP, range("name", C::LESS, "a", C::LESS, "b")}},
         a + "useRangeFilter() Unknown QVariant can't be converted."},
        {{{L::NOP, condition("price", C::UNKNOWN, "1")}}, o + "useConditionFilter() " + compare},
        {{{L::NOP, pattern("name", P::UNKNOWN, "a")}}, a + "usePatternFilter() " + position},
        {{{L::NOP, patterns("name", P::SOMEWHERE, {"a"}, L::NOT)}},
         a + "usePatternListFilter() Logic operation not supported: NOT"},
        {{{L::NOP, nullptr}}, a + "doFiltering() Wrong filter type or unknown."},
        {{{L::NOP, condition("quantity", C::GREATER, "5")},
          {L::OR, range("price", C::GREATER, "1", C::LESS, "2")}},
         o + "useRangeFilter() " + compare + " Anchor,bolt"},
    };
    FilterProcessor processor(&data);
    for (const auto& c : cases) {
        const Chain chain(c.first);
        QList<EntityBase*> out {&records[3]};
        QString what = "no exception";
        try {
            processor.applyFilter(entities, chain, out);
        } catch (const InvalidOperationException& e) {
            what = "InvalidOperation " + QString(e.what());
        } catch (const InvalidArgumentException& e) {
            what = "InvalidArgument " + QString(e.what());
        }
        what.remove("corvane::base::core::utility::");
        QCOMPARE((what + " " + namesOf(out)).trimmed(), c.second);
    }
}

QTEST_MAIN(tst_FilterProcessor)
#include "tst_FilterProcessor.moc"
