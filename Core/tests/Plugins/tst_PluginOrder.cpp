#include "Plugins/PluginOrder.h"

#include <QRandomGenerator>
#include <QtTest>

using corvane::base::business::PluginOrder;
using Plugin = PluginOrder::Plugin;

namespace {

// The ordering rules, one step after the other: the reference for the real one. It also
// writes down the lines of each step, in the order in which the steps come:
// - the optional requirements are looked at before any pass, over the loaded plug-ins, that
//   is in load order (the order of the input list), and within one plug-in in the order of its
//   optional services: one "dropped" line for each entry that no plug-in provides;
// - then the passes, each over the unordered plug-ins in name order: a plug-in whose
//   requirements are not all available is passed over without a line; one whose requirements
//   are all available gets "not" while another unordered plug-in still provides one of them
//   (again in every pass that reaches it so), else "ordered".
struct Passes
{
    QStringList order;
    QVector<int> passes; // of each plug-in of order, counted from 1
    QStringList leftOver;
    QStringList events; // "dropped <plug-in> <service>", "not <plug-in>", "ordered <plug-in>"
};

Passes orderByPasses(QList<Plugin> plugins)
{
    Passes result;
    QStringList allProvided;
    for (const Plugin& plugin : plugins) {
        allProvided << plugin.provided;
    }
    for (Plugin& plugin : plugins) {
        for (const QString& service : plugin.optional) {
            if (allProvided.contains(service)) {
                plugin.required << service;
            } else {
                result.events << "dropped " + plugin.name + " " + service;
            }
        }
    }
    std::stable_sort(plugins.begin(), plugins.end(),
                     [](const Plugin& a, const Plugin& b) { return a.name < b.name; });

    QStringList available;
    bool orderedInPass = true;
    for (int pass = 1; orderedInPass && !plugins.isEmpty(); ++pass) {
        orderedInPass = false;
        for (int i = 0; i < plugins.size();) {
            const Plugin plugin = plugins.at(i);
            if (!std::all_of(plugin.required.cbegin(), plugin.required.cend(),
                             [&](const QString& s) { return available.contains(s); })) {
                ++i;
                continue;
            }
            QStringList gathered;
            for (const Plugin& other : plugins) {
                if (other.name != plugin.name) {
                    gathered << other.provided;
                }
            }
            if (std::any_of(plugin.required.cbegin(), plugin.required.cend(),
                            [&](const QString& s) { return gathered.contains(s); })) {
                result.events << "not " + plugin.name;
                ++i;
                continue;
            }
            available << plugin.provided;
            result.order << plugin.name;
            result.passes << pass;
            result.events << "ordered " + plugin.name;
            plugins.removeAt(i);
            orderedInPass = true;
        }
    }
    for (const Plugin& plugin : plugins) {
        result.leftOver << plugin.name;
    }
    return result;
}

QStringList eventsOf(const PluginOrder::Result& result)
{
    static const char* const kinds[] = {"dropped", "not", "ordered"};
    QStringList events;
    for (const auto& event : result.events) {
        events << QStringList {kinds[int(event.first)], event.second.first, event.second.second}
                      .join(' ')
                      .trimmed();
    }
    return events;
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
        plugins.last().optional.removeDuplicates(); // one line per optional service
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
    QTest::addColumn<QStringList>("events");

    QTest::newRow("B and C in the first pass, A in the second")
        << QList<Plugin> {{"A", {}, {"S1"}, {}}, {"B", {"S1"}, {}, {}}, {"C", {}, {}, {}}}
        << QStringList {"B", "C", "A"} << QStringList()
        << QStringList {"ordered B", "ordered C", "ordered A"};
    QTest::newRow("availability grows within a pass")
        << QList<Plugin> {{"B", {}, {"S1"}, {}}, {"A", {"S1"}, {}, {}}} << QStringList {"A", "B"}
        << QStringList() << QStringList {"ordered A", "ordered B"};
    QTest::newRow("mutual requirement")
        << QList<Plugin> {{"B", {"S2"}, {"S1"}, {}}, {"A", {"S1"}, {"S2"}, {}}, {"C", {}, {}, {}}}
        << QStringList {"C"} << QStringList {"A", "B"} << QStringList {"ordered C"};
    QTest::newRow("optional requirement nobody provides")
        << QList<Plugin> {{"A", {}, {}, {"Nobody"}}} << QStringList {"A"} << QStringList()
        << QStringList {"dropped A Nobody", "ordered A"};
    QTest::newRow("optional requirement that is provided counts")
        << QList<Plugin> {{"A", {}, {}, {"S"}}, {"Z", {"S"}, {}, {}}} << QStringList {"Z", "A"}
        << QStringList() << QStringList {"ordered Z", "ordered A"};
    QTest::newRow("dropped optional services in load order, before the passes")
        << QList<Plugin> {{"Z", {}, {}, {"N1", "N2"}},
                          {"A", {}, {}, {"N3", "S"}},
                          {"M", {"S"}, {}, {}}}
        << QStringList {"M", "Z", "A"} << QStringList()
        << QStringList {"dropped Z N1", "dropped Z N2", "dropped A N3",
                        "ordered M",    "ordered Z",    "ordered A"};
    QTest::newRow("waits for every provider of a service")
        << QList<Plugin> {{"A", {"S"}, {}, {}},
                          {"B", {}, {"S"}, {}},
                          {"C", {"S"}, {"T"}, {}},
                          {"D", {"T"}, {}, {}}}
        << QStringList {"A", "D", "C", "B"} << QStringList()
        << QStringList {"ordered A", "not B", "ordered D", "not B", "ordered C", "ordered B"};
    QTest::newRow("own service does not block")
        << QList<Plugin> {{"A", {"S"}, {"S"}, {}}} << QStringList() << QStringList {"A"}
        << QStringList();
    QTest::newRow("two providers ordered before the user: no NOT line")
        << QList<Plugin> {{"P", {}, {"S"}, {}}, {"X", {"S"}, {}, {}}, {"Y", {"S"}, {}, {}}}
        << QStringList {"X", "Y", "P"} << QStringList()
        << QStringList {"ordered X", "ordered Y", "ordered P"};
    QTest::newRow("one NOT line in each pass that reaches the blocked plug-in")
        << QList<Plugin> {{"A", {"S"}, {}, {}},
                          {"B", {}, {"S"}, {}},
                          {"C", {"S"}, {"T"}, {}},
                          {"D", {"T"}, {"U"}, {}},
                          {"E", {"U"}, {}, {}}}
        << QStringList {"A", "E", "D", "C", "B"} << QStringList()
        << QStringList {"ordered A", "not B", "ordered E", "not B",
                        "ordered D", "not B", "ordered C", "ordered B"};
    QTest::newRow("a last pass that orders nothing still writes its NOT line")
        << QList<Plugin> {{"A", {"S"}, {}, {}}, {"B", {}, {"S"}, {}}, {"C", {"S"}, {"Missing"}, {}}}
        << QStringList {"A"} << QStringList {"B", "C"}
        << QStringList {"ordered A", "not B", "not B"};
}

void tst_PluginOrder::examples()
{
    QFETCH(QList<Plugin>, plugins);
    QFETCH(QStringList, order);
    QFETCH(QStringList, leftOver);
    QFETCH(QStringList, events);
    const Passes expected = orderByPasses(plugins);
    QCOMPARE(expected.order, order);
    QCOMPARE(expected.leftOver, leftOver);
    QCOMPARE(expected.events, events);
    const PluginOrder::Result result = PluginOrder::order(plugins);
    QCOMPARE(result.order, order);
    QCOMPARE(result.passes, expected.passes);
    QCOMPARE(result.leftOver, leftOver);
    QCOMPARE(eventsOf(result).join(", "), events.join(", "));
    QCOMPARE(eventsOf(PluginOrder::order(plugins, false)),
             events.filter(QRegularExpression("^(dropped|ordered) ")));
}

void tst_PluginOrder::randomGraphsAgreeWithThePasses()
{
    QRandomGenerator random(20261121);
    for (int graph = 0; graph < 3000; ++graph) {
        const QList<Plugin> plugins = randomPlugins(random);
        const PluginOrder::Result result = PluginOrder::order(plugins);
        const Passes expected = orderByPasses(plugins);
        const QStringList events = eventsOf(result);
        QVERIFY2(result.order == expected.order && result.passes == expected.passes
                     && result.leftOver == expected.leftOver && events == expected.events,
                 qPrintable(QStringLiteral("graph %1: %2 / %3 / %4\ninstead of %5 / %6 / %7")
                                .arg(graph)
                                .arg(result.order.join(','), result.leftOver.join(','),
                                     events.join(','), expected.order.join(','),
                                     expected.leftOver.join(','), expected.events.join(','))));
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
