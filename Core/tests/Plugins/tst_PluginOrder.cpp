#include "Plugins/PluginOrder.h"

#include <QRandomGenerator>
#include <QtTest>

using corvane::base::business::PluginOrder;
using Plugin = PluginOrder::Plugin;

using Event = PluginOrder::Event;

int countIn(const QStringList& services, const QStringList& list)
{
    return std::count_if(services.begin(), services.end(),
                         [&list](const QString& service) { return list.contains(service); });
}

// The rules step by step, the reference: optional services nobody provides are dropped, in load
// order; then passes over the unordered plug-ins in name order: one whose requirements are not
// all available is passed over; one that waits for another unordered provider gets "not".
PluginOrder::Result orderByPasses(QList<Plugin> plugins, bool withWaitingLines = true)
{
    PluginOrder::Result result;
    QStringList provided;
    for (const Plugin& plugin : plugins)
        provided << plugin.provided;
    for (Plugin& plugin : plugins) {
        for (const QString& service : plugin.optional) {
            if (provided.contains(service))
                plugin.required << service;
            else
                result.events.append({Event::OptionalServiceDropped, {plugin.name, service}});
        }
    }
    std::stable_sort(plugins.begin(), plugins.end(),
                     [](const Plugin& a, const Plugin& b) { return a.name < b.name; });
    QStringList available;
    for (int pass = 1, orderedBefore = -1; orderedBefore < result.order.size(); ++pass) {
        orderedBefore = result.order.size();
        for (int i = 0; i < plugins.size();) {
            const Plugin plugin = plugins.at(i);
            QStringList others; // provided by the other unordered plug-ins
            for (const Plugin& other : plugins)
                others << (other.name == plugin.name ? QStringList() : other.provided);
            const bool ready = countIn(plugin.required, available) == plugin.required.size();
            if (!ready || countIn(plugin.required, others) > 0) {
                if (ready && withWaitingLines)
                    result.events.append({Event::NotOrdered, {plugin.name, QString()}});
                ++i;
                continue;
            }
            available << plugin.provided;
            result.order << plugin.name;
            result.passes << pass;
            result.events.append({Event::Ordered, {plugin.name, QString()}});
            plugins.removeAt(i);
        }
    }
    for (const Plugin& plugin : plugins)
        result.leftOver << plugin.name;
    return result;
}

QString describe(const PluginOrder::Result& result)
{
    static const char* const kinds[] = {"dropped", "not", "ordered"};
    QStringList order, events;
    for (int i = 0; i < result.order.size(); ++i)
        order << result.order.at(i) + QString::number(result.passes.value(i));
    for (const auto& event : result.events)
        events << QStringLiteral("%1 %2 %3")
                      .arg(kinds[int(event.first)], event.second.first, event.second.second)
                      .trimmed();
    return QStringList({order.join(' '), result.leftOver.join(' '), events.join(", ")}).join(" | ");
}

// "name:provided:required:optional" for each plug-in, services separated by commas.
QList<Plugin> parse(const QString& text)
{
    QList<Plugin> plugins;
    for (const QString& entry : text.split(' ', Qt::SkipEmptyParts)) {
        const auto part = [&](int i) {
            return entry.section(':', i, i).split(',', Qt::SkipEmptyParts);
        };
        plugins << Plugin {entry.section(':', 0, 0), part(1), part(2), part(3)};
    }
    return plugins;
}

class tst_PluginOrder : public QObject
{
    Q_OBJECT

private slots:
    void examples_data()
    {
        QTest::addColumn<QString>("row");
        QTest::newRow("B and C in the first pass, A in the second")
            << "A::S1 B:S1 C => B1 C1 A2 |  | ordered B, ordered C, ordered A";

        QTest::newRow("optional requirements, dropped in load order before the passes")
            << "Z:::N1,N2 A:::N3,S M:S => M1 Z1 A2 |  | dropped Z N1, dropped Z N2, dropped A N3, "
               "ordered M, ordered Z, ordered A";
        QTest::newRow("waits for every provider, one NOT line in each pass that reaches it")
            << "A:S B::S C:S:T D:T:U E:U => A1 E1 D2 C3 B4 |  | ordered A, not B, ordered E, not "
               "B, ordered D, not B, ordered C, ordered B";
        QTest::newRow("a last pass that orders nothing still writes its NOT line")
            << "A:S B::S C:S:Missing => A1 | B C | ordered A, not B, not B";
    }

    void examples()
    {
        QFETCH(QString, row);
        const QList<Plugin> plugins = parse(row.section(" => ", 0, 0));
        QCOMPARE(describe(orderByPasses(plugins)), row.section(" => ", 1));
        QCOMPARE(describe(PluginOrder::order(plugins)), row.section(" => ", 1));
        QCOMPARE(describe(PluginOrder::order(plugins, false)),
                 describe(orderByPasses(plugins, false)));
    }

    void randomGraphsAgreeWithThePasses()
    {
        QRandomGenerator random(20261121);
        const auto services = [&random](int most) {
            QStringList chosen;
            for (int n = random.bounded(most + 1); n > 0; --n)
                chosen << QStringLiteral("S%1").arg(random.bounded(8));
            return chosen;
        };
        for (int graph = 0; graph < 3000; ++graph) {
            QList<Plugin> plugins;
            for (int i = 0, count = 1 + random.bounded(12); i < count; ++i) {
                plugins << Plugin {QStringLiteral("P%1%2")
                                       .arg(random.bounded(1000), 3, 10, QLatin1Char('0'))
                                       .arg(i),
                                   services(2), services(3), services(2)};
                plugins.last().optional.removeDuplicates(); // one line per optional service
            }
            QCOMPARE(describe(PluginOrder::order(plugins)), describe(orderByPasses(plugins)));
        }
    }
};

QTEST_MAIN(tst_PluginOrder)
#include "tst_PluginOrder.moc"
