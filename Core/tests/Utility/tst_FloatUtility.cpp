#include "Utility/FloatUtility.h"

#include <QtTest>

#include <limits>

using corvane::base::core::utility::FloatUtility;

class tst_FloatUtility : public QObject
{
    Q_OBJECT

private slots:
    void rounding_data();
    void rounding();
    void nonFiniteValues();
};

void tst_FloatUtility::rounding_data()
{
    QTest::addColumn<float>("value");
    QTest::addColumn<int>("decimals");
    QTest::addColumn<float>("floor");
    QTest::addColumn<float>("ceil");
    QTest::newRow("two places") << 2.349f << 2 << 2.34f << 2.35f;
    QTest::newRow("up from just above") << 2.341f << 2 << 2.34f << 2.35f;
    QTest::newRow("negative") << -1.25f << 1 << -1.3f << -1.2f;
    QTest::newRow("no places: unchanged") << 2.75f << 0 << 2.75f << 2.75f;
    QTest::newRow("hundreds") << 1234.5f << -2 << 1200.0f << 1300.0f;
}

void tst_FloatUtility::rounding()
{
    QFETCH(float, value);
    QFETCH(int, decimals);
    QFETCH(float, floor);
    QFETCH(float, ceil);
    QCOMPARE(FloatUtility::floorValue(value, decimals), floor);
    QCOMPARE(FloatUtility::ceilValue(value, decimals), ceil);
}

void tst_FloatUtility::nonFiniteValues()
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    QCOMPARE(FloatUtility::getFloatState(nan), 1);
    QCOMPARE(FloatUtility::getFloatState(infinity), 2);
    QCOMPARE(FloatUtility::getFloatState(-infinity), 3);
    QCOMPARE(FloatUtility::getFloatState(std::numeric_limits<float>::max()), 0);
    QVERIFY(std::isnan(FloatUtility::floorValue(nan, 2)));
    QCOMPARE(FloatUtility::ceilValue(infinity, 2), infinity);
    QCOMPARE(FloatUtility::floorValue(-infinity, 2), -infinity);
}

QTEST_MAIN(tst_FloatUtility)
#include "tst_FloatUtility.moc"
