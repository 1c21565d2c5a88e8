#pragma once

#include "CoreExport.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <memory>

class QApplication;
class QCoreApplication;
class QDeadlineTimer;
class QTranslator;

namespace corvane {
namespace base {
namespace business {
namespace internal {
class LocalSocketStringMessageReceiver;
class SingleInstanceLock;
} // namespace internal

/**
 * Start-up translations, the file parameter of the command line, and the single-application
 * guard: with a single-application id, the first instance of a user runs and receives the
 * requests of later ones (raiseRequest(), loadRequest(file)); a later instance hands "raise"
 * and "load:<absolute file>" over and ends with -1 once the first has taken them.
 *
 * The first instance is the one that holds a lock on a file named after the id and the user,
 * in $XDG_RUNTIME_DIR (else the temporary folder); the system gives that lock back however the
 * instance ends, so a killed first instance is replaced by the next start. A lock that cannot
 * be taken at all ends the start with -2 at once.
 */
class CORE_EXPORT ApplicationStartupHandler : public QObject
{
    Q_OBJECT

public:
    /// How long a later instance tries to reach the first one, in milliseconds.
    static constexpr int senderTimeout = 10000;

    /// The process-wide handler, created on first call.
    static ApplicationStartupHandler* instance();
    ~ApplicationStartupHandler() override;

    /// Loads the locale's "StartUp" translation from directory + "//translations".
    bool loadTranslator(QTranslator& translator, QString directory);
    /// Installs the start-up translation for as long as this call runs.
    void initializeTranslator(QCoreApplication& application);
    /// The file the user passed on the command line (see PCCommandLineParser), or empty.
    QString getFileParameter() const;

    /// 1 first instance, -1 another one runs and got the request, -2 framework error, -3 other.
    int getSingleApplicationGuardExitCode(const QString& singleAppId);
    /// getSingleApplicationGuardExitCode() for a GUI application; with userNotification, a later
    /// instance tells the user in a message box that only one instance may run.
    int getSingleGuiApplicationGuardExitCode(QApplication& application, const QString& singleAppId,
                                             bool userNotification);
    /// getSingleApplicationGuardExitCode() for a console application; nothing is shown.
    int getSingleConsoleApplicationGuardExitCode(QCoreApplication& application,
                                                 const QString& singleAppId, bool userNotification);

    /// Sets the single-application guard up for singleAppId (initSingleApplicationGuard()).
    void initialize(QString singleAppId);
    /// Makes this the first instance of singleAppId and starts receiving the requests of later
    /// ones; in a later instance hands "raise" (and "load:<file>") to the first one and throws
    /// SilentExitException once it has taken them. Throws ConnectException when the lock cannot be
    /// taken, the first instance does not answer in time, or listening fails.
    void initSingleApplicationGuard(QString singleAppId);

    /// Keeps the requests that arrive from now on, for a start that is still under way: the
    /// framework holds them while its plug-ins start, so that none is signalled to nobody.
    void holdRequests();
    /// Signals the held requests in the order they came, and each later one at once.
    void deliverHeldRequests();

signals:
    /// A later instance asks this first one to bring itself to the front.
    void raiseRequest();
    /// A later instance asks this first one to load file (an absolute path).
    void loadRequest(QString file);

private:
    ApplicationStartupHandler();
    Q_DISABLE_COPY(ApplicationStartupHandler)

    void notifyOtherInstanceAndQuit(const QString& serverName, const QDeadlineTimer& deadline,
                                    internal::SingleInstanceLock& lock);
    bool handleMessage(const QString& message);
    void deliver(const QString& message);
    void release();

    std::unique_ptr<internal::SingleInstanceLock> lock;
    std::unique_ptr<internal::LocalSocketStringMessageReceiver> receiver;
    bool holding = false;
    QStringList held;
};

} // namespace business
} // namespace base
} // namespace corvane
