#include "Exceptions/Exceptions.h"

#include <QtTest>

#include <memory>

using namespace corvane::base::exceptions;

namespace corvane {
namespace test {

class Raiser : public QObject
{
    Q_OBJECT
};

} // namespace test
} // namespace corvane

namespace {

const QString raiserClass = QStringLiteral("corvane::test::Raiser");

template <class... Exceptions>
struct ExceptionList
{
};

using PlainExceptions = ExceptionList<
    ManagerRegistryException, ConfigurationManagerException, PluginManagerException,
    ServiceManagerException, StartUpManagerException, NullPointerException, ConnectFailedException,
    PluginException, ServiceUnavailableException, InvalidOperationException, FileNotFoundException,
    PersistenceException, RecordNotFoundException, RecordAlreadyExistsException, FileIOException,
    InvalidFileFormatException, DataExchangeException, NotImplementedException,
    InvalidSignatureException, InvalidConfigurationException, SerializerException, HelpException,
    BindException, ConnectException, NoRouteToHostException, PortUnreachableException,
    PrintException, I18nException, UIException, ListAndLabelException,
    LanguageNotAvailableException, InvalidArgumentException, ValueOutOfRangeException>;

// Throws each class in both three-argument forms and catches it as its own type and as
// BaseException; returns the what() texts in order.
template <class E>
void throwBothForms(const QObject* sender, QStringList& texts)
{
    try {
        throw E(sender, "method", "reason");
    } catch (const E& e) {
        texts << QString::fromUtf8(e.what());
    }
    try {
        throw E(QStringLiteral("Source"), "method", "reason");
    } catch (const BaseException& e) {
        texts << QString::fromUtf8(e.what());
    }
}

template <class... Exceptions>
QStringList throwAll(ExceptionList<Exceptions...>, const QObject* sender)
{
    QStringList texts;
    (throwBothForms<Exceptions>(sender, texts), ...);
    return texts;
}

} // namespace

class tst_Exceptions : public QObject
{
    Q_OBJECT

private slots:
    void whatComposition_data();
    void whatComposition();
    void everySubclassComposesWhatTheSameWay();
    void translatableFieldsAreStoredButStayOutOfWhat();
    void settersLeaveWhatUnchanged();
    void cloneAndRaiseArriveAsQException();
    void valueOutOfRangeKeepsBothBounds();
    void userManagementExceptionCopiesItsReason();
    void silentExitNamesTheMessage();

private:
    corvane::test::Raiser raiser;
};

void tst_Exceptions::whatComposition_data()
{
    QTest::addColumn<QByteArray>("what");
    QTest::addColumn<QByteArray>("expected");

    QTest::newRow("by sender")
        << QByteArray(BaseException(&raiser, "registerManager", "already registered!").what())
        << QByteArray("corvane::test::Raiser::registerManager already registered!");
    QTest::newRow("null sender") << QByteArray(
        BaseException(static_cast<const QObject*>(nullptr), "m", "r").what())
                                 << QByteArray("unknown source::m r");
    QTest::newRow("by source text")
        << QByteArray(BaseException(QStringLiteral("PluginManager"), "loadPlugin", "x").what())
        << QByteArray("PluginManager::loadPlugin x");
    QTest::newRow("empty method") << QByteArray(
        BaseException(QStringLiteral("S"), QString(), "reason").what())
                                  << QByteArray("S:: reason");
    QTest::newRow("translatable by sender")
        << QByteArray(BaseException(&raiser, "m", "r", "Context", "Reason %1", {1}).what())
        << QByteArray("corvane::test::Raiser::m r");
    QTest::newRow("translatable by source")
        << QByteArray(BaseException(QStringLiteral("S"), "m", "r", "Context", "Reason", {}).what())
        << QByteArray("S::m r");
    QTest::newRow("UTF-8") << QByteArray(
        BaseException(QStringLiteral("S"), "m", QStringLiteral("Größe ✓")).what())
                           << QByteArray("S::m Gr\xc3\xb6\xc3\x9f"
                                         "e \xe2\x9c\x93");
}

void tst_Exceptions::whatComposition()
{
    QFETCH(QByteArray, what);
    QFETCH(QByteArray, expected);
    QCOMPARE(what, expected);
}

void tst_Exceptions::everySubclassComposesWhatTheSameWay()
{
    const QStringList texts = throwAll(PlainExceptions(), &raiser);
    QCOMPARE(texts.size(), 2 * 33);
    for (int i = 0; i < texts.size(); i += 2) {
        QCOMPARE(texts.at(i), raiserClass + "::method reason");
        QCOMPARE(texts.at(i + 1), QStringLiteral("Source::method reason"));
    }
}

