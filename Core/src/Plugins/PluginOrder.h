#pragma once

#include "CoreExport.h"

#include <QList>
#include <QPair>
#include <QStringList>
#include <QVector>

namespace corvane {
namespace base {
namespace business {

/**
 * The start order of plug-ins from the services they provide and require, without any library.
 *
 * The order is that of passes over the unordered plug-ins in name order: a plug-in is ordered
 * when every service it requires is provided by a plug-in ordered before it (also earlier in
 * the same pass) and no other unordered plug-in provides one of them too; passes repeat while
 * one orders something. Optional requirements count only when some plug-in provides them.
 * Computed without repeating passes, so thousands of plug-ins order in milliseconds.
 */
class CORE_EXPORT PluginOrder
{
public:
    /// A plug-in as the ordering sees it: its name and services.
    struct Plugin
    {
        /// The plug-in's name.
        QString name;
        /// The services it provides.
        QStringList provided;
        /// The services that must be available before it starts.
        QStringList required;
        /// The services it uses when some plug-in provides them.
        QStringList optional;
    };

    /// What happened to a plug-in during the ordering.
    enum class Event { OptionalServiceDropped, NotOrdered, Ordered };

    /** \var Event::OptionalServiceDropped
     * An optional service that no plug-in provides was dropped from the plug-in's needs. */
    /** \var Event::NotOrdered
     * The plug-in waits for another unordered plug-in that provides a service it requires. */
    /** \var Event::Ordered
     * The plug-in was put into the start order. */

    /// The outcome of order().
    struct Result
    {
        /// The ordered plug-ins, in start order.
        QStringList order;
        /// The pass (from 1) in which each plug-in of order was ordered.
        QVector<int> passes;
        /// Plug-ins that could not be ordered, in name order.
        QStringList leftOver;
        /// What happened, in order: (event, plug-in name, service or empty). Optional services
        /// nobody provides come first, in the plug-ins' given order; then, pass by pass in name
        /// order, each plug-in ordered and each one reached while it still waits for another
        /// unordered provider of a service it requires (NotOrdered, once in every such pass).
        QVector<QPair<Event, QPair<QString, QString>>> events;
    };

    /// withWaitingLines false leaves out the NotOrdered events, which can be many (up to one
    /// per plug-in and pass) and are only wanted when they are logged.
    static Result order(const QList<Plugin>& plugins, bool withWaitingLines = true);

    /// Why the left-over plug-ins wait: for each one "<name> is missing: S (provided by B)"
    /// or "... (provided by nobody)", then any cycle among them ("A -> S1 -> B -> S2 -> A").
    static QStringList explainLeftOver(const QList<Plugin>& plugins, const Result& result);
};

} // namespace business
} // namespace base
} // namespace corvane
