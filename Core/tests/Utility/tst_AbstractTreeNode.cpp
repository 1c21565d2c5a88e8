#include "FakeManagers.h"

#include "Exceptions/Exceptions.h"
#include "StartUp/ManagerRegistry.h"
#include "Utility/AbstractTreeNode.h"
#include "Utility/FloatUtility.h"
#include "Utility/ISerializer.h"
#include "Utility/SerializerFactory.h"

#include <QtTest>

using namespace corvane::base::core::utility;
using namespace corvane::base::core::interfaces;
using namespace corvane::base::exceptions;
using Nodes = QList<AbstractTreeNode*>;

template <int Format>
struct Serializer : ISerializer
{
    static ISerializer* create() { return new Serializer; }
    QString getFormat() const override { return QString::number(Format); }
    QByteArray serialize(const QList<const ISerializable*>&) override { return {}; }
    bool deserialize(const QByteArray&, const QList<ISerializable*>&) override { return false; }
};

struct ErrorLines : fakes::LoggingManager
{
    void logEntry(Loglevel level, const QString& source, const QString& text, bool) override
    {
        lines << (level == ERROR && source == "SerializerFactory" ? text : QString());
    }
    QStringList lines;
};

// The tree node, the serializer factory and the float utility.
class tst_AbstractTreeNode : public QObject
{
    Q_OBJECT

    ErrorLines logging;

private slots:
    void serializers()
    {
        corvane::base::business::ManagerRegistry::instance()->registerManager(logging);
        SerializerFactory* f = SerializerFactory::instance();
        QCOMPARE(SerializerFactory::instance(), f);
        f->registerSerializer("csv", &Serializer<1>::create);
        f->registerSerializer("csv", &Serializer<2>::create);
        QCOMPARE(std::unique_ptr<ISerializer>(f->createSerializer("csv"))->getFormat(), "1");
        f->unregisterSerializer("csv");
        f->unregisterSerializer("csv");
        try {
            f->createSerializer("csv");
            QFAIL("no exception");
        } catch (const InvalidArgumentException& e) {
            QCOMPARE(QString(e.what()),
                     "SerializerFactory::createSerializer Serializer unknown: csv");
        }
        QCOMPARE(logging.lines.filter("csv").join('|'),
                 "registerSerializer: csv ALREADY registered.|unregisterSerializer: csv unknown.|"
                 "createSerializer: csv is unknown.");
        f->registerSerializer("inner", &Serializer<3>::create);
        f->registerSerializer("outer", [] { // only the lookup may hold the lock
            return SerializerFactory::instance()->createSerializer("inner");
        });
        QCOMPARE(std::unique_ptr<ISerializer>(f->createSerializer("outer"))->getFormat(), "3");
    }

    // Adding goes into a direct child, else into the parent; getChildAt() lets count through.
    void addingAndIndexing()
    {
        AbstractTreeNode top;
        AbstractTreeNode child("child", &top, 3);
        AbstractTreeNode grandchild("grandchild", &child, 0);
        int counts[3] = {-1, -1, -1};
        top.getChildrenCount(counts[0]); // construction does not add to the parent
        QVERIFY(!top.addTreeNode(nullptr) && top.addTreeNode(&child));
        QVERIFY(top.addTreeNode(&child, &grandchild) && !top.addTreeNode(&grandchild, &grandchild));
        child.getChildrenCount(counts[1]);
        QVERIFY(child.addTreeNode(nullptr, &grandchild)); // into child's parent: top
        top.getChildrenCount(counts[2]);
        QCOMPARE(QList<int>(counts, counts + 3), QList<int>({0, 1, 2}));
        QCOMPARE(Nodes({top.getChildAt(1), top.getChildAt(2), top.getChildAt(-1)}),
                 Nodes({&grandchild, nullptr, nullptr}));
        try {
            top.getChildAt(3);
            QFAIL("no exception");
        } catch (const ValueOutOfRangeException& e) {
            QCOMPARE(QString(e.what()),
                     "AbstractTreeNode::getChildAt AbstractTreeNode cannot "
                     "return the value from a invalid index.");
            QCOMPARE(QVariantList({e.getLowerBound(), e.getUpperBound()}), QVariantList({0, 2}));
        }
        try {
            top.addTreeNode(&child, nullptr);
            QFAIL("no exception");
        } catch (const InvalidArgumentException& e) {
            QCOMPARE(QString(e.what()), "AbstractTreeNode::addTreeNode The adding node is NULL.");
        }
        QString name;
        AbstractTreeNode::root()->getNodeName(name);
        QCOMPARE(name + (AbstractTreeNode::root() == AbstractTreeNode::root() ? "" : "?"), "ROOT");
    }