void tst_Exceptions::translatableFieldsAreStoredButStayOutOfWhat()
{
    const InvalidArgumentException e(&raiser, "check", "bad value", "Dialog", "Value %1 is bad",
                                     {42, QStringLiteral("x")});
    QCOMPARE(e.getSource(), raiserClass);
    QCOMPARE(e.getMethod(), QStringLiteral("check"));
    QCOMPARE(e.getReason(), QStringLiteral("bad value"));
    QCOMPARE(e.getTranslationContext(), QStringLiteral("Dialog"));
    QCOMPARE(e.getTranslatableReason(), QStringLiteral("Value %1 is bad"));
    QCOMPARE(e.getReasonArguments(), QList<QVariant>({42, QStringLiteral("x")}));
    QCOMPARE(QByteArray(e.what()), QByteArray("corvane::test::Raiser::check bad value"));

    QString out;
    e.getTranslatableReason(out);
    QCOMPARE(out, QStringLiteral("Value %1 is bad"));
    QList<QVariant> arguments;
    e.getReasonArguments(arguments);
    QCOMPARE(arguments.size(), 2);
}

void tst_Exceptions::settersLeaveWhatUnchanged()
{
    BaseException e(QStringLiteral("S"), "m", "r");
    e.setTranslationContext("Context");
    e.setTranslatableReason("Translated %1");
    e.setReasonArguments({1, 2});
    e.setReasonArguments(e.getReasonArguments());

    QCOMPARE(QByteArray(e.what()), QByteArray("S::m r"));
    QCOMPARE(e.getTranslationContext(), QStringLiteral("Context"));
    QCOMPARE(e.getTranslatableReason(), QStringLiteral("Translated %1"));
    QCOMPARE(e.getReasonArguments(), QList<QVariant>({1, 2}));
}

void tst_Exceptions::cloneAndRaiseArriveAsQException()
{
    const PluginManagerException e(&raiser, "m", "r");

    std::unique_ptr<QException> copy(e.clone());
    QVERIFY(copy != nullptr);
    QVERIFY(dynamic_cast<BaseException*>(copy.get()) == nullptr);

    bool caughtAsQException = false;
    try {
        e.raise();
    } catch (const BaseException&) {
        QFAIL("raise() kept the subclass");
    } catch (const QException&) {
        caughtAsQException = true;
    }
    QVERIFY(caughtAsQException);
}

void tst_Exceptions::valueOutOfRangeKeepsBothBounds()
{
    const ValueOutOfRangeException e(QStringLiteral("Tree"), "getChildAt", "out of range", 0, 7);
    QCOMPARE(e.getLowerBound(), QVariant(0));
    QCOMPARE(e.getUpperBound(), QVariant(7));
    QCOMPARE(QByteArray(e.what()), QByteArray("Tree::getChildAt out of range"));

    const ValueOutOfRangeException withoutBounds(&raiser, "m", "r");
    QVERIFY(!withoutBounds.getLowerBound().isValid());
    QVERIFY(!withoutBounds.getUpperBound().isValid());
}

void tst_Exceptions::userManagementExceptionCopiesItsReason()
{
    const UserManagementException original(
        &raiser, "login", UserManagementException::WRONG_PASSWORD, "Wrong password.");
    QCOMPARE(original.getReasonId(), UserManagementException::WRONG_PASSWORD);
    QCOMPARE(QByteArray(original.what()),
             QByteArray("corvane::test::Raiser::login Wrong password."));

    const UserManagementException copy(original);
    QCOMPARE(copy.getReasonId(), UserManagementException::WRONG_PASSWORD);
    QCOMPARE(QByteArray(copy.what()), QByteArray(original.what()));

    UserManagementException assigned(QStringLiteral("S"), "m",
                                     UserManagementException::USER_NOT_FOUND, "r");
    assigned = original;
    QCOMPARE(assigned.getReasonId(), UserManagementException::WRONG_PASSWORD);
    QCOMPARE(assigned.getMethod(), QStringLiteral("login"));
    QCOMPARE(QByteArray(assigned.what()), QByteArray(original.what()));
}

void tst_Exceptions::silentExitNamesTheMessage()
{
    try {
        throw SilentExitException(&raiser, "notifyOtherInstanceAndQuit");
    } catch (const BaseException& e) {
        QCOMPARE(
            QByteArray(e.what()),
            QByteArray("corvane::test::Raiser:: Silent Exit Request: notifyOtherInstanceAndQuit"));
        QCOMPARE(e.getMethod(), QString());
    }
}

QTEST_MAIN(tst_Exceptions)
#include "tst_Exceptions.moc"
