#include "Utility/XMLHelper.h"

#include <QDomDocument>
#include <QtTest>

using corvane::base::core::utility::XMLHelper;

namespace {

QDomElement parse(QDomDocument& document, const QString& children)
{
    document.setContent(QStringLiteral("<configuration>%1</configuration>").arg(children));
    return document.documentElement();
}

} // namespace

class tst_XMLHelper : public QObject
{
    Q_OBJECT

private slots:
    void readInt_data();
    void readInt();
    void readBool_data();
    void readBool();
    void readString_data();
    void readString();
    void nullOutputIsRejected();
};

void tst_XMLHelper::readInt_data()
{
    QTest::addColumn<QString>("children");
    QTest::addColumn<bool>("accepted");
    QTest::addColumn<int>("value");

    QTest::newRow("number") << "<port>8080</port>" << true << 8080;
    QTest::newRow("negative") << "<port>-12</port>" << true << -12;
    QTest::newRow("plus sign") << "<port>+5</port>" << true << 5;
    QTest::newRow("trailing letters") << "<port>12abc</port>" << false << 99;
    QTest::newRow("hexadecimal") << "<port>0x10</port>" << false << 99;
    QTest::newRow("empty") << "<port/>" << false << 99;
    QTest::newRow("too large") << "<port>4294967296</port>" << false << 99;
    QTest::newRow("missing") << "<other>1</other>" << false << 99;
    QTest::newRow("tag is case-sensitive") << "<Port>1</Port>" << false << 99;
    QTest::newRow("first of two") << "<port>1</port><port>2</port>" << true << 1;
    QTest::newRow("nested text joined") << "<port><a>1</a><b>2</b></port>" << true << 12;
}

void tst_XMLHelper::readInt()
{
    QFETCH(QString, children);
    QFETCH(bool, accepted);
    QFETCH(int, value);
    QDomDocument document;
    int out = 99;
    QCOMPARE(XMLHelper::readIntFromXML(parse(document, children), QStringLiteral("port"), &out),
             accepted);
    QCOMPARE(out, value);
}

void tst_XMLHelper::readBool_data()
{
    QTest::addColumn<QString>("children");
    QTest::addColumn<bool>("accepted");
    QTest::addColumn<int>("value"); // -1: left untouched

    QTest::newRow("true") << "<flag>true</flag>" << true << 1;
    QTest::newRow("TRUE") << "<flag>TRUE</flag>" << true << 1;
    QTest::newRow("False") << "<flag>False</flag>" << true << 0;
    QTest::newRow("leading blank") << "<flag> true</flag>" << false << -1;
    QTest::newRow("1") << "<flag>1</flag>" << false << -1;
    QTest::newRow("yes") << "<flag>yes</flag>" << false << -1;
    QTest::newRow("missing") << "" << false << -1;
}

void tst_XMLHelper::readBool()
{
    QFETCH(QString, children);
    QFETCH(bool, accepted);
    QFETCH(int, value);
    QDomDocument document;
    const QDomElement parent = parse(document, children);
    for (bool initial : {false, true}) {
        bool out = initial;
        QCOMPARE(XMLHelper::readBoolFromXML(parent, QStringLiteral("flag"), &out), accepted);
        QCOMPARE(out, value == -1 ? initial : value == 1);
    }
}

void tst_XMLHelper::readString_data()
{
    QTest::addColumn<QString>("children");
    QTest::addColumn<bool>("accepted");
    QTest::addColumn<QString>("value");

    QTest::newRow("text") << "<name> Größe ✓ </name>" << true << " Größe ✓ ";
    QTest::newRow("empty element") << "<name/>" << true << "";
    QTest::newRow("missing") << "<names>x</names>" << false << "untouched";
}

void tst_XMLHelper::readString()
{
    QFETCH(QString, children);
    QFETCH(bool, accepted);
    QFETCH(QString, value);
    QDomDocument document;
    QString out = QStringLiteral("untouched");
    QCOMPARE(XMLHelper::readStringFromXML(parse(document, children), QStringLiteral("name"), &out),
             accepted);
    QCOMPARE(out, value);
}

void tst_XMLHelper::nullOutputIsRejected()
{
    QDomDocument document;
    const QDomElement parent = parse(document, QStringLiteral("<a>1</a>"));
    QVERIFY(!XMLHelper::readIntFromXML(parent, QStringLiteral("a"), nullptr));
    QVERIFY(!XMLHelper::readBoolFromXML(parent, QStringLiteral("a"), nullptr));
    QVERIFY(!XMLHelper::readStringFromXML(parent, QStringLiteral("a"), nullptr));
    QVERIFY(!XMLHelper::readStringFromXML(QDomElement(), QStringLiteral("a"), nullptr));
}

QTEST_MAIN(tst_XMLHelper)
#include "tst_XMLHelper.moc"
