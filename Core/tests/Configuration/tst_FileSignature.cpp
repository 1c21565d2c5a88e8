#include "FakeManagers.h"

#include "Configuration/FileSignature.h"
#include "StartUp/ManagerRegistry.h"

#include "TestFiles.h"

#include <QtTest>

using corvane::base::business::FileSignature;
using corvane::base::business::ManagerRegistry;

class tst_FileSignature : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();

    void fingerprint_data();
    void fingerprint();
    void missingFileLeavesTheHashUnchanged();
    void companionFile_data();
    void companionFile();
    void includedSignature();
    void includedSignatureOfAFileInTheTemporaryFolderKeepsTheFile();
    void lineEndsChangedAfterSigning_data();
    void lineEndsChangedAfterSigning();

private:
    QString path(const QString& name) const { return folder.filePath(name); }

    QTemporaryDir folder;
    fakes::LoggingManager logging;
};

void tst_FileSignature::initTestCase()
{
    QVERIFY(folder.isValid());
    ManagerRegistry::instance()->registerManager(logging);
}

void tst_FileSignature::cleanupTestCase()
{
    ManagerRegistry::instance()->unregisterManager(logging);
}

// The expected fingerprints were computed with Python's hashlib, independently of this code:
//   salt = sha1(name.encode().hex().encode()).hexdigest().encode()
//   blocks of 1024 bytes, each with b"\r\n" and then b"\n" removed; a single block shorter
//   than the salt gets salt[:len(salt) - len(block)] appended; hexdigest of the whole.
void tst_FileSignature::fingerprint_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("fingerprint");

    QTest::newRow("\\n line ends")
        << "config.xml" << QByteArray("<config>\n  <information/>\n</config>\n")
        << "18d123b658b577a2835890149bdfdeca23b8483b";
    QTest::newRow("\\r\\n line ends, same fingerprint")
        << "config.xml" << QByteArray("<config>\r\n  <information/>\r\n</config>\r\n")
        << "18d123b658b577a2835890149bdfdeca23b8483b";
    QTest::newRow("empty file hashes the salt")
        << "empty.txt" << QByteArray() << "5ece43e4d1f42c82c14649f09673a1968098b3ef";
    QTest::newRow("\\r ends a block, its \\n starts the next")
        << "edge.txt" << QByteArray(1023, 'x') + "\r\n" + QByteArray(100, 'y')
        << "09d599a6fdd155e795f242c382c925ea89d393d8";
    QTest::newRow("\\r\\n inside a block")
        << "edge.txt" << QByteArray(1022, 'x') + "\r\n" + QByteArray(101, 'y')
        << "9260db6dd755457c9bfae9e6d43d399ae218aee8";
    QTest::newRow("lone \\r stays")
        << "cr.txt" << QByteArray("a\rb\n") << "417f7d2e575408392c86044a97d65d99aa3ca991";
    QTest::newRow("short content, one name")
        << "a.txt" << QByteArray("abc") << "9a10ad3df5570a44a7c91ca9e076d580f5463b37";
    QTest::newRow("short content, other name")
        << "b.txt" << QByteArray("abc") << "88b735a7af73e5833a0f38a3feda51f697b0b89b";
    QTest::newRow("long content, one name") << "a.txt" << QByteArray("0123456789").repeated(5)
                                            << "9578f951955d37f20b601c26591e260c1e5389bf";
    QTest::newRow("long content, other name") << "b.txt" << QByteArray("0123456789").repeated(5)
                                              << "9578f951955d37f20b601c26591e260c1e5389bf";
}

void tst_FileSignature::fingerprint()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, content);
    QFETCH(QString, fingerprint);
    writeFile(path(name), content);
    FileSignature signature;
    QString hash;
    signature.createHashFromFileContent(path(name), hash);
    QCOMPARE(hash, fingerprint);
}

void tst_FileSignature::missingFileLeavesTheHashUnchanged()
{
    FileSignature signature;
    QString hash = QStringLiteral("unchanged");
    signature.createHashFromFileContent(path(QStringLiteral("missing.xml")), hash);
    QCOMPARE(hash, QStringLiteral("unchanged"));
    QVERIFY(!signature.isValid(path(QStringLiteral("missing.xml")), true));
}

