#include "Plugins/PluginOrder.h"

#include <QRandomGenerator>
#include <QtTest>

using corvane::base::business::PluginOrder;
using Plugin = PluginOrder::Plugin;

namespace {

// The passes exactly as they are defined, one after the other: the oracle for the real one.
QPair<QStringList, QStringList> orderByPasses(QList<Plugin> plugins)
{
    QStringList allProvided;
    for (const Plugin& plugin : plugins) {
        allProvided << plugin.provided;
    }
    for (Plugin& plugin : plugins) {
        for (const QString& service : plugin.optional) {
            if (allProvided.contains(service)) {
                plugin.required << service;
            }
        }
    }
    std::stable_sort(plugins.begin(), plugins.end(),
                     [](const Plugin& a, const Plugin& b) { return a.name < b.name; });

    QStringList available;
    QStringList order;
    bool orderedInPass = true;
    while (orderedInPass && !plugins.isEmpty()) {
        orderedInPass = false;
        for (int i = 0; i < plugins.size();) {
            const Plugin& plugin = plugins.at(i);
            const bool allAvailable
                = std::all_of(plugin.required.cbegin(), plugin.required.cend(),
                              [&](const QString& s) { return available.contains(s); });
            QStringList gathered;
            for (const Plugin& other : plugins) {
                if (other.name != plugin.name) {
                    gathered << other.provided;
                }
            }
            const bool providedByOther
                = std::any_of(plugin.required.cbegin(), plugin.required.cend(),
                              [&](const QString& s) { return gathered.contains(s); });
            if (!allAvailable || providedByOther) {
                ++i;
                continue;
            }
            available << plugin.provided;
            order << plugin.name;
            plugins.removeAt(i);
            orderedInPass = true;
        }
    }
    QStringList leftOver;
    for (const Plugin& plugin : plugins) {
        leftOver << plugin.name;
    }
    return {order, leftOver};
}

QList<Plugin> randomPlugins(QRandomGenerator& random)
{
    const QStringList services {"S0", "S1", "S2", "S3", "S4", "S5", "S6", "S7"};
    auto someServices = [&](int most) {
        QStringList chosen;
        for (int n = random.bounded(most + 1); n > 0; --n) {
            chosen << services.at(random.bounded(services.size()));
        }
        return chosen;
    };
    QList<Plugin> plugins;
    const int count = 1 + random.bounded(12);
    for (int i = 0; i < count; ++i) {
        plugins << Plugin {QStringLiteral("P%1").arg(random.bounded(1000), 3, 10, QLatin1Char('0'))
                               + QString::number(i),
                           someServices(2), someServices(3), someServices(2)};
    }
    return plugins;
}

} // namespace

Q_DECLARE_METATYPE(QList<Plugin>)

class tst_PluginOrder : public QObject
{
    Q_OBJECT

private slots:
    void examples_data();
    void examples();
    void randomGraphsAgreeWithThePasses();
    void leftOverPluginsAreExplained();
};

void tst_PluginOrder::examples_data()
{
    QTest::addColumn<QList<Plugin>>("plugins");
    QTest::addColumn<QStringList>("order");
    QTest::addColumn<QStringList>("leftOver");

    QTest::newRow("B and C in the first pass, A in the second")
        << QList<Plugin> {{"A", {}, {"S1"}, {}}, {"B", {"S1"}, {}, {}}, {"C", {}, {}, {}}}
        << QStringList {"B", "C", "A"} << QStringList();
    QTest::newRow("availability grows within a pass")
        << QList<Plugin> {{"B", {}, {"S1"}, {}}, {"A", {"S1"}, {}, {}}} << QStringList {"A", "B"}
        << QStringList();
    QTest::newRow("mutual requirement")
        << QList<Plugin> {{"B", {"S2"}, {"S1"}, {}}, {"A", {"S1"}, {"S2"}, {}}, {"C", {}, {}, {}}}
        << QStringList {"C"} << QStringList {"A", "B"};
    QTest::newRow("optional requirement nobody provides")
        << QList<Plugin> {{"A", {}, {}, {"Nobody"}}} << QStringList {"A"} << QStringList();
    QTest::newRow("optional requirement that is provided counts")
        << QList<Plugin> {{"A", {}, {}, {"S"}}, {"Z", {"S"}, {}, {}}} << QStringList {"Z", "A"}
        << QStringList();
    QTest::newRow("waits for every provider of a service")
        << QList<Plugin> {{"A", {"S"}, {}, {}},
                          {"B", {}, {"S"}, {}},
                          {"C", {"S"}, {"T"}, {}},
                          {"D", {"T"}, {}, {}}}
        << QStringList {"A", "D", "C", "B"} << QStringList();
    QTest::newRow("own service does not block")
        << QList<Plugin> {{"A", {"S"}, {"S"}, {}}} << QStringList() << QStringList {"A"};
}

void tst_PluginOrder::examples()
{
    QFETCH(QList<Plugin>, plugins);
    QFETCH(QStringList, order);
    QFETCH(QStringList, leftOver);
    const PluginOrder::Result result = PluginOrder::order(plugins);
    QCOMPARE(result.order, order);
    QCOMPARE(result.leftOver, leftOver);
    QCOMPARE(orderByPasses(plugins), qMakePair(order, leftOver));
}

void tst_PluginOrder::randomGraphsAgreeWithThePasses()
{
    QRandomGenerator random(20261121);
    for (int graph = 0; graph < 3000; ++graph) {
        const QList<Plugin> plugins = randomPlugins(random);
        const PluginOrder::Result result = PluginOrder::order(plugins);
        const auto expected = orderByPasses(plugins);
        QVERIFY2(result.order == expected.first && result.leftOver == expected.second,
                 qPrintable(QStringLiteral("graph %1: %2 / %3 instead of %4 / %5")
                                .arg(graph)
                                .arg(result.order.join(','), result.leftOver.join(','),
                                     expected.first.join(','), expected.second.join(','))));
    }
}

void tst_PluginOrder::leftOverPluginsAreExplained()
{
    const QList<Plugin> plugins {{"A", {"S1"}, {"S2"}, {}},
                                 {"B", {"S2"}, {"S1"}, {}},
                                 {"C", {}, {"Missing"}, {}},
                                 {"D", {}, {}, {}}};
    const PluginOrder::Result result = PluginOrder::order(plugins);
    QCOMPARE(PluginOrder::explainLeftOver(plugins, result),
             QStringList({"A is missing: S2 (provided by B)", "B is missing: S1 (provided by A)",
                          "C is missing: Missing (provided by nobody)",
                          "cycle: A -> S2 -> B -> S1 -> A"}));
}

QTEST_MAIN(tst_PluginOrder)
#include "tst_PluginOrder.moc"
