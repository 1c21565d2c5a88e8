#include "StartUp/ApplicationStartupHandler.h"
#include "StartUp/PCCommandLineParser.h"

#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QTranslator>
#include <QtTest>

using corvane::base::business::ApplicationStartupHandler;
using corvane::base::business::PCCommandLineParser;

class tst_ApplicationStartupHandler : public QObject
{
    Q_OBJECT

private slots:
    void fileArgument_data();
    void fileArgument();
    void translatorFolder_data();
    void translatorFolder();
    void secondInstanceIsTurnedAway_data();
    void secondInstanceIsTurnedAway();
};

void tst_ApplicationStartupHandler::fileArgument_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("file");
    QTest::newRow("-C and its value skipped")
        << QStringList {"app", "-C", "x", "file.txt"} << "file.txt";
    QTest::newRow("option without value") << QStringList {"app", "-v", "file.txt"} << "file.txt";
    QTest::newRow("-C as last") << QStringList {"app", "-C"} << "";
    QTest::newRow("program only") << QStringList {"app"} << "";
    QTest::newRow("-c takes no value") << QStringList {"app", "-c", "file.txt"} << "file.txt";
}

void tst_ApplicationStartupHandler::fileArgument()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, file);
    PCCommandLineParser parser;
    parser.parse(arguments);
    QCOMPARE(parser.getConfigFilePath(), file);
}

void tst_ApplicationStartupHandler::translatorFolder_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<bool>("loaded");
    const QString here = QCoreApplication::applicationDirPath();
    QTest::newRow("application folder") << here << true;
    QTest::newRow("with a trailing slash: still //translations") << here + "/" << true;
    QTest::newRow("no translations there") << QDir::rootPath() << false;
}

void tst_ApplicationStartupHandler::translatorFolder()
{
    QFETCH(QString, folder);
    QFETCH(bool, loaded);
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    QTranslator translator;
    QCOMPARE(ApplicationStartupHandler::instance()->loadTranslator(translator, folder), loaded);
    QLocale::setDefault(QLocale::c());
}

// In one process the guard's lock is held by the first call, so a second call meets a running
// first instance: its own receiver.
void tst_ApplicationStartupHandler::secondInstanceIsTurnedAway_data()
{
    QTest::addColumn<bool>("notification");
    QTest::newRow("without notification") << false;
    QTest::newRow("with notification, in German") << true;
}

void tst_ApplicationStartupHandler::secondInstanceIsTurnedAway()
{
    QFETCH(bool, notification);
    auto* handler = ApplicationStartupHandler::instance();
    auto* application = qobject_cast<QApplication*>(QCoreApplication::instance());
    const QString id = QStringLiteral("tst_ApplicationStartupHandler-%1")
                           .arg(QCoreApplication::applicationPid());
    static bool first = true;
    if (first) {
        QCOMPARE(handler->getSingleGuiApplicationGuardExitCode(*application, id, false), 1);
        first = false;
    }
    QSignalSpy raised(handler, &ApplicationStartupHandler::raiseRequest);

    QApplication::setApplicationDisplayName(QStringLiteral("Guarded"));
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    QString title;
    QString text;
    QTimer closer; // events run while the request is handed over, before any box is shown
    QObject::connect(&closer, &QTimer::timeout, [&] {
        if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
            title = box->windowTitle();
            text = box->text();
            box->accept();
        }
    });
    closer.start(10);
    QCOMPARE(handler->getSingleGuiApplicationGuardExitCode(*application, id, notification), -1);
    QLocale::setDefault(QLocale::c());
    QTRY_COMPARE(raised.count(), 1); // the running instance got "raise"

    if (notification) {
        QCOMPARE(title, QStringLiteral("Guarded"));
        QCOMPARE(
            text,
            QStringLiteral("GUI: Das Programm wurde bereits gestartet.\nEs darf jedoch nur eine "
                           "Instanz laufen.\nDaher wird diese Instanz beendet."));
    } else {
        QVERIFY(title.isEmpty()); // no box at all
    }
}

QTEST_MAIN(tst_ApplicationStartupHandler)
#include "tst_ApplicationStartupHandler.moc"
