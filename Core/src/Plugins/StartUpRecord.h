#pragma once

#include "CoreExport.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace corvane {
namespace base {
namespace business {

/// What a start does about the plug-in that ended the last start.
enum class LastStartChoice { StartWithIt, LeaveOutThisTime, DisableUntilEnabled };

/** \var StartWithIt
 * Start with the plug-in as usual. */
/** \var LeaveOutThisTime
 * Leave the plug-in out of this start only. */
/** \var DisableUntilEnabled
 * Disable the plug-in until it is enabled again. */
/** \namespace corvane::base::business
 * The framework's own workings: the start, the managers of configuration, logging, plug-ins
 * and services, single instances and services run in the background. */
/**
 * What a start leaves in the user's state folder ($XDG_STATE_HOME/\<application\>/, else
 * ~/.local/state/\<application\>/, created for the user alone):
 *
 * - while plug-ins are loaded and initialized, a record "start-<pid>" of the library being
 *   loaded or the plug-in being initialized, removed once the start is done or has failed
 *   cleanly. A start that crashes, aborts or is killed leaves it behind: the next start finds
 *   it and knows which plug-in ended the last one. The first write creates the whole file
 *   (written beside it, then renamed), so that even a kill between two writes leaves a
 *   complete record (later phases rewrite it in place in one write, padded with blank lines
 *   to its size, so that a record is always whole);
 * - "disabled-plugins", the plug-ins the user chose to disable after one ended a start, one
 *   name a line, until they are enabled again.
 *
 * Files are opened without following links and closed on exec; a state folder that is a link
 * or that others may write to is not used.
 */
class CORE_EXPORT StartUpRecord
{
public:
    /// The phase of a record while a plug-in's library is loaded.
    static const QString loading;      // "loading"
    /// The phase of a record while a plug-in is initialized.
    static const QString initializing; // "initializing"

    /// One record of a start.
    struct Entry
    {
        /// What the start was doing: loading or initializing.
        QString phase; // loading or initializing
        /// The plug-in being initialized.
        QString plugin; // empty while its library loads
        /// The plug-in's library.
        QString library; // as configured
        /// The id of the process that wrote the record.
        qint64 pid = 0;

        /// Whether there is no record (no phase).
        bool isNull() const { return phase.isEmpty(); }
        /// The plug-in's name, or while loading its library's stem ("Crash" for "Crash.dll").
        QString name() const;
    };

    /// The records of the application in its folder of the state home; creates nothing yet.
    explicit StartUpRecord(const QString& applicationName);
    ~StartUpRecord();

    /// $XDG_STATE_HOME (when absolute), else ~/.local/state.
    static QString stateHome();
    /// The application's folder in the state home.
    QString folder() const;
    /// Why the last write or read failed; empty when it did not.
    QString errorString() const;

    /// The record of the newest start that ended while starting its plug-ins (its process is
    /// gone); a null entry when there is none. Records of starts still under way are skipped.
    Entry lastEndedStart() const;
    /// Removes the records of ended starts (once they were reported).
    void removeEndedStarts();

    /// Records that this process is loading the library; whether the record was written.
    bool recordLoading(const QString& library);
    /// Records that this process is initializing the plug-in of the library; whether the record
    /// was written.
    bool recordInitializing(const QString& plugin, const QString& library);
    /// Removes this process's record.
    void clear();

    /// The plug-ins the user disabled, each once, in the order they were disabled.
    QStringList disabledPlugins() const;
    /// Adds the name to the disabled plug-ins; whether the list was written.
    bool disable(const QString& name);
    /// Takes the name off the disabled plug-ins and removes the records of ended starts that
    /// name it; whether there was anything to clear.
    bool enable(const QString& name);

    /// The trace of the last start ("startup-trace.json"), kept for corvane-plugins.
    bool storeTrace(const QByteArray& json);
    /// The trace of the last start that was stored; empty when there is none.
    QByteArray storedTrace() const;

private:
    struct Record
    {
        QString file;
        Entry entry;
        qint64 modified = 0;
    };
    QList<Record> endedStarts() const;
    bool write(const QString& file, const QByteArray& content);
    bool rewriteOwnRecord(QByteArray content);
    void closeOwnRecord();
    QByteArray read(const QString& file) const;
    void remove(const QString& file) const;
    int openFolder(bool create) const;

    QString path;
    QString ownRecord;
    mutable QString error;
    // This start's record, kept open once written: each phase rewrites it in place.
    int ownRecordFile = -1;
    int ownRecordSize = 0;
    QByteArray ownStartTime;
};

} // namespace business
} // namespace base
} // namespace corvane
