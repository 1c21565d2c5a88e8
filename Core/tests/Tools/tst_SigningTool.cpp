#include "TestFiles.h"

#include <QtTest>

namespace {

struct Result
{
    int exitCode;
    QString out;
    QString err;
};

} // namespace

// Runs the installed-to-be corvane-sign program on real files.
class tst_SigningTool : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(folder.isValid()); }
    void hashSignAndVerify();
    void embedAndVerify();
    void failures_data();
    void failures();

private:
    Result run(const QStringList& arguments);
    QString path(const QString& name) const { return folder.filePath(name); }

    QTemporaryDir folder;
};

Result tst_SigningTool::run(const QStringList& arguments)
{
    QProcess tool;
    tool.setWorkingDirectory(folder.path());
    tool.start(QStringLiteral(CORVANE_SIGN_PROGRAM), arguments);
    if (!tool.waitForFinished(60000) || tool.exitStatus() != QProcess::NormalExit) {
        return {-1, QString(), QStringLiteral("crashed or hung")};
    }
    return {tool.exitCode(), QString::fromUtf8(tool.readAllStandardOutput()),
            QString::fromUtf8(tool.readAllStandardError())};
}

void tst_SigningTool::hashSignAndVerify()
{
    // Fingerprint of "hello\nworld\n" named t.txt, computed independently with Python's hashlib
    // (salted scheme: sha1("helloworld" + salt[:30]), salt = sha1(hex("t.txt")) as hex).
    const QString fingerprint = QStringLiteral("9a87e9762bc5cf6fd22bffc80c40d51f40069087");
    writeFile(path("t.txt"), "hello\nworld\n");

    Result result = run({"hash", "t.txt"});
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.out, fingerprint + '\n');

    result = run({"verify", "t.txt"});
    QCOMPARE(result.exitCode, 1);
    QCOMPARE(result.out, QStringLiteral("'t.txt': signature INVALID.\n"));

    result = run({"sign", "t.txt"});
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(readFile(path("t.txt.sig")), fingerprint.toLatin1());
    QCOMPARE(result.out, QStringLiteral("Wrote the signature of 't.txt' to 't.txt.sig'.\n"));

    writeFile(path("t.txt"), "hello\r\nworld\r\n");
    result = run({"verify", "t.txt"});
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.out, QStringLiteral("'t.txt': signature valid.\n"));
    QCOMPARE(result.err, QString());

    writeFile(path("t.txt"), "hello\nWorld\n");
    QCOMPARE(run({"verify", "t.txt"}).exitCode, 1);
}

void tst_SigningTool::embedAndVerify()
{
    writeFile(path("e.xml"), "<config/>\n");
    Result result = run({"embed", "e.xml"});
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.out, QStringLiteral("Appended the signature to 'e.xml'.\n"));
    QVERIFY(!QFile::exists(path("e.xml.sig")));
    QCOMPARE(readFile(path("e.xml")).size(), 10 + 1 + 40);

    QCOMPARE(run({"verify", "e.xml"}).exitCode, 0);
    writeFile(path("e.xml"), readFile(path("e.xml")).replace("config", "Config"));
    QCOMPARE(run({"verify", "e.xml"}).exitCode, 1);
}

void tst_SigningTool::failures_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("firstErrorLine");

    QTest::newRow("missing file") << QStringList {"verify", "nope.xml"} << 3
                                  << "corvane-sign: cannot read 'nope.xml': no such file";
    QTest::newRow("folder") << QStringList {"hash", "."} << 3 << "corvane-sign: cannot read '.': ";
    QTest::newRow("no file") << QStringList {"hash"} << 2
                             << "corvane-sign: expected a command (hash, sign, embed or verify) "
                                "and a file";
    QTest::newRow("unknown command") << QStringList {"check", "t.txt"} << 2
                                     << "corvane-sign: expected a command (hash, sign, embed or "
                                        "verify) and a file";
}

void tst_SigningTool::failures()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, exitCode);
    QFETCH(QString, firstErrorLine);
    const Result result = run(arguments);
    QCOMPARE(result.exitCode, exitCode);
    QVERIFY2(result.err.section('\n', 0, 0).startsWith(firstErrorLine), qPrintable(result.err));
    QCOMPARE(result.out, QString());
}

QTEST_MAIN(tst_SigningTool)
#include "tst_SigningTool.moc"
