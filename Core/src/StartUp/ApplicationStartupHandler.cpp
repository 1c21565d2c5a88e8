#include "StartUp/ApplicationStartupHandler.h"

#include "Exceptions/Exceptions.h"
#include "StartUp/LocalSocketStringMessageReceiver.h"
#include "StartUp/LocalSocketStringMessageSender.h"
#include "StartUp/PCCommandLineParser.h"
#include "StartUp/SingleInstanceLock.h"
#include "Utility/PrivateFolder.h"

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

QString guardDigest(const QString& singleAppId)
{
    return QString::fromLatin1(
        QCryptographicHash::hash(singleAppId.toUtf8(), QCryptographicHash::Sha1).toHex().left(16));
}

// The guard's files are named after the id and the user: as much of the id as is safe and
// short enough to read, and a digest of all of it, so that any text makes a good file name.
QString guardBaseName(const QString& singleAppId, int readableLength)
{
    QString readable = singleAppId.left(readableLength);
    readable.replace(QRegularExpression(QStringLiteral("[^A-Za-z0-9._-]")), QStringLiteral("_"));
    const QString digest = guardDigest(singleAppId);
    const QString user = QString::number(::getuid());
    return readable.isEmpty() ? QStringLiteral("%1-%2").arg(digest, user)
                              : QStringLiteral("%1-%2-%3").arg(readable, digest, user);
}

struct GuardFiles
{
    QString lock; // empty when there is no private folder for the files
    QString server; // the socket file
};

// The lock, the marker and the socket lie together in the user's private folder. A socket path
// must fit into sun_path: a long folder shortens the name, down to a part of the digest (the
// folder is the user's own, so the name need not tell the user). Only a folder too long for
// any name gives way, to the user's private folder in the temporary folder.
GuardFiles guardFilesOf(const QString& singleAppId)
{
    const QString socket = QStringLiteral(".socket");
    QString folder = core::utility::PrivateFolder::runtimeFolder();
    for (int pass = 0; pass < 2 && !folder.isEmpty(); ++pass) {
        const int room = longestSocketPath - QFile::encodeName(folder + QLatin1Char('/')).size()
            - socket.size();
        QStringList names {guardBaseName(singleAppId, 32), guardBaseName(singleAppId, 0)};
        if (room >= 8) {
            names << guardDigest(singleAppId).left(room);
        }
        for (const QString& name : qAsConst(names)) {
            const QString base = folder + QLatin1Char('/') + name;
            if (QFile::encodeName(base + socket).size() <= longestSocketPath) {
                return {base + QStringLiteral(".lock"), base + socket};
            }
        }
        folder = pass == 0 ? core::utility::PrivateFolder::fallbackFolder() : QString();
    }
    return {};
}

// A file name as the log shows it: a name longer than any real one is cut, so that a flood of
// long requests cannot push the log's earlier lines out.
QString shortened(const QString& file)
{
    constexpr int longestLogged = 1024;
    return file.size() <= longestLogged
        ? file
        : file.left(longestLogged) + QStringLiteral("... (%1 characters)").arg(file.size());
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
// the first does not listen yet (it is starting) it tries again until the time-out, and takes
// the lock itself once its holder has ended. The shared-memory marker is made for others to see
// but decides nothing: the lock and a connection that comes up do.
void ApplicationStartupHandler::initSingleApplicationGuard(QString singleAppId)
{
    const GuardFiles files = guardFilesOf(singleAppId);
    if (files.lock.isEmpty()) {
        throw exceptions::ConnectException(
            this, QStringLiteral("initSingleApplicationGuard"),
            QStringLiteral("Cannot take the single-instance lock: no private folder for it"));
    }
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
        notifyOtherInstanceAndQuit(files.server, deadline, *candidate);
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

namespace {

// Whether the lock's holder still runs, given a moment to end: its connection may close an
// instant before the system gives its lock back.
bool holderRuns(internal::SingleInstanceLock& lock)
{
    const QDeadlineTimer grace(500);
    while (lock.tryLock() == internal::SingleInstanceLock::HeldByAnother) {
        if (grace.hasExpired()) {
            return true;
        }
        QThread::msleep(10);
    }
    return false;
}

} // namespace

// Returns when nothing of the request was written (try again), or when the holder of the lock
// has ended (this instance holds the lock now). Ends with SilentExitException once the request
// is with a running instance: answered, or written whole to one that still holds the lock and
// reads it when it runs again. Ends with ConnectException when the running instance closed the
// connection before taking it, or took only part of it: such a request is never delivered, and
// is not sent again, so that none is delivered twice.
void ApplicationStartupHandler::notifyOtherInstanceAndQuit(const QString& serverName,
                                                           const QDeadlineTimer& deadline,
                                                           internal::SingleInstanceLock& lock)
{
    using Written = internal::LocalSocketStringMessageSender::Written;
    internal::LocalSocketStringMessageSender sender(
        serverName, int(std::clamp<qint64>(deadline.remainingTime(), 1, senderTimeout)));
    if (!sender.connectToRunningReceiver()) {
        return;
    }
    QStringList requests {raise};
    const QString file = getFileParameter();
    if (!file.isEmpty()) {
        requests << load + QFileInfo(file).absoluteFilePath();
    }
    const Written written = sender.sendValues(requests);
    if (written == Written::Nothing) {
        return;
    }
    const bool answered = written == Written::Whole
        && sender.waitForAcknowledgements(requests.size()) == requests.size();
    const bool open = sender.isConnected();
    sender.disconnectFromReceiver();
    if (!answered && !holderRuns(lock)) {
        return; // the lock is this instance's now
    }
    if (answered || (written == Written::Whole && open)) {
        if (!answered) {
            qWarning().noquote() << QStringLiteral("notifyOtherInstanceAndQuit: the running "
                                                   "instance has the request but has not "
                                                   "answered yet: ")
                    + serverName;
        }
        throw exceptions::SilentExitException(this, QStringLiteral("notifyOtherInstanceAndQuit"));
    }
    throw exceptions::ConnectException(
        this, QStringLiteral("notifyOtherInstanceAndQuit"),
        QStringLiteral("The running instance did not take the request: ") + serverName);
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
                + shortened(message.mid(load.size()));
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
