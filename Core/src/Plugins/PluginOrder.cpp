#include "Plugins/PluginOrder.h"

#include <QHash>
#include <QSet>

#include <algorithm>
#include <functional>
#include <numeric>
#include <queue>
#include <set>
#include <vector>

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

// Numbers for service names, 0, 1, 2, ... in the order first seen: a table of views into the
// plug-ins' own texts (they outlive it), open addressing, so no copies, no counting and no
// allocation per name.
class ServiceNumbers
{
public:
    explicit ServiceNumbers(int expected) : buckets(capacityFor(expected), -1)
    {
        names.reserve(size_t(expected));
    }

    int numberOf(QStringView name)
    {
        const uint hash = hashOf(name);
        size_t slot = hash & (buckets.size() - 1);
        for (; buckets[slot] >= 0; slot = (slot + 1) & (buckets.size() - 1)) {
            if (hashes[size_t(buckets[slot])] == hash && names[size_t(buckets[slot])] == name) {
                return buckets[slot];
            }
        }
        const int number = int(names.size());
        buckets[slot] = number;
        names.push_back(name);
        hashes.push_back(hash);
        if (names.size() * 2 > buckets.size()) {
            grow();
        }
        return number;
    }

    /// -1 for a name never numbered.
    int find(QStringView name) const
    {
        const uint hash = hashOf(name);
        for (size_t slot = hash & (buckets.size() - 1); buckets[slot] >= 0;
             slot = (slot + 1) & (buckets.size() - 1)) {
            if (hashes[size_t(buckets[slot])] == hash && names[size_t(buckets[slot])] == name) {
                return buckets[slot];
            }
        }
        return -1;
    }

    int count() const { return int(names.size()); }

private:
    static size_t capacityFor(int expected)
    {
        size_t capacity = 16;
        while (capacity < size_t(expected) * 2) {
            capacity *= 2;
        }
        return capacity;
    }

    static uint hashOf(QStringView name)
    {
        uint hash = 2166136261u; // FNV-1a over the UTF-16 units
        for (const QChar character : name) {
            hash = (hash ^ character.unicode()) * 16777619u;
        }
        return hash;
    }

    void grow()
    {
        std::vector<int> larger(buckets.size() * 2, -1);
        for (int number = 0; number < count(); ++number) {
            size_t slot = hashes[size_t(number)] & (larger.size() - 1);
            while (larger[slot] >= 0) {
                slot = (slot + 1) & (larger.size() - 1);
            }
            larger[slot] = number;
        }
        buckets.swap(larger);
    }

    std::vector<int> buckets; // numbers, -1 where free
    std::vector<QStringView> names;
    std::vector<uint> hashes;
};

// The plug-ins with their services as numbers, each service name looked up once; the lists of
// all plug-ins lie one after the other (list i from start[i] to start[i + 1]).
struct Graph
{
    std::vector<int> providedStart;
    std::vector<int> provided; // per plug-in, sorted, without repeats
    std::vector<int> requiredStart;
    std::vector<int> required; // per plug-in: required and provided optional ones, likewise
    std::vector<int> providers; // per service: plug-ins providing it
    std::vector<int> requiredByStart;
    std::vector<int> requiredBy; // per service: the plug-ins requiring it

    Graph(const QList<Plugin>& plugins, PluginOrder::Result& result)
    {
        ServiceNumbers ids(plugins.size() * 2);
        const auto idOf = [&ids](QStringView service) {
            return ids.numberOf(service);
        };
        std::vector<int> list;
        const auto add = [&list](std::vector<int>& to, std::vector<int>& starts) {
            std::sort(list.begin(), list.end());
            list.erase(std::unique(list.begin(), list.end()), list.end());
            to.insert(to.end(), list.begin(), list.end());
            starts.push_back(int(to.size()));
            list.clear();
        };
        providedStart.push_back(0);
        requiredStart.push_back(0);
        for (const Plugin& plugin : plugins) {
            for (const QString& service : plugin.provided) {
                list.push_back(idOf(service));
            }
            add(provided, providedStart);
        }
        providers.assign(size_t(ids.count()), 0);
        for (int service : provided) {
            ++providers[size_t(service)];
        }
        // An optional service counts as required when some plug-in provides it.
        for (const Plugin& plugin : plugins) {
            for (const QString& service : plugin.required) {
                list.push_back(idOf(service));
            }
            for (const QString& service : plugin.optional) {
                const int id = ids.find(service);
                if (id >= 0 && id < int(providers.size()) && providers[size_t(id)] > 0) {
                    list.push_back(id);
                } else {
                    result.events.append({Event::OptionalServiceDropped, {plugin.name, service}});
                }
            }
            add(required, requiredStart);
        }
        providers.resize(size_t(ids.count()), 0); // services only required
        requiredByStart.assign(size_t(ids.count()) + 1, 0);
        for (int service : required) {
            ++requiredByStart[size_t(service) + 1];
        }
        std::partial_sum(requiredByStart.begin(), requiredByStart.end(), requiredByStart.begin());
        requiredBy.resize(required.size());
        std::vector<int> next(requiredByStart.begin(), requiredByStart.end() - 1);
        for (int index = 0; index < plugins.size(); ++index) {
            for (int service : requiredOf(index)) {
                requiredBy[size_t(next[size_t(service)]++)] = index;
            }
        }
    }