void tst_FileSignature::companionFile_data()
{
    QTest::addColumn<QByteArray>("companion"); // <hash> stands for the file's fingerprint
    QTest::addColumn<bool>("valid");
    QTest::newRow("as written") << QByteArray("<hash>") << true;
    QTest::newRow("with a line break after it") << QByteArray("<hash>\n") << true;
    QTest::newRow("on the last of several lines") << QByteArray("old\n<hash>") << true;
    QTest::newRow("upper case") << QByteArray("<HASH>") << false;
    QTest::newRow("other fingerprint")
        << QByteArray("0000000000000000000000000000000000000000") << false;
}

void tst_FileSignature::companionFile()
{
    QFETCH(QByteArray, companion);
    QFETCH(bool, valid);
    const QString file = path(QStringLiteral("companion.xml"));
    writeFile(file, "<config/>\n");

    FileSignature signature;
    QString hash;
    signature.createHashFromFileContent(file, hash);
    signature.saveHashInAFile(file, hash);
    QCOMPARE(readFile(file + ".sig"), hash.toLatin1());

    writeFile(file + ".sig",
              QByteArray(companion)
                  .replace("<hash>", hash.toLatin1())
                  .replace("<HASH>", hash.toUpper().toLatin1()));
    QCOMPARE(signature.isValid(file, false), valid);
}

void tst_FileSignature::includedSignature()
{
    const QString file = path(QStringLiteral("signed.xml"));
    const QByteArray content = "<config>\r\n  <plugins/>\r\n</config>\r\n";
    writeFile(file, content);
    QFile::remove(file + ".sig");

    FileSignature signature;
    QString hash;
    signature.createHashFromFileContent(file, hash);
    signature.signFile(file);
    QCOMPARE(readFile(file), content + "\n" + hash.toLatin1());

    QVERIFY(signature.checkFileWithIncludedSignature(file));
    QVERIFY(signature.isValid(file, true));
    QVERIFY(!signature.isValid(file, false));

    writeFile(file, readFile(file).replace("plugins", "Plugins"));
    QVERIFY(!signature.isValid(file, true));
}

void tst_FileSignature::includedSignatureOfAFileInTheTemporaryFolderKeepsTheFile()
{
    const QString file = QDir::tempPath()
        + QStringLiteral("/tst_FileSignature-%1.xml").arg(QCoreApplication::applicationPid());
    writeFile(file, "<config/>\n");
    FileSignature signature;
    signature.signFile(file);
    const QByteArray signedContent = readFile(file);

    QVERIFY(signature.checkFileWithIncludedSignature(file));
    QCOMPARE(readFile(file), signedContent);
    QFile::remove(file);
}

// A signed file whose line ends were changed afterwards, the break before an included
// signature too: "n" stands for "\n", "r" for "\r\n", repeated over the file's line breaks.
void tst_FileSignature::lineEndsChangedAfterSigning_data()
{
    QTest::addColumn<QString>("ends");
    QTest::addColumn<bool>("included");
    for (const bool included : {false, true}) {
        const char* way = included ? "included" : ".sig";
        QTest::addRow("LF, %s", way) << "n" << included;
        QTest::addRow("CRLF, %s", way) << "r" << included;
        QTest::addRow("mixed CRLF, LF, ..., %s", way) << "rn" << included;
        QTest::addRow("mixed LF, CRLF, ..., %s", way) << "nr" << included;
    }
}

void tst_FileSignature::lineEndsChangedAfterSigning()
{
    QFETCH(QString, ends);
    QFETCH(bool, included);
    const QString file = path(QStringLiteral("lineends.xml"));
    writeFile(file, "<config>\n  <plugins/>\n</config>\n");
    QFile::remove(file + ".sig");
    FileSignature signature;
    if (included) {
        signature.signFile(file);
    } else {
        QString hash;
        signature.createHashFromFileContent(file, hash);
        signature.saveHashInAFile(file, hash);
    }
    QByteArray changed;
    int breaks = 0;
    for (const char c : readFile(file)) {
        if (c == '\n' && ends.at(breaks++ % ends.size()) == QLatin1Char('r')) {
            changed += '\r';
        }
        changed += c;
    }
    writeFile(file, changed);
    QCOMPARE(signature.isValid(file, included), true);
    if (included) {
        QVERIFY(signature.checkFileWithIncludedSignature(file));
    }
}

QTEST_MAIN(tst_FileSignature)
#include "tst_FileSignature.moc"
