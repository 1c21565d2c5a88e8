#pragma once

#include "CoreExport.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QList>
#include <QMutex>
#include <QString>

#include <functional>

namespace corvane {
namespace base {
namespace business {

/**
 * The time line of the start: the configuration reading, logging set-up, single-instance
 * check, each plug-in's load, the ordering and each plug-in's initialize, until the event loop
 * runs. Kept in memory for every start (the demo's plug-in table shows it); written as a trace
 * in the Trace Event Format (complete events, times in microseconds) to the file that
 * CORVANE_STARTUP_TRACE names and to the user's state folder, once the event loop runs.
 */
class CORE_EXPORT StartUpTrace
{
public:
    /// One phase of the start: a complete event of the trace.
    struct Event
    {
        /// The phase's name.
        QString phase; // "load", "initialize", "order plug-ins", ...
        /// The plug-in the phase belongs to.
        QString plugin; // empty for the framework's own phases
        /// When the phase began, in milliseconds since the time line started.
        double startMs = 0;
        /// How long the phase took, in milliseconds.
        double durationMs = 0;

        /// The event's name in the trace: the phase, followed by the plug-in when there is one.
        QString name() const { return plugin.isEmpty() ? phase : phase + QLatin1Char(' ') + plugin; }
    };

    /// Measures from its construction to its destruction.
    class Span
    {
    public:
        /// Starts measuring the phase (of the plug-in, when one is given); the destructor
        /// records it.
        explicit Span(QString phase, QString plugin = QString());
        ~Span();
        /// Sets the plug-in the phase is recorded for (when it is known only later).
        void setPlugin(const QString& plugin);

    private:
        Q_DISABLE_COPY(Span)
        QString phase;
        QString plugin;
        qint64 start;
    };

    /// The process's time line.
    static StartUpTrace* instance();

    /// Starts the time line anew (the runner's first step) and takes the file that
    /// CORVANE_STARTUP_TRACE names, relative to the current folder.
    void begin();
    /// The nanoseconds since the time line started.
    qint64 nanoseconds() const;
    /// Records a phase (of the plug-in, unless it is empty) that ran from startNs to endNs,
    /// both in nanoseconds since the time line started.
    void add(const QString& phase, const QString& plugin, qint64 startNs, qint64 endNs);
    /// The phases recorded so far, in the order they were added.
    QList<Event> events() const;
    /// The last duration of a plug-in's phase in milliseconds; a negative value when none.
    double milliseconds(const QString& plugin, const QString& phase) const;

    /// Once the event loop runs: adds the whole "start-up", writes the trace to the file of
    /// CORVANE_STARTUP_TRACE and hands it to store (for the state folder).
    template <typename Store>
    void finishWhenEventLoopRuns(Store store);

    /// The trace in the Trace Event Format (indented JSON): the process's name, then a complete
    /// event for each phase recorded.
    QByteArray toJson(const QString& processName) const;
    /// The complete events of a trace; sets error for one that cannot be read.
    static QList<Event> fromJson(const QByteArray& json, QString* error);

private:
    StartUpTrace();
    void queueFinish(std::function<void(const QByteArray&)> store);
    void finish(const std::function<void(const QByteArray&)>& store);

    mutable QMutex mutex;
    QElapsedTimer clock;
    QList<Event> recorded;
    QString traceFile;
    bool finishing = false;
};

template <typename Store>
void StartUpTrace::finishWhenEventLoopRuns(Store store)
{
    queueFinish(std::function<void(const QByteArray&)>(std::move(store)));
}

} // namespace business
} // namespace base
} // namespace corvane
