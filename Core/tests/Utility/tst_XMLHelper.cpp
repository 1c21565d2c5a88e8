#include "Utility/SystemEnvironment.h"
#include "Utility/XMLHelper.h"

#include "Exceptions/InvalidArgumentException.h"

#include <QDomDocument>
#include <QtTest>

using namespace corvane::base::core::utility;

// The XML readers and the expansion of environment variables.
class tst_XMLHelper : public QObject
{
    Q_OBJECT

private slots:
    // What the int, bool and string reader make of the element "v"; "-" where they refuse it
    // and leave the output as it was.
    void read_data()
    {
        QTest::addColumn<QString>("children");
        QTest::addColumn<QStringList>("read");
        QTest::newRow("first of two") << "<v>-12</v><v>1</v>" << QStringList {"-12", "-", "-12"};
        QTest::newRow("trailing letters") << "<v>12abc</v>" << QStringList {"-", "-", "12abc"};
        QTest::newRow("TRUE") << "<v>TRUE</v>" << QStringList {"-", "true", "TRUE"};
        QTest::newRow("False") << "<v>False</v>" << QStringList {"-", "false", "False"};
        QTest::newRow("leading blank") << "<v> true</v>" << QStringList {"-", "-", " true"};
        QTest::newRow("empty") << "<v/>" << QStringList {"-", "-", ""};
    }
    void read()
    {
        QFETCH(QString, children);
        QDomDocument document;
        document.setContent("<c>" + children + "</c>");
        const QDomElement parent = document.documentElement();
        int integer = 99;
        bool booleans[] = {false, true}; // so that any write shows
        QString text = "-";
        const bool readInt = XMLHelper::readIntFromXML(parent, "v", &integer);
        const bool readBool = XMLHelper::readBoolFromXML(parent, "v", &booleans[0])
            & XMLHelper::readBoolFromXML(parent, "v", &booleans[1]);
        const bool readString = XMLHelper::readStringFromXML(parent, "v", &text);
        QCOMPARE(QList<bool>({readInt, readBool, readString}),
                 QList<bool>({integer != 99, booleans[0] == booleans[1], text != "-"}));
        QTEST(QStringList({readInt ? QString::number(integer) : "-",
                           readBool ? (booleans[0] ? "true" : "false") : "-", text}),
              "read");
        QVERIFY(!XMLHelper::readIntFromXML(parent, "v", nullptr) // null outputs are refused
                && !XMLHelper::readBoolFromXML(parent, "v", nullptr)
                && !XMLHelper::readStringFromXML(parent, "v", nullptr));
    }

    // Environment (NAME=value;...), text, and its expansion or "!" and the reason of the throw.
    void expand_data()
    {
        const QString many = QString("${CT_A}").repeated(3000);
        QTest::addColumn<QStringList>("row");
        QTest::newRow("two") << QStringList {"CT_A=/h;CT_B=ada", "${CT_A}/${CT_B}.log",
                                             "/h/ada.log"};
        QTest::newRow("5000") << QStringList {"CT_A=/h", QString("${CT_A},").repeated(5000),
                                              QString("/h,").repeated(5000)};
        QTest::newRow("last tried first")
            << QStringList {"", "${CT_A}/${CT_B}", "!'CT_B' is not set"};
        QTest::newRow("self") << QStringList {"CT_C=x${CT_C}", "${CT_C}",
                                              "!'CT_C' refers to itself"};
        QTest::newRow("each other")
            << QStringList {"CT_C=${CT_D};CT_D=${CT_C}", "${CT_C}", "!'CT_C' refers to itself"};
        QTest::newRow("cycle behind 3000")
            << QStringList {"CT_A=/h;CT_C=${CT_D};CT_D=${CT_B};CT_B=x${CT_C}", "${CT_C}" + many,
                            "!'CT_C' refers to itself"};
        QTest::newRow("unset behind 3000")
            << QStringList {"CT_A=/h", "${CT_B}" + many, "!'CT_B' is not set"};
    }
    void expand()
    {
        QFETCH(QStringList, row);
        for (const char* name : {"CT_A", "CT_B", "CT_C", "CT_D"}) {
            qunsetenv(name);
        }
        for (const QString& pair : row[0].split(';', Qt::SkipEmptyParts)) {
            qputenv(pair.section('=', 0, 0).toUtf8().constData(), pair.section('=', 1).toUtf8());
        }
        try {
            QCOMPARE(SystemEnvironment::expandEnvironmentVariables(row[1]), row[2]);
        } catch (const corvane::base::exceptions::InvalidArgumentException& e) {
            QCOMPARE(QString(e.what()).remove("Core/src/Utility/SystemEnvironment.cpp::"),
                     "expandEnvironmentVariables Environment variable " + row[2].mid(1));
        }
    }
};

QTEST_MAIN(tst_XMLHelper)
#include "tst_XMLHelper.moc"
