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

/**
 * What a start leaves in the user's state folder ($XDG_STATE_HOME/<application>/, else
 * ~/.local/state/<application>/, created for the user alone):
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
    static const QString loading;      // "loading"
    static const QString initializing; // "initializing"

    /// One record of a start.
    struct Entry
    {
        QString phase; // loading or initializing
        QString plugin; // empty while its library loads
        QString library; // as configured
        qint64 pid = 0;

        bool isNull() const { return phase.isEmpty(); }
        /// The plug-in's name, or while loading its library's stem ("Crash" for "Crash.dll").
        QString name() const;
    };

    explicit StartUpRecord(const QString& applicationName);
    ~StartUpRecord();

    /// $XDG_STATE_HOME (when absolute), else ~/.local/state.
    static QString stateHome();
    QString folder() const;
    /// Why the last write or read failed; empty when it did not.
    QString errorString() const;

    /// The record of the newest start that ended while starting its plug-ins (its process is
    /// gone); a null entry when there is none. Records of starts still under way are skipped.
    Entry lastEndedStart() const;
    /// Removes the records of ended starts (once they were reported).
    void removeEndedStarts();

    bool recordLoading(const QString& library);
    bool recordInitializing(const QString& plugin, const QString& library);
    /// Removes this process's record.
    void clear();

    QStringList disabledPlugins() const;
    bool disable(const QString& name);
    /// Takes the name off the disabled plug-ins and removes the records of ended starts that
    /// name it; whether there was anything to clear.
    bool enable(const QString& name);

    /// The trace of the last start ("startup-trace.json"), kept for corvane-plugins.
    bool storeTrace(const QByteArray& json);
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
