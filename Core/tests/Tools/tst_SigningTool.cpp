#include "Processes.h"

// The installed-to-be corvane-sign program on real files, and how the tools find the library.
class tst_SigningTool : public QObject
{
    Q_OBJECT

    QTemporaryDir folder;
    // Exit code, standard output and standard error, one after the other.
    QString sign(const QStringList& arguments)
    {
        const Run result = run(QStringLiteral(CORVANE_SIGN_PROGRAM), arguments);
        return result.outcome() + '|' + result.err;
    }

private slots:
    void initTestCase() { QVERIFY(QDir::setCurrent(folder.path())); }
    void signAndVerify()
    {
        // Fingerprint of "hello\nworld\n" named t.txt, computed independently with Python's
        // hashlib (salted: sha1("helloworld" + salt[:30]), salt = sha1(hex("t.txt")) as hex).
        const QString fingerprint = QStringLiteral("9a87e9762bc5cf6fd22bffc80c40d51f40069087");
        writeFile("t.txt", "hello\nworld\n");
        QCOMPARE(sign({"hash", "t.txt"}), "0 " + fingerprint + "\n|");
        QCOMPARE(sign({"verify", "t.txt"}), QString("1 't.txt': signature INVALID.\n|"));
        QCOMPARE(sign({"sign", "t.txt"}),
                 QString("0 Wrote the signature of 't.txt' to 't.txt.sig'.\n|"));
        QCOMPARE(readFile("t.txt.sig"), fingerprint.toLatin1());
        writeFile("t.txt", "hello\r\nworld\r\n"); // line ends do not count
        QCOMPARE(sign({"verify", "t.txt"}), QString("0 't.txt': signature valid.\n|"));
        writeFile("t.txt", "hello\nWorld\n");
        QCOMPARE(sign({"verify", "t.txt"}), QString("1 't.txt': signature INVALID.\n|"));

        writeFile("e.xml", "<config/>\n");
        QCOMPARE(sign({"embed", "e.xml"}), QString("0 Appended the signature to 'e.xml'.\n|"));
        QVERIFY(!QFile::exists("e.xml.sig"));
        QCOMPARE(readFile("e.xml").size(), 10 + 1 + 40);
        QCOMPARE(sign({"verify", "e.xml"}), QString("0 'e.xml': signature valid.\n|"));
        writeFile("e.xml", readFile("e.xml").replace("config", "Config"));
        QCOMPARE(sign({"verify", "e.xml"}), QString("1 'e.xml': signature INVALID.\n|"));

        const QString usage
            = "2 |corvane-sign: expected a command (hash, sign, embed or verify) and a file";
        QVERIFY(sign({"hash"}).startsWith(usage));
        QVERIFY(sign({"check", "t.txt"}).startsWith(usage));
        QVERIFY(sign({"verify", "nope.xml"})
                    .startsWith("3 |corvane-sign: cannot read 'nope.xml': no such file"));
        QVERIFY(sign({"hash", "."}).startsWith("3 |corvane-sign: cannot read '.': "));
    }

    void runPath_data()
    {
        QTest::addColumn<QString>("program");
        QTest::newRow("corvane-sign") << QStringLiteral(CORVANE_SIGN_PROGRAM);
        QTest::newRow("corvane-plugins") << QStringLiteral(CORVANE_PLUGINS_PROGRAM);
    }
    // Run from any folder, a tool loads no library from the current directory: every entry of
    // its run path is a folder relative to the program itself, none is empty.
    void runPath()
    {
        QFETCH(QString, program);
        const QString readelf = QStandardPaths::findExecutable("readelf");
        if (readelf.isEmpty())
            QSKIP("readelf (Debian binutils) is not installed");
        const Run dynamic = run(readelf, {"-d", "-W", program});
        QCOMPARE(dynamic.exitCode, 0);
        const QRegularExpressionMatch path
            = QRegularExpression(R"(\((?:RUNPATH|RPATH)\).*\[(.*)\])").match(dynamic.out);
        QVERIFY2(path.hasMatch(), qPrintable(dynamic.out));
        for (const QString& entry : path.captured(1).split(':'))
            QVERIFY2(entry == "$ORIGIN" || entry.startsWith("$ORIGIN/"),
                     qPrintable(path.captured(0)));
    }
};

QTEST_MAIN(tst_SigningTool)
#include "tst_SigningTool.moc"
