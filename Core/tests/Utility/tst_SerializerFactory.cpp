#include "FakeManagers.h"

#include "Exceptions/Exceptions.h"
#include "StartUp/ManagerRegistry.h"
#include "Utility/ISerializer.h"
#include "Utility/SerializerFactory.h"

#include <QtTest>

#include <memory>

using corvane::base::business::ManagerRegistry;
using corvane::base::core::interfaces::ISerializable;
using corvane::base::core::interfaces::ISerializer;
using corvane::base::core::utility::SerializerFactory;
using corvane::base::exceptions::InvalidArgumentException;

namespace {

class Recorder : public fakes::LoggingManager
{
public:
    void logEntry(Loglevel level, const QString& source, const QString& message, bool) override
    {
        entries
            << QStringLiteral("%1 %2 %3").arg(level == ERROR ? "ERROR" : "DEBUG", source, message);
    }
    QStringList entries;
};

template <int Format>
class Serializer : public ISerializer
{
public:
    QString getFormat() const override { return QString::number(Format); }
    QByteArray serialize(const QList<const ISerializable*>&) override { return {}; }
    bool deserialize(const QByteArray&, const QList<ISerializable*>&) override { return false; }
};

template <int Format>
ISerializer* create()
{
    return new Serializer<Format>;
}

ISerializer* createInner()
{
    return SerializerFactory::instance()->createSerializer(QStringLiteral("inner"));
}

} // namespace

class tst_SerializerFactory : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void registersCreatesAndUnregisters();
    void creatorMayCreateAnotherSerializer();

private:
    Recorder logging;
};

void tst_SerializerFactory::initTestCase()
{
    ManagerRegistry::instance()->registerManager(logging);
    QCOMPARE(SerializerFactory::instance(), SerializerFactory::instance());
}

void tst_SerializerFactory::registersCreatesAndUnregisters()
{
    SerializerFactory* factory = SerializerFactory::instance();
    factory->registerSerializer("csv", &create<1>);
    factory->registerSerializer("csv", &create<2>);
    QCOMPARE(logging.entries,
             QStringList({"DEBUG SerializerFactory registerSerializer: csv",
                          "DEBUG SerializerFactory registerSerializer: csv registered.",
                          "DEBUG SerializerFactory registerSerializer done.",
                          "DEBUG SerializerFactory registerSerializer: csv",
                          "ERROR SerializerFactory registerSerializer: csv ALREADY registered.",
                          "DEBUG SerializerFactory registerSerializer done."}));

    std::unique_ptr<ISerializer> serializer(factory->createSerializer("csv"));
    QCOMPARE(serializer->getFormat(), QStringLiteral("1")); // the first creator stays
    QVERIFY_EXCEPTION_THROWN(factory->createSerializer("CSV"), InvalidArgumentException);

    logging.entries.clear();
    factory->unregisterSerializer("csv");
    factory->unregisterSerializer("csv");
    QVERIFY(logging.entries.contains("ERROR SerializerFactory unregisterSerializer: csv unknown."));
    try {
        factory->createSerializer("csv");
        QFAIL("no exception");
    } catch (const InvalidArgumentException& e) {
        QCOMPARE(QByteArray(e.what()),
                 QByteArray("SerializerFactory::createSerializer Serializer unknown: csv"));
    }
    QVERIFY(logging.entries.contains("ERROR SerializerFactory createSerializer: csv is unknown."));
}

// Only the lookup holds the lock; a creator that asks the factory again must not dead-lock
// (the test's time-out ends a run that does).
void tst_SerializerFactory::creatorMayCreateAnotherSerializer()
{
    SerializerFactory* factory = SerializerFactory::instance();
    factory->registerSerializer(QStringLiteral("inner"), &create<3>);
    factory->registerSerializer(QStringLiteral("outer"), &createInner);
    std::unique_ptr<ISerializer> serializer(factory->createSerializer(QStringLiteral("outer")));
    QCOMPARE(serializer->getFormat(), QStringLiteral("3"));
    factory->unregisterSerializer(QStringLiteral("outer"));
    factory->unregisterSerializer(QStringLiteral("inner"));
}

QTEST_MAIN(tst_SerializerFactory)
#include "tst_SerializerFactory.moc"