    // The last subtree's search result wins (s -> (a -> (x), b) loses x); removal is shallow.
    void searchAndRemoval()
    {
        AbstractTreeNode s;
        AbstractTreeNode t;
        AbstractTreeNode a("a", &s, 0);
        AbstractTreeNode b("b", &s, 1);
        AbstractTreeNode x("x", &a, 0);
        a.addTreeNode(&x);
        s.addTreeNode(&a);
        s.addTreeNode(&b);
        t.addTreeNode(&b);
        t.addTreeNode(&a);
        QCOMPARE(Nodes({s.getNodeForTreeNodeName(&s, "x"), t.getNodeForTreeNodeName(&t, "x"),
                        s.getNodeForTreeNodeName(&s, "a"), x.getNodeForTreeNodeName(nullptr, "x"),
                        s.getNodeForTreeNodeName(&s, ""), s.getNodeForTreeNodeName(nullptr, "a")}),
                 Nodes({nullptr, &x, &a, &x, nullptr, nullptr}));
        bool any[3] = {true, true, false};
        QVERIFY(!s.removeTreeNode(&s, &x)); // taken out of a's list all the same
        a.hasChildren(any[0]);
        QVERIFY(!s.removeTreeNode(nullptr, &a) && b.removeTreeNode(nullptr, &a)); // s has no parent
        s.hasChildren(any[1]);
        t.hasChildren(any[2]);
        QCOMPARE(QList<bool>(any, any + 3), QList<bool>({false, true, true}));
    }

    void rounding_data()
    {
        QTest::addColumn<float>("value");
        QTest::addColumn<int>("decimals");
        QTest::addColumn<float>("floor");
        QTest::addColumn<float>("ceil");
        QTest::addColumn<int>("state");
        QTest::newRow("two places") << 2.349f << 2 << 2.34f << 2.35f << 0;
        QTest::newRow("negative") << -1.25f << 1 << -1.3f << -1.2f << 0;
        QTest::newRow("no places: unchanged") << 2.75f << 0 << 2.75f << 2.75f << 0;
        QTest::newRow("hundreds") << 1234.5f << -2 << 1200.0f << 1300.0f << 0;
        QTest::newRow("largest") << 3.4028235e38f << 1 << 3.4028235e38f << 3.4028235e38f << 0;
        QTest::newRow("lowest") << -3.4028235e38f << 1 << -3.4028235e38f << -3.4028235e38f << 0;
        QTest::newRow("nan") << float(qQNaN()) << 2 << float(qQNaN()) << float(qQNaN()) << 1;
        QTest::newRow("infinity") << float(qInf()) << 2 << float(qInf()) << float(qInf()) << 2;
        QTest::newRow("-infinity") << float(-qInf()) << 2 << float(-qInf()) << float(-qInf()) << 3;
    }
    void rounding()
    {
        QFETCH(float, value);
        QFETCH(int, decimals);
        QTEST(FloatUtility::floorValue(value, decimals), "floor");
        QTEST(FloatUtility::ceilValue(value, decimals), "ceil");
        QTEST(FloatUtility::getFloatState(value), "state");
    }
};

QTEST_MAIN(tst_AbstractTreeNode)
#include "tst_AbstractTreeNode.moc"
