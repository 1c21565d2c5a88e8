#include "Plugins/PluginOrder.h"

#include <QHash>
#include <QSet>

#include <algorithm>
#include <functional>
#include <numeric>
#include <set>

namespace corvane {
namespace base {
namespace business {

namespace {

using Plugin = PluginOrder::Plugin;
using Event = PluginOrder::Event;

QSet<QString> asSet(const QStringList& list)
{
    return QSet<QString>(list.cbegin(), list.cend());
}

// Each plug-in's required services: its own plus the optional ones some plug-in provides.
QVector<QSet<QString>> effectiveRequirements(const QList<Plugin>& plugins,
                                             PluginOrder::Result& result)
{
    QSet<QString> allProvided;
    for (const Plugin& plugin : plugins) {
        allProvided.unite(asSet(plugin.provided));
    }
    QVector<QSet<QString>> required(plugins.size());
    for (int index = 0; index < plugins.size(); ++index) {
        const Plugin& plugin = plugins.at(index);
        required[index] = asSet(plugin.required);
        for (const QString& service : plugin.optional) {
            if (allProvided.contains(service)) {
                required[index].insert(service);
            } else {
                result.events.append({Event::OptionalServiceDropped, {plugin.name, service}});
            }
        }
    }
    return required;
}

} // namespace

// A plug-in is ready once every required service is available and no other unordered plug-in
// provides one of them; it waits while only the second holds. Both only ever change towards
// ready, and only when a plug-in is ordered, so a pass orders exactly the plug-ins that are
// ready when the pass reaches them: the ready ones behind the last ordered plug-in still belong
// to this pass, those before it to the next. The waiting ones that a pass goes by between two
// ordered plug-ins are those waiting at that moment.
PluginOrder::Result PluginOrder::order(const QList<Plugin>& plugins, bool withWaitingLines)
{
    Result result;
    const int count = plugins.size();
    QVector<int> byName(count);
    std::iota(byName.begin(), byName.end(), 0);
    std::stable_sort(byName.begin(), byName.end(),
                     [&](int a, int b) { return plugins.at(a).name < plugins.at(b).name; });
    QVector<int> rank(count);
    for (int position = 0; position < count; ++position) {
        rank[byName[position]] = position;
    }

    const QVector<QSet<QString>> required = effectiveRequirements(plugins, result);
    QVector<QSet<QString>> provided(count);
    QHash<QString, QVector<int>> requiredBy;
    QHash<QString, int> providers;
    for (int index = 0; index < count; ++index) {
        provided[index] = asSet(plugins.at(index).provided);
        for (const QString& service : provided[index]) {
            ++providers[service];
        }
        for (const QString& service : required[index]) {
            requiredBy[service].append(index);
        }
    }

    QVector<int> missing(count); // required services not yet available
    QVector<int> blockers(count); // (service, other unordered provider) pairs
    std::set<int> ready; // by rank
    std::set<int> waiting; // by rank: everything available, another provider unordered
    auto servicesAvailable = [&](int index) {
        (blockers[index] == 0 ? ready : waiting).insert(rank[index]);
    };
    for (int index = 0; index < count; ++index) {
        missing[index] = required[index].size();
        for (const QString& service : required[index]) {
            blockers[index]
                += providers.value(service) - (provided[index].contains(service) ? 1 : 0);
        }
        if (missing[index] == 0) {
            servicesAvailable(index);
        }
    }

    QSet<QString> available;
    QVector<bool> ordered(count, false);
    auto orderPlugin = [&](int index) {
        ordered[index] = true;
        result.order.append(plugins.at(index).name);
        result.events.append({Event::Ordered, {plugins.at(index).name, QString()}});
        for (const QString& service : provided[index]) {
            const bool newlyAvailable = !available.contains(service);
            available.insert(service);
            for (int other : requiredBy.value(service)) {
                if (other == index || ordered[other]) {
                    continue;
                }
                --blockers[other];
                if (newlyAvailable && --missing[other] == 0) {
                    servicesAvailable(other);
                } else if (missing[other] == 0 && blockers[other] == 0) {
                    waiting.erase(rank[other]);
                    ready.insert(rank[other]);
                }
            }
        }
    };
    // The waiting plug-ins a pass goes by between the ranks after and before.
    auto passWaiting = [&](int after, int before) {
        if (!withWaitingLines) {
            return;
        }
        for (auto it = waiting.upper_bound(after); it != waiting.end() && *it < before; ++it) {
            result.events.append({Event::NotOrdered, {plugins.at(byName[*it]).name, QString()}});
        }
    };

    int cursor = -1;
    int unordered = count;
    int pass = 1;
    bool orderedInPass = false;
    while (unordered > 0) {
        const auto next = ready.upper_bound(cursor);
        if (next == ready.end()) {
            passWaiting(cursor, count);
            if (!orderedInPass) {
                break;
            }
            cursor = -1;
            ++pass;
            orderedInPass = false;
            continue;
        }
        passWaiting(cursor, *next);
        cursor = *next;
        ready.erase(next);
        orderPlugin(byName[cursor]);
        result.passes.append(pass);
        --unordered;
        orderedInPass = true;
    }

    for (int index : byName) {
        if (!ordered[index]) {
            result.leftOver.append(plugins.at(index).name);
        }
    }
    return result;
}

QStringList PluginOrder::explainLeftOver(const QList<Plugin>& plugins, const Result& result)
{
    QHash<QString, const Plugin*> leftOver;
    QSet<QString> available;
    for (const Plugin& plugin : plugins) {
        if (result.leftOver.contains(plugin.name)) {
            leftOver.insert(plugin.name, &plugin);
        } else {
            available.unite(asSet(plugin.provided));
        }
    }

    // service -> left-over plug-ins providing it
    QHash<QString, QStringList> providers;
    for (const QString& name : result.leftOver) {
        for (const QString& service : asSet(leftOver.value(name)->provided)) {
            providers[service].append(name);
        }
    }

    QStringList lines;
    QHash<QString, QList<QPair<QString, QString>>> edges; // plug-in -> (service, provider)
    for (const QString& name : result.leftOver) {
        QStringList reasons;
        QStringList requiredServices = leftOver.value(name)->required;
        requiredServices.removeDuplicates();
        for (const QString& service : requiredServices) {
            QStringList others = providers.value(service);
            others.removeAll(name);
            if (available.contains(service) && others.isEmpty()) {
                continue;
            }
            for (const QString& provider : others) {
                edges[name].append({service, provider});
            }
            reasons << QStringLiteral("%1 (provided by %2)")
                           .arg(service,
                                others.isEmpty() ? QStringLiteral("nobody")
                                                 : others.join(QStringLiteral(", ")));
        }
        lines << QStringLiteral("%1 is missing: %2").arg(name, reasons.join(QStringLiteral(", ")));
    }

    // One cycle, found by depth-first search from the left-over plug-ins in name order.
    QHash<QString, int> state; // 1 on the path, 2 done
    QStringList path;
    std::function<QStringList(const QString&)> visit = [&](const QString& name) -> QStringList {
        state[name] = 1;
        path << name;
        for (const auto& edge : edges.value(name)) {
            if (state.value(edge.second) == 1) {
                QStringList cycle;
                for (int i = path.indexOf(edge.second); i < path.size(); ++i) {
                    cycle << path.at(i);
                    const auto step = std::find_if(
                        edges.value(path.at(i)).cbegin(), edges.value(path.at(i)).cend(),
                        [&](const QPair<QString, QString>& e) {
                            return e.second == (i + 1 < path.size() ? path.at(i + 1) : edge.second);
                        });
                    cycle << (i + 1 < path.size() ? step->first : edge.first);
                }
                cycle << edge.second;
                return cycle;
            }
            if (state.value(edge.second) == 0) {
                const QStringList cycle = visit(edge.second);
                if (!cycle.isEmpty()) {
                    return cycle;
                }
            }
        }
        path.removeLast();
        state[name] = 2;
        return {};
    };
    for (const QString& name : result.leftOver) {
        if (state.value(name) == 0) {
            const QStringList cycle = visit(name);
            if (!cycle.isEmpty()) {
                lines << QStringLiteral("cycle: ") + cycle.join(QStringLiteral(" -> "));
                break;
            }
        }
    }
    return lines;
}

} // namespace business
} // namespace base
} // namespace corvane
