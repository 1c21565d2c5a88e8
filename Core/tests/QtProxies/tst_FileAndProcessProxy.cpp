#include "TestFiles.h"

#include "QtProxies/FileProxyFactory.h"
#include "QtProxies/IFileProxy.h"
#include "QtProxies/IProcessProxy.h"
#include "QtProxies/ProcessProxyFactory.h"

#include <QtTest>

#include <memory>

using namespace corvane::base::core;

class tst_FileAndProcessProxy : public QObject
{
    Q_OBJECT

private slots:
    void readLines_data();
    void readLines();
    void fileOperationsAreForwarded();
    void processSignalsAreRelayed();

private:
    QTemporaryDir folder;
};

void tst_FileAndProcessProxy::readLines_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QStringList>("lines");
    QTest::newRow("empty file") << QByteArray() << QStringList();
    QTest::newRow("last line without line end") << QByteArray("a\nb") << QStringList {"a", "b"};
    QTest::newRow("Windows line ends") << QByteArray("a\r\nb\r\n") << QStringList {"a", "b"};
    QTest::newRow("empty lines kept") << QByteArray("a\n\nb\n") << QStringList {"a", "", "b"};
}

void tst_FileAndProcessProxy::readLines()
{
    QFETCH(QByteArray, content);
    QFETCH(QStringList, lines);
    writeFile(folder.filePath("lines.txt"), content);
    std::unique_ptr<IFileProxy> file(
        FileProxyFactory::createFileProxy(folder.filePath("lines.txt"), nullptr));
    QVERIFY(file->open(QIODevice::ReadOnly | QIODevice::Text));
    QCOMPARE(file->readLines(), lines);
}

void tst_FileAndProcessProxy::fileOperationsAreForwarded()
{
    QObject parent;
    IFileProxy* file = FileProxyFactory::createFileProxy(folder.filePath("a.txt"), &parent);
    QVERIFY(!file->exists());
    QVERIFY(file->open(QIODevice::WriteOnly));
    QCOMPARE(file->write("data"), qint64(4));
    QVERIFY(file->copy(folder.filePath("b.txt")));
    QCOMPARE(readFile(folder.filePath("b.txt")), QByteArray("data"));
    QVERIFY(file->rename(folder.filePath("c.txt")));
    QCOMPARE(file->fileName(), folder.filePath("c.txt"));
    QVERIFY(file->link(folder.filePath("link.txt")));
    IFileProxy* link = FileProxyFactory::createFileProxy(folder.filePath("link.txt"), &parent);
    QCOMPARE(link->symLinkTarget(), folder.filePath("c.txt"));
    QVERIFY(file->remove());
    QVERIFY(!file->exists());
    QCOMPARE(FileProxyFactory::createFileProxy(&parent)->fileName(), QString());
}

void tst_FileAndProcessProxy::processSignalsAreRelayed()
{
    std::unique_ptr<IProcessProxy> process(ProcessProxyFactory::createProcessProxy(nullptr));
    QSignalSpy started(process.get(), &IProcessProxy::started);
    QSignalSpy output(process.get(), &IProcessProxy::readyReadStandardOutput);
    QSignalSpy errors(process.get(), &IProcessProxy::readyReadStandardError);
    QSignalSpy states(process.get(), &IProcessProxy::stateChanged);
    QSignalSpy finished(process.get(), &IProcessProxy::finished);

    process->setWorkingDirectory(folder.path());
    process->start("sh", {"-c", "echo out; echo err >&2; pwd; exit 3"});
    QVERIFY(process->waitForStarted(30000));
    QCOMPARE(started.count(), 1);
    QVERIFY(finished.wait(30000));
    QVERIFY(output.count() >= 1);
    QVERIFY(errors.count() >= 1);
    QCOMPARE(finished.at(0).at(0).toInt(), 3);
    QCOMPARE(finished.at(0).at(1).value<QProcess::ExitStatus>(), QProcess::NormalExit);
    QCOMPARE(states.last().at(0).value<QProcess::ProcessState>(), QProcess::NotRunning);
    QCOMPARE(process->exitCode(), 3);
    QCOMPARE(process->program(), QStringLiteral("sh"));
    QCOMPARE(process->readLine(), QByteArray("out\n"));
    QCOMPARE(process->readAllStandardOutput(), (folder.path() + "\n").toUtf8());
    QCOMPARE(process->readAllStandardError(), QByteArray("err\n"));

    QSignalSpy failed(process.get(), &IProcessProxy::errorOccurred);
    process->start("/nonexistent/program", QStringList());
    QVERIFY(!process->waitForStarted(30000));
    QCOMPARE(failed.count(), 1);
    QCOMPARE(failed.at(0).at(0).value<QProcess::ProcessError>(), QProcess::FailedToStart);
}

QTEST_MAIN(tst_FileAndProcessProxy)
#include "tst_FileAndProcessProxy.moc"
