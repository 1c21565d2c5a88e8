#include "Utility/AbstractEntityBaseData.h"

#include <QtTest>

using namespace corvane::base::core::entity;

namespace {

class Thing : public EntityBase
{
public:
    void getCount(int& out) const { out = 7; }
    void getText(QString& out) const { out = QStringLiteral("seven"); }
    void getSerial(long& out) const { out = 1L << 40; }
    void getWhen(QDateTime& out) const
    {
        out = QDateTime(QDate(2026, 11, 21), QTime(9, 0), Qt::UTC);
    }
    void getRatio(float& out) const { out = 0.5f; }
    void getOn(bool& out) const { out = true; }
};

class ThingData : public AbstractEntityBaseData
{
public:
    ThingData() { registerFields(); }
    void registerFields() override
    {
        setIntFunction("both", static_cast<IntGetter>(&Thing::getCount));
        setStringFunction("both", static_cast<StringGetter>(&Thing::getText));
        setLongFunction("serial", static_cast<LongGetter>(&Thing::getSerial));
        setDateTimeFunction("when", static_cast<DateTimeGetter>(&Thing::getWhen));
        setFloatFunction("ratio", static_cast<FloatGetter>(&Thing::getRatio));
        setBoolFunction("on", static_cast<BoolGetter>(&Thing::getOn));
        setIntFunction("count", static_cast<IntGetter>(&Thing::getCount));
    }
};

} // namespace

class tst_EntityData : public QObject
{
    Q_OBJECT

private slots:
    void readsFromTheFirstTableHoldingTheName();
    void longFieldsAreInvisibleToTheQueries();
    void lookupOfAnUnknownNameAddsIt();
};

void tst_EntityData::readsFromTheFirstTableHoldingTheName()
{
    ThingData data;
    const Thing thing;
    QCOMPARE(data.get("both", thing), QVariant(QStringLiteral("seven")));
    QCOMPARE(data.get("count", thing), QVariant(7));
    QCOMPARE(data.get("ratio", thing), QVariant(0.5f));
    QCOMPARE(data.get("on", thing), QVariant(true));
    QCOMPARE(data.get("when", thing).toDateTime(),
             QDateTime(QDate(2026, 11, 21), QTime(9, 0), Qt::UTC));
    QVERIFY(!data.get("Count", thing).isValid()); // names are case-sensitive
    QCOMPARE(data.keys(), QStringList({"both", "when", "both", "count", "ratio", "on"}));
    QVERIFY(data.isNumber("both") && data.isString("both") && data.isDate("when")
            && data.isBool("on"));
}

void tst_EntityData::longFieldsAreInvisibleToTheQueries()
{
    ThingData data;
    const Thing thing;
    QCOMPARE(data.get("serial", thing), QVariant(qlonglong(1) << 40));
    QVERIFY(!data.contains("serial"));
    QVERIFY(!data.isNumber("serial"));
    QVERIFY(!data.keys().contains("serial"));
    data.clear();
    QVERIFY(data.keys().isEmpty());
    QVERIFY(!data.get("count", thing).isValid());
    QCOMPARE(data.get("serial", thing), QVariant(qlonglong(1) << 40)); // survives clear()
}

void tst_EntityData::lookupOfAnUnknownNameAddsIt()
{
    ThingData data;
    const Thing thing;
    AbstractEntityBaseData::DateGetter getter = nullptr;
    data.getDateFunction("born", getter);
    QVERIFY(getter == nullptr);
    QVERIFY(data.isDate("born"));
    QVERIFY(data.contains("born"));
    QCOMPARE(data.get("born", thing), QVariant(QDate())); // null getter: the default, no call
    AbstractEntityBaseData::IntGetter count = nullptr;
    data.getIntFunction("count", count);
    QVERIFY(count != nullptr);
}

QTEST_MAIN(tst_EntityData)
#include "tst_EntityData.moc"
