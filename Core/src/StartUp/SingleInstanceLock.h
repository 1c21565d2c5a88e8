#pragma once

#include "CoreExport.h"

#include <QString>

namespace corvane {
namespace base {
namespace business {
namespace internal {

/**
 * The lock that makes one instance the first: an advisory lock (flock) on a file, which the
 * system gives back when its holder ends in any way, a crash or SIGKILL too. So a lock file is
 * never stale, whatever it holds; the holder writes its process id into it for people to read.
 * The file stays when the lock is given back: removing it could let two instances lock two
 * different files of the same name.
 */
class CORE_EXPORT SingleInstanceLock
{
public:
    /// The outcome of tryLock().
    enum Result { Taken, HeldByAnother, Failed };
    /** \var Taken
     * This instance holds the lock now. */
    /** \var HeldByAnother
     * Another process holds the lock. */
    /** \var Failed
     * The lock file could not be opened or locked. */

    /// A lock on the file at path; nothing is locked until tryLock().
    explicit SingleInstanceLock(QString path);
    ~SingleInstanceLock();

    /// Takes the lock if nobody holds it, without waiting.
    Result tryLock();
    /// Why the last tryLock() failed.
    QString errorString() const;
    /// The lock file's path.
    QString path() const;

private:
    Q_DISABLE_COPY(SingleInstanceLock)

    QString filePath;
    QString error;
    int descriptor = -1;
};

} // namespace internal
} // namespace business
} // namespace base
} // namespace corvane
