#include "Utility/CompareOperationEnum.h"
#include "Utility/DatatypeEnum.h"
#include "Utility/FilterTypeEnum.h"
#include "Utility/LogicOperationEnum.h"
#include "Utility/PatternPositionEnum.h"

#include <QtTest>

using namespace corvane::base::core::utility;

namespace {

// "value=name" for the whole table of a wrapper, read by asName and checked back by asEnum.
template <class E>
QStringList table(int highest)
{
    QStringList entries;
    for (int value = 0; value <= highest; ++value) {
        const QString name = E::asName(typename E::Enum(value));
        const bool roundTrip = E::asEnum(name) == value;
        entries << QStringLiteral("%1=%2%3").arg(value).arg(name,
                                                            roundTrip ? "" : " (no round trip)");
    }
    return entries;
}

} // namespace

class tst_Enumerations : public QObject
{
    Q_OBJECT

private slots:
    void tables();
    void namesAreExact_data();
    void namesAreExact();
    void valuesOutsideTheTable();
    void comparisonWithText();
};

void tst_Enumerations::tables()
{
    QCOMPARE(table<FilterTypeEnum>(5),
             QStringList({"0=UNKNOWN", "1=CONDITION_FILTER", "2=RANGE_FILTER", "3=PATTERN_FILTER",
                          "4=PATTERN_LIST_FILTER", "5=EQUALITY_LIST_FILTER"}));
    QCOMPARE(table<DatatypeEnum>(6),
             QStringList(
                 {"0=UNKNOWN", "1=TEXT", "2=NUMERIC", "3=DATE", "4=TIME", "5=DATETIME", "6=BOOL"}));
    QCOMPARE(table<CompareOperationEnum>(6),
             QStringList({"0=UNKNOWN", "1==", "2=<>", "3=<", "4=<=", "5=>", "6=>="}));
    QCOMPARE(table<PatternPositionEnum>(3),
             QStringList({"0=UNKNOWN", "1=SOMEWHERE", "2=STARTSWITH", "3=ENDSWITH"}));
    QCOMPARE(
        table<LogicOperationEnum>(6),
        QStringList({"0=UNKNOWN", "1=NOP", "2=AND", "3=OR", "4=NOT", "5=AND NOT", "6=OR NOT"}));
}

void tst_Enumerations::namesAreExact_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("value");
    QTest::newRow("<=") << "<=" << 4;
    QTest::newRow("=<") << "=<" << 0;
    QTest::newRow("OR NOT") << "OR NOT" << 6;
    QTest::newRow("or not") << "or not" << 0;
    QTest::newRow("two blanks") << "OR  NOT" << 0;
    QTest::newRow("empty") << "" << 0;
}

void tst_Enumerations::namesAreExact()
{
    QFETCH(QString, name);
    QFETCH(int, value);
    const int found = name.contains('<') || name.contains('=')
        ? int(CompareOperationEnum::asEnum(name))
        : int(LogicOperationEnum::asEnum(name));
    QCOMPARE(found, value);
}

void tst_Enumerations::valuesOutsideTheTable()
{
    QCOMPARE(DatatypeEnum::asName(DatatypeEnum::Enum(9)), QString());
    QCOMPARE(DatatypeEnum::asName(DatatypeEnum::UNKNOWN), QStringLiteral("UNKNOWN"));

    LogicOperationEnum assigned;
    QCOMPARE(assigned = 7, 0); // checked: not in the table
    QCOMPARE(LogicOperationEnum::Enum(assigned), LogicOperationEnum::UNKNOWN);
    QCOMPARE(assigned = 5, 5);

    const LogicOperationEnum constructed(LogicOperationEnum::Enum(7)); // unchecked
    QCOMPARE(int(LogicOperationEnum::Enum(constructed)), 7);
    QCOMPARE(QString(constructed), QString());

    LogicOperationEnum byName;
    QCOMPARE(byName = QStringLiteral("AND NOT"), 5);
    const LogicOperationEnum copy = (byName = LogicOperationEnum::OR);
    QCOMPARE(QString(copy), QStringLiteral("OR"));
}

void tst_Enumerations::comparisonWithText()
{
    const PatternPositionEnum unknown;
    QVERIFY(unknown == QStringLiteral("UNKNOWN"));
    QVERIFY(unknown == QStringLiteral("anywhere"));
    QVERIFY(!(unknown == QStringLiteral("SOMEWHERE")));
    const PatternPositionEnum start(PatternPositionEnum::STARTSWITH);
    QVERIFY(start == QStringLiteral("STARTSWITH"));
    QVERIFY(!(start == QStringLiteral("startswith")));
}

QTEST_MAIN(tst_Enumerations)
#include "tst_Enumerations.moc"
