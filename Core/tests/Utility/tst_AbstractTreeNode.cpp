#include "Exceptions/Exceptions.h"
#include "Utility/AbstractTreeNode.h"

#include <QtTest>

using corvane::base::core::utility::AbstractTreeNode;
using namespace corvane::base::exceptions;

class tst_AbstractTreeNode : public QObject
{
    Q_OBJECT

private slots:
    void rootIsOneNode();
    void addingNodes();
    void childIndexBound_data();
    void childIndexBound();
    void searchAnswersTheLastSubtree_data();
    void searchAnswersTheLastSubtree();
    void removalReportsOnlyDirectChildren();
};

void tst_AbstractTreeNode::rootIsOneNode()
{
    QCOMPARE(AbstractTreeNode::root(), AbstractTreeNode::root());
    QString name;
    AbstractTreeNode::root()->getNodeName(name);
    QCOMPARE(name, QStringLiteral("ROOT"));
}

void tst_AbstractTreeNode::addingNodes()
{
    AbstractTreeNode top;
    AbstractTreeNode child(QStringLiteral("child"), &top, 3);
    AbstractTreeNode grandchild(QStringLiteral("grandchild"), &child, 0);
    int count = -1;
    top.getChildrenCount(count);
    QCOMPARE(count, 0); // construction does not add to the parent
    QVERIFY(!top.addTreeNode(nullptr));
    QVERIFY(top.addTreeNode(&child));
    QVERIFY_EXCEPTION_THROWN(top.addTreeNode(&child, nullptr), InvalidArgumentException);

    // Into a child of this node, else into this node's parent.
    QVERIFY(top.addTreeNode(&child, &grandchild));
    child.getChildrenCount(count);
    QCOMPARE(count, 1);
    QVERIFY(!top.addTreeNode(&grandchild, &grandchild)); // top has no parent
    QVERIFY(child.addTreeNode(nullptr, &grandchild)); // into child's parent: top
    top.getChildrenCount(count);
    QCOMPARE(count, 2);
    int row = -1;
    child.getNodeRow(row);
    QCOMPARE(row, 3);
    QCOMPARE(grandchild.getParentTreeNode(), &child);
}

void tst_AbstractTreeNode::childIndexBound_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<bool>("throws");
    QTest::newRow("last") << 1 << false;
    QTest::newRow("the count itself") << 2 << false;
    QTest::newRow("negative") << -1 << false;
    QTest::newRow("count + 1") << 3 << true;
}

void tst_AbstractTreeNode::childIndexBound()
{
    QFETCH(int, index);
    QFETCH(bool, throws);
    AbstractTreeNode top;
    AbstractTreeNode a(QStringLiteral("a"), &top, 0);
    AbstractTreeNode b(QStringLiteral("b"), &top, 1);
    top.addTreeNode(&a);
    top.addTreeNode(&b);
    try {
        AbstractTreeNode* child = top.getChildAt(index);
        QVERIFY(!throws);
        QCOMPARE(child, index == 1 ? &b : nullptr);
    } catch (const ValueOutOfRangeException& e) {
        QVERIFY(throws);
        QCOMPARE(QByteArray(e.what()),
                 QByteArray("AbstractTreeNode::getChildAt AbstractTreeNode "
                            "cannot return the value from a invalid index."));
        QCOMPARE(e.getLowerBound(), QVariant(0));
        QCOMPARE(e.getUpperBound(), QVariant(2));
    }
}

void tst_AbstractTreeNode::searchAnswersTheLastSubtree_data()
{
    QTest::addColumn<bool>("holderFirst");
    QTest::addColumn<bool>("found");
    QTest::newRow("s -> (a -> (x), b): b's empty search wins") << true << false;
    QTest::newRow("s -> (b, a -> (x))") << false << true;
}

void tst_AbstractTreeNode::searchAnswersTheLastSubtree()
{
    QFETCH(bool, holderFirst);
    QFETCH(bool, found);
    AbstractTreeNode s;
    AbstractTreeNode a(QStringLiteral("a"), &s, 0);
    AbstractTreeNode b(QStringLiteral("b"), &s, 1);
    AbstractTreeNode x(QStringLiteral("x"), &a, 0);
    a.addTreeNode(&x);
    s.addTreeNode(holderFirst ? &a : &b);
    s.addTreeNode(holderFirst ? &b : &a);
    QCOMPARE(s.getNodeForTreeNodeName(&s, QStringLiteral("x")), found ? &x : nullptr);
    QCOMPARE(s.getNodeForTreeNodeName(&s, QStringLiteral("a")), &a);
    QCOMPARE(s.getNodeForTreeNodeName(&s, QString()), nullptr);
    QCOMPARE(s.getNodeForTreeNodeName(nullptr, QStringLiteral("a")), nullptr); // s has no parent
}

void tst_AbstractTreeNode::removalReportsOnlyDirectChildren()
{
    AbstractTreeNode s;
    AbstractTreeNode a(QStringLiteral("a"), &s, 0);
    AbstractTreeNode x(QStringLiteral("x"), &a, 0);
    s.addTreeNode(&a);
    a.addTreeNode(&x);
    QVERIFY(!s.removeTreeNode(&s, &x)); // removed from a's list, still false
    bool any = true;
    a.hasChildren(any);
    QVERIFY(!any);
    QVERIFY(s.removeTreeNode(&s, &a));
    QVERIFY(!s.removeTreeNode(nullptr, &a));
}

QTEST_MAIN(tst_AbstractTreeNode)
#include "tst_AbstractTreeNode.moc"
