#include "Exceptions/Exceptions.h"

#include <QtTest>

using namespace corvane::base::exceptions;

namespace {

// what(), then every field as its out-parameter getter copies it.
QString fields(const BaseException& e)
{
    QString source, method, reason, context, translatable;
    QList<QVariant> arguments;
    e.getSource(source);
    e.getMethod(method);
    e.getReason(reason);
    e.getTranslationContext(context);
    e.getTranslatableReason(translatable);
    e.getReasonArguments(arguments);
    QStringList texts {QString::fromUtf8(e.what()), source, method, reason, context, translatable};
    for (const QVariant& argument : arguments)
        texts << argument.toString();
    return texts.join('|');
}

// What a throw leaves when caught as its own class; "other" when it is not one.
template <class E>
QString caught(const std::function<void()>& raise)
{
    try {
        raise();
    } catch (const E& e) {
        return fields(e);
    } catch (...) {
        return QStringLiteral("other");
    }
    return QStringLiteral("nothing");
}

} // namespace

class tst_Exceptions : public QObject
{
    Q_OBJECT

    template <class... E>
    void checkClasses()
    {
        (checkClass<E>(), ...);
    }

    template <class E>
    void checkClass()
    {
        const QString name = typeid(E).name();
        QCOMPARE(name + caught<E>([this] { throw E(this, "m", "r ü"); }),
                 name + "tst_Exceptions::m r ü|tst_Exceptions|m|r ü||");
        QCOMPARE(name + caught<E>([] { throw E(static_cast<QObject*>(nullptr), "", "r"); }),
                 name + "unknown source:: r|unknown source||r||");
        QCOMPARE(name + caught<E>([] { throw E(QString("a.b"), "m", "r"); }),
                 name + "a.b::m r|a.b|m|r||");
        QCOMPARE(caught<ValueOutOfRangeException>([] { throw E(QString("a.b"), "m", "r"); }),
                 "other");
    }

private slots:
    // Every class is caught by its own type; by sender, a null sender and a source text.
    void everyClassKeepsItsFields()
    {
        checkClasses<ManagerRegistryException, ConfigurationManagerException,
                     PluginManagerException, ServiceManagerException, StartUpManagerException,
                     NullPointerException, ConnectFailedException, PluginException,
                     ServiceUnavailableException, InvalidOperationException, FileNotFoundException,
                     PersistenceException, RecordNotFoundException, RecordAlreadyExistsException,
                     FileIOException, InvalidFileFormatException, DataExchangeException,
                     NotImplementedException, InvalidSignatureException,
                     InvalidConfigurationException, SerializerException, HelpException,
                     BindException, ConnectException, NoRouteToHostException,
                     PortUnreachableException, PrintException, I18nException, UIException,
                     ListAndLabelException, LanguageNotAvailableException, InvalidArgumentException,
                     BaseException>();
    }

    // The translatable parts never reach what(); the classes with data of their own keep it.
    void translatablePartsAndOwnData()
    {
        InvalidArgumentException e(this, "m", "r", "Ctx", "R %1 %2", {1, "zwei"});
        QCOMPARE(fields(e), "tst_Exceptions::m r|tst_Exceptions|m|r|Ctx|R %1 %2|1|zwei");
        e.setTranslationContext("C2");
        e.setTranslatableReason("T2");
        e.setReasonArguments({3});
        QCOMPARE(fields(e), "tst_Exceptions::m r|tst_Exceptions|m|r|C2|T2|3");
        BaseException b(QString("s"), "m", "r", "C", "T", {});
        QCOMPARE(fields(b), "s::m r|s|m|r|C|T");

        ValueOutOfRangeException range(this, "getChildAt", "out", 0, 4);
        QCOMPARE(range.getLowerBound(), QVariant(0));
        QCOMPARE(range.getUpperBound(), QVariant(4));
        UserManagementException user(QString("u"), "login", UserManagementException::WRONG_PASSWORD,
                                     "wrong");
        UserManagementException copy(this, "x", UserManagementException::UNKNOWN_REASON, "y");
        copy = user;
        QCOMPARE(UserManagementException(copy).getReasonId(),
                 UserManagementException::WRONG_PASSWORD);
        QCOMPARE(fields(UserManagementException(copy)), "u::login wrong|u|login|wrong||");

        // raise() and clone() are QException's: what arrives is a QException, not the subclass.
        QCOMPARE(caught<InvalidArgumentException>([&e] { e.raise(); }), "other");
        std::unique_ptr<QException> clone(range.clone());
        QVERIFY(!dynamic_cast<BaseException*>(clone.get()));
    }
};

QTEST_MAIN(tst_Exceptions)
#include "tst_Exceptions.moc"
