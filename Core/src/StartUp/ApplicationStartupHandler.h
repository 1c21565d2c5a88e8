#pragma once

#include "CoreExport.h"

#include <QObject>
#include <QString>

#include <memory>

class QApplication;
class QCoreApplication;
class QLockFile;
class QTranslator;

namespace corvane {
namespace base {
namespace business {
namespace internal {
class LocalSocketStringMessageReceiver;
}

/**
 * Start-up translations, the file parameter of the command line, and the single-application
 * guard: with a single-application id, the first instance of a user runs and receives the
 * requests of later ones (raiseRequest(), loadRequest(file)); a later instance hands "raise"
 * and "load:<absolute file>" over and ends with -1.
 *
 * The first instance is the one that holds a lock file for the id and the user; a lock left by
 * a killed instance is recognised by its process id, and what that instance left (socket name,
 * shared-memory marker) is cleared by the next first instance only.
 */
class CORE_EXPORT ApplicationStartupHandler : public QObject
{
    Q_OBJECT

public:
    /// How long a later instance tries to reach the first one, in milliseconds.
    static constexpr int senderTimeout = 10000;

    static ApplicationStartupHandler* instance();
    ~ApplicationStartupHandler() override;

    /// Loads the locale's "StartUp" translation from directory + "//translations".
    bool loadTranslator(QTranslator& translator, QString directory);
    /// Installs the start-up translation for as long as this call runs.
    void initializeTranslator(QCoreApplication& application);
    QString getFileParameter() const;

    /// 1 first instance, -1 another one runs and got the request, -2 framework error, -3 other.
    int getSingleApplicationGuardExitCode(const QString& singleAppId);
    int getSingleGuiApplicationGuardExitCode(QApplication& application, const QString& singleAppId,
                                             bool userNotification);
    int getSingleConsoleApplicationGuardExitCode(QCoreApplication& application,
                                                 const QString& singleAppId, bool userNotification);

    void initialize(QString singleAppId);
    void initSingleApplicationGuard(QString singleAppId);

signals:
    void raiseRequest();
    void loadRequest(QString file);

private:
    ApplicationStartupHandler();
    Q_DISABLE_COPY(ApplicationStartupHandler)

    [[noreturn]] void notifyOtherInstanceAndQuit(const QString& serverName);
    bool handleMessage(const QString& message);
    void release();

    std::unique_ptr<QLockFile> lock;
    std::unique_ptr<internal::LocalSocketStringMessageReceiver> receiver;
};

} // namespace business
} // namespace base
} // namespace corvane
