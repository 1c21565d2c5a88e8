#include "StartUp/ApplicationStartupHandler.h"

#include "Exceptions/Exceptions.h"
#include "StartUp/LocalSocketStringMessageReceiver.h"
#include "StartUp/LocalSocketStringMessageSender.h"
#include "StartUp/PCCommandLineParser.h"
#include "StartUp/SingleInstanceLock.h"

#include <QApplication>
#include <QCryptographicHash>
#include <QDeadlineTimer>
#include <QDebug>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QLocalServer>
#include <QMessageBox>
#include <QMutex>
#include <QMutexLocker>
#include <QRegularExpression>
#include <QThread>
#include <QTranslator>

#include <algorithm>

#include <unistd.h>

namespace corvane {
namespace base {
namespace business {

namespace {

const QString raise = QStringLiteral("raise");
const QString load = QStringLiteral("load:");

// Longest socket path that Linux takes (sun_path holds 108 bytes with the terminating zero).
constexpr int longestSocketPath = 107;

// The folder of the guard's files: the user's own runtime folder, else the temporary folder,
// else /tmp; the first of them that exists.
QString guardFolder()
{
    const QString runtime = QString::fromLocal8Bit(qgetenv("XDG_RUNTIME_DIR"));
    for (const QString& folder : {runtime, QDir::tempPath(), QStringLiteral("/tmp")}) {
        if (!folder.isEmpty() && QFileInfo(folder).isDir()) {
            return QDir::cleanPath(folder);
        }
    }
    return QStringLiteral("/tmp");
}

// The guard's files are named after the id and the user: as much of the id as is safe and
// short enough to read, and a digest of all of it, so that any text makes a good file name.
QString guardBaseName(const QString& singleAppId, int readableLength)
{
    QString readable = singleAppId.left(readableLength);
    readable.replace(QRegularExpression(QStringLiteral("[^A-Za-z0-9._-]")), QStringLiteral("_"));
    const QByteArray digest
        = QCryptographicHash::hash(singleAppId.toUtf8(), QCryptographicHash::Sha1).toHex().left(16);
    const QString user = QString::number(::getuid());
    return readable.isEmpty()
        ? QStringLiteral("%1-%2").arg(QString::fromLatin1(digest), user)
        : QStringLiteral("%1-%2-%3").arg(readable, QString::fromLatin1(digest), user);
}

struct GuardFiles
{
    QString lock;
    QString server; // the socket file
};

GuardFiles guardFilesOf(const QString& singleAppId)
{
    const QString folder = guardFolder();
    for (int readable : {32, 0}) {
        const QString base = folder + QLatin1Char('/') + guardBaseName(singleAppId, readable);
        if (QFile::encodeName(base + QStringLiteral(".socket")).size() <= longestSocketPath) {
            return {base + QStringLiteral(".lock"), base + QStringLiteral(".socket")};
        }
    }
    // A runtime folder with a path this long is rare; the socket then goes to /tmp.
    const QString base = guardBaseName(singleAppId, 0);
    return {folder + QLatin1Char('/') + base + QStringLiteral(".lock"),
            QStringLiteral("/tmp/") + base + QStringLiteral(".socket")};
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

// The instance that takes the lock is the first one. A later one hands its request over; while
// the first does not answer yet (it is starting) it tries again until the time-out, and takes
// the lock itself once its holder has ended.
void ApplicationStartupHandler::initSingleApplicationGuard(QString singleAppId)
{
    const GuardFiles files = guardFilesOf(singleAppId);
    auto candidate = std::make_unique<internal::SingleInstanceLock>(files.lock);
    const QDeadlineTimer deadline(senderTimeout);
    for (;;) {
        const internal::SingleInstanceLock::Result result = candidate->tryLock();
        if (result == internal::SingleInstanceLock::Taken) {
            break;
        }
        if (result == internal::SingleInstanceLock::Failed) {
            throw exceptions::ConnectException(
                this, QStringLiteral("initSingleApplicationGuard"),
                QStringLiteral("Cannot take the single-instance lock %1: %2")
                    .arg(files.lock, candidate->errorString()));
        }
        notifyOtherInstanceAndQuit(files.server, deadline);
        if (deadline.hasExpired()) {
            throw exceptions::ConnectException(
                this, QStringLiteral("notifyOtherInstanceAndQuit"),
                QStringLiteral("The running instance does not answer: ") + files.server);
        }
        QThread::msleep(50);
    }
    lock = std::move(candidate);
    QLocalServer::removeServer(files.server); // left by an ended first instance, if at all
    receiver = std::make_unique<internal::LocalSocketStringMessageReceiver>(files.server);
    if (!receiver->start([this](QString message) { return handleMessage(message); })) {
        release();
        throw exceptions::ConnectException(this, QStringLiteral("initSingleApplicationGuard"),
                                           QStringLiteral("Cannot listen as ") + files.server);
    }
    // Given back with the application object, after the managers were taken down.
    connect(QCoreApplication::instance(), &QObject::destroyed, this,
            &ApplicationStartupHandler::release, Qt::UniqueConnection);
}

// Returns when the request could not be delivered (yet); ends with SilentExitException once the
// running instance has taken it.
void ApplicationStartupHandler::notifyOtherInstanceAndQuit(const QString& serverName,
                                                           const QDeadlineTimer& deadline)
{
    internal::LocalSocketStringMessageSender sender(
        serverName, int(std::clamp<qint64>(deadline.remainingTime(), 1, senderTimeout)));
    if (!sender.connectToReceiver()) {
        return;
    }
    QStringList requests {raise};
    const QString file = getFileParameter();
    if (!file.isEmpty()) {
        requests << load + QFileInfo(file).absoluteFilePath();
    }
    for (const QString& request : qAsConst(requests)) {
        sender.sendValue(request);
        if (!sender.waitForAcknowledgement()) {
            return;
        }
    }
    sender.disconnectFromReceiver();
    throw exceptions::SilentExitException(this, QStringLiteral("notifyOtherInstanceAndQuit"));
}

void ApplicationStartupHandler::holdRequests()
{
    holding = true;
}

void ApplicationStartupHandler::deliverHeldRequests()
{
    holding = false;
    while (!held.isEmpty()) {
        deliver(held.takeFirst());
    }
}

bool ApplicationStartupHandler::handleMessage(const QString& message)
{
    if (message != raise && !message.startsWith(load)) {
        qWarning().noquote() << QStringLiteral("handleMessage: unknown request ignored: ")
                + message.left(100);
        return false;
    }
    if (message == raise) {
        qInfo("handleMessage: raise requested");
    } else {
        qInfo().noquote() << QStringLiteral("handleMessage: load requested: ")
                + message.mid(load.size());
    }
    if (holding) {
        held.append(message);
    } else {
        deliver(message);
    }
    return true;
}

void ApplicationStartupHandler::deliver(const QString& message)
{
    if (message == raise) {
        emit raiseRequest();
    } else {
        emit loadRequest(message.mid(load.size()));
    }
}

void ApplicationStartupHandler::release()
{
    receiver.reset();
    lock.reset();
}

} // namespace business
} // namespace base
} // namespace corvane
