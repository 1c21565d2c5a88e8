#include "Utility/SystemEnvironment.h"
#include "Utility/XMLHelper.h"

#include "Exceptions/InvalidArgumentException.h"

#include <QDomDocument>
#include <QtTest>

#include <future>
#include <thread>

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
        QTest::newRow("log path") << QStringList {"CT_A=/home/ada;CT_B=ada",
                                                  "${CT_A}/logs/${CT_B}.log", "/home/ada/logs/ada.log"};
        QTest::newRow("no braces") << QStringList {"CT_A=/h", "$CT_A/x", "$CT_A/x"};
        QTest::newRow("no name") << QStringList {"CT_A=/h", "${}", "${}"};
        QTest::newRow("not a word") << QStringList {"CT_A=/h", "${CT_A-x}", "${CT_A-x}"};
        QTest::newRow("not ASCII") << QStringList {"CT_A=/h", "${CT_\u00c4}", "${CT_\u00c4}"};
        QTest::newRow("empty value") << QStringList {"CT_A=", "x${CT_A}", "!'CT_A' is not set"};
        QTest::newRow("value with a reference")
            << QStringList {"CT_A=${CT_B}/a;CT_B=b", "<${CT_A}>", "<b/a>"};
        QTest::newRow("value completes a reference")
            << QStringList {"CT_A={CT_B};CT_B=b", "$${CT_A}", "b"};
        QTest::newRow("value begins one") << QStringList {"CT_A=$;CT_B=b", "${CT_A}{CT_B}", "b"};
        QTest::newRow("line break at the end")
            << QStringList {"CT_A=/h", "${CT_A}\n", "/h\n"};
        QTest::newRow("line break between") // "." takes no line break: nothing matches
            << QStringList {"CT_A=/h", "${CT_A}\n${CT_A}", "${CT_A}\n${CT_A}"};
        QTest::newRow("value with a line break") // the reference before it stays
            << QStringList {"CT_A=/h;CT_B=1\n2", "${CT_A}${CT_B}", "${CT_A}1\n2"};
        // Each variable twice the one before: 2^30 characters, refused once the values put in
        // add up to more than 1 Mi characters.
        QString doubling;
        for (int level = 1; level <= 30; ++level)
            doubling += QString(";CT_D%1=${CT_D%2}${CT_D%2}").arg(level).arg(level - 1);
        QTest::newRow("doubling bomb")
            << QStringList {"CT_D0=x" + doubling, "a${CT_D30}",
                            "!'CT_D30' expands to more than 1048576 characters"};
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
        // Each row within seconds; one that takes longer is left running.
        auto expansion = std::make_shared<std::promise<QString>>();
        std::thread([expansion, text = row[1]] {
            try {
                expansion->set_value(SystemEnvironment::expandEnvironmentVariables(text));
            } catch (const corvane::base::exceptions::InvalidArgumentException& e) {
                expansion->set_value(
                    "!" + QString(e.what()).remove("Core/src/Utility/SystemEnvironment.cpp::"));
            }
        }).detach();
        std::future<QString> result = expansion->get_future();
        QVERIFY(result.wait_for(std::chrono::seconds(10)) == std::future_status::ready);
        const QString expanded = result.get();
        if (row[2].startsWith('!'))
            QCOMPARE(expanded, "!expandEnvironmentVariables Environment variable " + row[2].mid(1));
        else
            QCOMPARE(expanded, row[2]);
    }
};

QTEST_MAIN(tst_XMLHelper)
#include "tst_XMLHelper.moc"
