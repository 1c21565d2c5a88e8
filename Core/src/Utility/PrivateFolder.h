#pragma once

#include "CoreExport.h"

#include <QString>

namespace corvane {
namespace base {
namespace core {
namespace utility {

/**
 * A folder that only its user can enter, for sockets, locks and other files that another user
 * must neither read, replace nor plant: $XDG_RUNTIME_DIR when it is private, else a folder of
 * the user's own in the temporary folder ("corvane-runtime-<uid>"), created with mode 0700.
 * A folder is private when it is a real folder (not a symbolic link), belongs to the effective
 * user and has mode 0700; one that is not is never used, and the refusal is a critical line.
 */
class CORE_EXPORT PrivateFolder
{
public:
    /// The user's private runtime folder; empty, after a critical line, when there is none.
    static QString runtimeFolder();
    /// The folder of the user's own in the temporary folder, created when missing; empty,
    /// after a critical line, when it cannot be created or is not private.
    static QString fallbackFolder();
    /// Whether the path is a private folder; else why not, in reason.
    static bool isPrivate(const QString& path, QString* reason = nullptr);
    /**
     * Opens (and with O_CREAT creates, mode 0600) a file in a private folder without following
     * a symbolic link, close-on-exec, and checks the open file: a regular file of the effective
     * user with one name. Returns the descriptor, or -1 with the reason.
     */
    static int openFile(const QString& path, int flags, QString* reason = nullptr);
};

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
