#include "StartUp/ApplicationStartupHandler.h"

#include "Exceptions/Exceptions.h"
#include "StartUp/LocalSocketStringMessageReceiver.h"
#include "StartUp/LocalSocketStringMessageSender.h"
#include "StartUp/PCCommandLineParser.h"

#include <QApplication>
#include <QDebug>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QLocalServer>
#include <QLockFile>
#include <QMessageBox>
#include <QMutex>
#include <QMutexLocker>
#include <QThread>
#include <QTranslator>

#include <unistd.h>

namespace corvane {
namespace base {
namespace business {

namespace {

const QString raise = QStringLiteral("raise");
const QString load = QStringLiteral("load:");

// Scoped to the user, so that every user of a machine has a first instance of their own.
QString serverNameOf(const QString& singleAppId)
{
    return QStringLiteral("%1-%2").arg(singleAppId).arg(::getuid());
}

} // namespace

ApplicationStartupHandler* ApplicationStartupHandler::instance()
{
    static QMutex mutex;
    QMutexLocker locker(&mutex);
    static ApplicationStartupHandler handler;
    return &handler;
}

ApplicationStartupHandler::ApplicationStartupHandler() = default;

ApplicationStartupHandler::~ApplicationStartupHandler() = default;

bool ApplicationStartupHandler::loadTranslator(QTranslator& translator, QString directory)
{
    directory.append(QStringLiteral("//translations"));
    return translator.load(QLocale(), QStringLiteral("StartUp"), QStringLiteral("_"), directory,
                           QString());
}

// The translator goes with the call: the start-up texts need it only for this moment.
void ApplicationStartupHandler::initializeTranslator(QCoreApplication&)
{
    QTranslator translator;
    if (loadTranslator(translator, QCoreApplication::applicationDirPath())) {
        QCoreApplication::installTranslator(&translator);
    }
}

QString ApplicationStartupHandler::getFileParameter() const
{
    PCCommandLineParser parser;
    parser.parse(QCoreApplication::arguments());
    return parser.getConfigFilePath();
}

int ApplicationStartupHandler::getSingleApplicationGuardExitCode(const QString& singleAppId)
{
    try {
        initSingleApplicationGuard(singleAppId);
        return 1;
    } catch (const exceptions::SilentExitException&) {
        return -1;
    } catch (const exceptions::BaseException& e) {
        qCritical().noquote() << e.what();
        return -2;
    } catch (...) {
        return -3;
    }
}

int ApplicationStartupHandler::getSingleGuiApplicationGuardExitCode(QApplication& application,
                                                                    const QString& singleAppId,
                                                                    bool userNotification)
{
    const int code = getSingleApplicationGuardExitCode(singleAppId);
    if (code != -1) {
        return code;
    }
    qInfo("Application was already open.");
    if (userNotification) {
        initializeTranslator(application);
        // initializeTranslator()'s translator is gone when it returns; the box's text needs one
        // for as long as it is made and shown.
        QTranslator translator;
        if (loadTranslator(translator, QCoreApplication::applicationDirPath())) {
            QCoreApplication::installTranslator(&translator);
        }
        QMessageBox::information(nullptr, QGuiApplication::applicationDisplayName(),
                                 tr("GUI: The program has already been started.\nHowever, only one "
                                    "instance may run.\nTherefore, this instance is terminated."));
    }
    return -1;
}

int ApplicationStartupHandler::getSingleConsoleApplicationGuardExitCode(QCoreApplication&,
                                                                        const QString& singleAppId,
                                                                        bool)
{
    const int code = getSingleApplicationGuardExitCode(singleAppId);
    if (code == -1) {
        qInfo("Application was already open.");
    }
    return code;
}

void ApplicationStartupHandler::initialize(QString singleAppId)
{
    initSingleApplicationGuard(std::move(singleAppId));
}

// Deciding and starting happen under the lock, so that of instances started at once exactly
// one becomes the first. A successful listen() alone proves nothing: with user access set,
// Qt takes over a live server's name.
void ApplicationStartupHandler::initSingleApplicationGuard(QString singleAppId)
{
    const QString serverName = serverNameOf(singleAppId);
    auto candidate = std::make_unique<QLockFile>(QDir::tempPath() + QLatin1Char('/') + serverName
                                                 + QStringLiteral(".lock"));
    candidate->setStaleLockTime(0); // only a dead owner makes the lock stale, never its age
    if (!candidate->tryLock(0)) {
        notifyOtherInstanceAndQuit(serverName);
    }
    lock = std::move(candidate);
    QLocalServer::removeServer(serverName); // left by a killed first instance, if at all
    receiver = std::make_unique<internal::LocalSocketStringMessageReceiver>(serverName);
    if (!receiver->start([this](QString message) { return handleMessage(message); })) {
        release();
        throw exceptions::ConnectException(this, QStringLiteral("initSingleApplicationGuard"),
                                           QStringLiteral("Cannot listen as ") + serverName);
    }
    connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, this,
            &ApplicationStartupHandler::release, Qt::UniqueConnection);
}

void ApplicationStartupHandler::notifyOtherInstanceAndQuit(const QString& serverName)
{
    internal::LocalSocketStringMessageSender sender(serverName, senderTimeout);
    QElapsedTimer waited;
    waited.start();
    // The first instance may be about to listen: try again until the time-out.
    while (!sender.connectToReceiver()) {
        if (waited.elapsed() > senderTimeout) {
            throw exceptions::ConnectException(
                this, QStringLiteral("notifyOtherInstanceAndQuit"),
                QStringLiteral("The running instance does not answer: ") + serverName);
        }
        QThread::msleep(50);
    }
    sender.sendValue(raise);
    const QString file = getFileParameter();
    if (!file.isEmpty()) {
        sender.sendValue(load + QFileInfo(file).absoluteFilePath());
    }
    sender.disconnectFromReceiver();
    throw exceptions::SilentExitException(this, QStringLiteral("notifyOtherInstanceAndQuit"));
}

bool ApplicationStartupHandler::handleMessage(const QString& message)
{
    if (message == raise) {
        qInfo("handleMessage: raise requested");
        emit raiseRequest();
        return true;
    }
    if (message.startsWith(load)) {
        qInfo().noquote() << QStringLiteral("handleMessage: load requested: ")
                + message.mid(load.size());
        emit loadRequest(message.mid(load.size()));
        return true;
    }
    qWarning().noquote() << QStringLiteral("handleMessage: unknown request ignored: ")
            + message.left(100);
    return false;
}

void ApplicationStartupHandler::release()
{
    receiver.reset();
    lock.reset();
}

} // namespace business
} // namespace base
} // namespace corvane