    struct Range
    {
        const int* first;
        const int* last;
        const int* begin() const { return first; }
        const int* end() const { return last; }
        int size() const { return int(last - first); }
    };
    static Range range(const std::vector<int>& lists, const std::vector<int>& starts, int index)
    {
        return {lists.data() + starts[size_t(index)], lists.data() + starts[size_t(index) + 1]};
    }
    Range providedOf(int plugin) const { return range(provided, providedStart, plugin); }
    Range requiredOf(int plugin) const { return range(required, requiredStart, plugin); }
    Range requiringOf(int service) const { return range(requiredBy, requiredByStart, service); }

    bool provides(int plugin, int service) const
    {
        const Range list = providedOf(plugin);
        return std::binary_search(list.begin(), list.end(), service);
    }
};

// Ranks to visit in a pass, smallest first.
using RankQueue = std::priority_queue<int, std::vector<int>, std::greater<int>>;

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
    result.order.reserve(count);
    result.passes.reserve(count);
    result.events.reserve(count);
    const size_t size = size_t(count);
    std::vector<int> byName(size);
    std::iota(byName.begin(), byName.end(), 0);
    std::vector<QStringView> names;
    names.reserve(size);
    for (const Plugin& plugin : plugins) {
        names.emplace_back(plugin.name);
    }
    std::stable_sort(byName.begin(), byName.end(), [&names](int a, int b) {
        return names[size_t(a)].compare(names[size_t(b)]) < 0;
    });
    std::vector<int> rank(size);
    for (int position = 0; position < count; ++position) {
        rank[size_t(byName[size_t(position)])] = position;
    }

    const Graph graph(plugins, result);
    std::vector<int> missing(size); // required services not yet available
    std::vector<int> blockers(size); // (service, other unordered provider) pairs
    for (int index = 0; index < count; ++index) {
        missing[size_t(index)] = graph.requiredOf(index).size();
        for (int service : graph.requiredOf(index)) {
            blockers[size_t(index)]
                += graph.providers[size_t(service)] - (graph.provides(index, service) ? 1 : 0);
        }
    }

    int cursor = -1;
    RankQueue thisPass;
    RankQueue nextPass;
    std::set<int> waiting; // by rank, only kept for the waiting lines
    const auto becomesReady = [&](int index) {
        // Its name will be copied once it is ordered; by then its text should be at hand.
        __builtin_prefetch(names[size_t(index)].data(), 1);
        const int at = rank[size_t(index)];
        (at > cursor ? thisPass : nextPass).push(at);
    };
    const auto servicesAvailable = [&](int index) {
        if (blockers[size_t(index)] == 0) {
            becomesReady(index);
        } else if (withWaitingLines) {
            waiting.insert(rank[size_t(index)]);
        }
    };
    for (int index = 0; index < count; ++index) {
        if (missing[size_t(index)] == 0) {
            servicesAvailable(index);
        }
    }

    std::vector<char> available(graph.providers.size(), 0);
    std::vector<char> ordered(size, 0);
    const auto orderPlugin = [&](int index) {
        ordered[size_t(index)] = 1;
        result.order.append(plugins.at(index).name);
        result.events.append({Event::Ordered, {plugins.at(index).name, QString()}});
        for (int service : graph.providedOf(index)) {
            const bool newlyAvailable = available[size_t(service)] == 0;
            available[size_t(service)] = 1;
            for (int other : graph.requiringOf(service)) {
                if (other == index || ordered[size_t(other)] != 0) {
                    continue;
                }
                --blockers[size_t(other)];
                if (newlyAvailable && --missing[size_t(other)] == 0) {
                    servicesAvailable(other);
                } else if (missing[size_t(other)] == 0 && blockers[size_t(other)] == 0) {
                    waiting.erase(rank[size_t(other)]);
                    becomesReady(other);
                }
            }
        }
    };
    // The waiting plug-ins a pass goes by between the ranks after and before.
    const auto passWaiting = [&](int after, int before) {
        for (auto it = waiting.upper_bound(after); it != waiting.end() && *it < before; ++it) {
            result.events.append(
                {Event::NotOrdered, {plugins.at(byName[size_t(*it)]).name, QString()}});
        }
    };

    int unordered = count;
    int pass = 1;
    bool orderedInPass = false;
    while (unordered > 0) {
        if (thisPass.empty()) {
            passWaiting(cursor, count);
            if (!orderedInPass) {
                break;
            }
            std::swap(thisPass, nextPass);
            cursor = -1;
            ++pass;
            orderedInPass = false;
            continue;
        }
        const int next = thisPass.top();
        thisPass.pop();
        passWaiting(cursor, next);
        cursor = next;
        orderPlugin(byName[size_t(next)]);
        result.passes.append(pass);
        --unordered;
        orderedInPass = true;
    }

    for (int index : byName) {
        if (ordered[size_t(index)] == 0) {
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
