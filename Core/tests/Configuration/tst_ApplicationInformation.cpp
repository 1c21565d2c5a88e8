#include "Configuration/ApplicationInformation.h"
#include "Configuration/PluginConfiguration.h"

#include <QDomDocument>
#include <QtTest>

using corvane::base::entities::ApplicationInformation;
using corvane::base::entities::PluginConfiguration;

Q_DECLARE_METATYPE(ApplicationInformation::ApplicationType)

class tst_ApplicationInformation : public QObject
{
    Q_OBJECT

private slots:
    void defaults();
    void typeFromText_data();
    void typeFromText();
    void typeAsText_data();
    void typeAsText();
    void releaseDateFromText_data();
    void releaseDateFromText();
    void userNotificationFromText_data();
    void userNotificationFromText();
    void pluginConfigurationSharesItsElement();
};

void tst_ApplicationInformation::defaults()
{
    const ApplicationInformation information;
    QCOMPARE(information.getApplicationType(), ApplicationInformation::NO_TYPE);
    QCOMPARE(information.getApplicationTypeAsString(), QStringLiteral("NO_TYPE"));
    QVERIFY(information.getReleaseDate().isNull());
    QVERIFY(!information.hasSingleAppUserNotification());
    QVERIFY(information.getApplicationName().isEmpty());
    QVERIFY(information.getSingleAppId().isEmpty());
}

void tst_ApplicationInformation::typeFromText_data()
{
    QTest::addColumn<ApplicationInformation::ApplicationType>("before");
    QTest::addColumn<QString>("text");
    QTest::addColumn<ApplicationInformation::ApplicationType>("after");

    QTest::newRow("GUI") << ApplicationInformation::NO_TYPE << "GUI" << ApplicationInformation::GUI;
    QTest::newRow("console, lower case")
        << ApplicationInformation::NO_TYPE << "console" << ApplicationInformation::CONSOLE;
    QTest::newRow("Service, mixed case")
        << ApplicationInformation::GUI << "Service" << ApplicationInformation::SERVICE;
    QTest::newRow("unknown keeps the type")
        << ApplicationInformation::SERVICE << "Desktop" << ApplicationInformation::SERVICE;
    QTest::newRow("NO_TYPE is no input")
        << ApplicationInformation::CONSOLE << "NO_TYPE" << ApplicationInformation::CONSOLE;
    QTest::newRow("blank around the name")
        << ApplicationInformation::NO_TYPE << " GUI" << ApplicationInformation::NO_TYPE;
    QTest::newRow("empty") << ApplicationInformation::GUI << "" << ApplicationInformation::GUI;
}

void tst_ApplicationInformation::typeFromText()
{
    QFETCH(ApplicationInformation::ApplicationType, before);
    QFETCH(QString, text);
    QFETCH(ApplicationInformation::ApplicationType, after);

    ApplicationInformation information;
    information.setApplicationType(before);
    information.setApplicationTypeFromString(text);
    QCOMPARE(information.getApplicationType(), after);

    ApplicationInformation::ApplicationType out = ApplicationInformation::NO_TYPE;
    information.getApplicationType(out);
    QCOMPARE(out, after);
}

void tst_ApplicationInformation::typeAsText_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("text");
    QTest::newRow("GUI") << 0 << "GUI";
    QTest::newRow("CONSOLE") << 1 << "CONSOLE";
    QTest::newRow("SERVICE") << 2 << "SERVICE";
    QTest::newRow("NO_TYPE") << 3 << "NO_TYPE";
    QTest::newRow("out of range") << 7 << "NO_TYPE";
}

void tst_ApplicationInformation::typeAsText()
{
    QFETCH(int, type);
    QFETCH(QString, text);
    ApplicationInformation information;
    information.setApplicationType(static_cast<ApplicationInformation::ApplicationType>(type));
    QCOMPARE(information.getApplicationTypeAsString(), text);
}

void tst_ApplicationInformation::releaseDateFromText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QDate>("date");
    QTest::newRow("ISO date") << "2016-03-01" << QDate(2016, 3, 1);
    QTest::newRow("German date overwrites with null") << "01.03.2016" << QDate();
    QTest::newRow("impossible day") << "2016-02-30" << QDate();
    QTest::newRow("empty") << "" << QDate();
}

void tst_ApplicationInformation::releaseDateFromText()
{
    QFETCH(QString, text);
    QFETCH(QDate, date);
    ApplicationInformation information;
    information.setReleaseDate(QDate(2000, 1, 1));
    information.setReleaseDateFromString(text);
    QCOMPARE(information.getReleaseDate(), date);
    QCOMPARE(information.getReleaseDate().isNull(), date.isNull());
}

void tst_ApplicationInformation::userNotificationFromText_data()
{
    QTest::addColumn<bool>("before");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("after");
    QTest::newRow("true") << false << "true" << true;
    QTest::newRow("TRUE") << false << "TRUE" << true;
    QTest::newRow("True") << false << "True" << true;
    QTest::newRow("false") << true << "false" << false;
    QTest::newRow("yes") << true << "yes" << false;
    QTest::newRow("1") << true << "1" << false;
    QTest::newRow("blank before") << true << " true" << false;
    QTest::newRow("empty") << true << "" << false;
}

void tst_ApplicationInformation::userNotificationFromText()
{
    QFETCH(bool, before);
    QFETCH(QString, text);
    QFETCH(bool, after);
    ApplicationInformation information;
    information.setSingleAppUserNotification(before);
    information.setSingleAppUserNoteFromString(text);
    QCOMPARE(information.hasSingleAppUserNotification(), after);
}

void tst_ApplicationInformation::pluginConfigurationSharesItsElement()
{
    QDomDocument document;
    QVERIFY(document.setContent(QStringLiteral("<plugin><configuration a=\"1\"/></plugin>")));
    const PluginConfiguration original(QStringLiteral("Foo.dll"),
                                       document.documentElement().firstChildElement());
    const PluginConfiguration copy = original;

    QDomElement fromCopy;
    copy.getConfiguration(fromCopy);
    fromCopy.setAttribute(QStringLiteral("a"), QStringLiteral("2"));

    QDomElement fromOriginal;
    original.getConfiguration(fromOriginal);
    QCOMPARE(fromOriginal.attribute(QStringLiteral("a")), QStringLiteral("2"));
    QString library;
    copy.getLibrary(library);
    QCOMPARE(library, QStringLiteral("Foo.dll"));

    const PluginConfiguration withoutConfiguration {QString(), QDomElement()};
    QDomElement none;
    withoutConfiguration.getConfiguration(none);
    QVERIFY(none.isNull());
}

QTEST_MAIN(tst_ApplicationInformation)
#include "tst_ApplicationInformation.moc"
