#include "Plugins/StartUpRecord.h"

#include "Plugins/PluginManager.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace corvane {
namespace base {
namespace business {

const QString StartUpRecord::loading = QStringLiteral("loading");
const QString StartUpRecord::initializing = QStringLiteral("initializing");

namespace {

const QString recordPrefix = QStringLiteral("start-");
const QString disabledFile = QStringLiteral("disabled-plugins");
const QString traceFile = QStringLiteral("startup-trace.json");
constexpr qint64 largestFile = 4 * 1024 * 1024;

// The process's start time in clock ticks since boot (field 22 of /proc/<pid>/stat), which
// tells a process from a later one that got the same id; empty when there is no such process
// or it has ended (a zombie).
QByteArray startTimeOf(qint64 pid)
{
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly)) {
        return {};
    }
    const QByteArray text = stat.readAll();
    const QList<QByteArray> fields = text.mid(text.lastIndexOf(')') + 2).split(' ');
    return fields.size() > 19 && fields.at(0) != "Z" ? fields.at(19) : QByteArray();
}

// A file name or application name as one safe path component.
QString componentOf(QString name)
{
    name.replace(QLatin1Char('/'), QLatin1Char('_'));
    return name.isEmpty() || name == QLatin1String(".") || name == QLatin1String("..")
        ? QStringLiteral("_") + name
        : name;
}

} // namespace

QString StartUpRecord::Entry::name() const
{
    return plugin.isEmpty() ? PluginManager::libraryStem(library) : plugin;
}

StartUpRecord::StartUpRecord(const QString& applicationName)
    : path(stateHome() + QLatin1Char('/') + componentOf(applicationName)),
      ownRecord(recordPrefix + QString::number(QCoreApplication::applicationPid()))
{
}

StartUpRecord::~StartUpRecord()
{
    closeOwnRecord();
}

QString StartUpRecord::stateHome()
{
    const QString configured = QString::fromLocal8Bit(qgetenv("XDG_STATE_HOME"));
    if (QDir::isAbsolutePath(configured)) {
        return QDir::cleanPath(configured);
    }
    return QDir::cleanPath(QDir::homePath() + QStringLiteral("/.local/state"));
}

QString StartUpRecord::folder() const
{
    return path;
}

QString StartUpRecord::errorString() const
{
    return error;
}

// The folder, opened without following a link in its last step; refused unless it belongs to
// this user and nobody else may write to it. -1 when it cannot be used.
int StartUpRecord::openFolder(bool create) const
{
    if (create && !QFileInfo::exists(path)) {
        QDir().mkpath(stateHome());
        ::mkdir(QFile::encodeName(stateHome()).constData(), 0700);
        ::mkdir(QFile::encodeName(path).constData(), 0700);
    }
    const int folder = ::open(QFile::encodeName(path).constData(),
                              O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (folder < 0) {
        error = QStringLiteral("cannot open %1: %2")
                    .arg(path, QString::fromLocal8Bit(std::strerror(errno)));
        return -1;
    }
    struct stat status {};
    if (::fstat(folder, &status) != 0 || status.st_uid != ::geteuid()
        || (status.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
        error = QStringLiteral("%1 is not the user's own folder").arg(path);
        ::close(folder);
        return -1;
    }
    return folder;
}

bool StartUpRecord::write(const QString& file, const QByteArray& content)
{
    const int folder = openFolder(true);
    if (folder < 0) {
        return false;
    }
    const QByteArray name = QFile::encodeName(file);
    const QByteArray temporary = name + ".new";
    ::unlinkat(folder, temporary.constData(), 0);
    const int fd = ::openat(folder, temporary.constData(),
                            O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    bool written = fd >= 0;
    for (qint64 done = 0; written && done < content.size();) {
        const ssize_t count
            = ::write(fd, content.constData() + done, size_t(content.size() - done));
        written = count > 0 || (count < 0 && errno == EINTR);
        done += std::max<ssize_t>(count, 0);
    }
    written = fd >= 0 && ::close(fd) == 0 && written
        && ::renameat(folder, temporary.constData(), folder, name.constData()) == 0;
    if (!written) {
        error = QStringLiteral("cannot write %1/%2: %3")
                    .arg(path, file, QString::fromLocal8Bit(std::strerror(errno)));
        ::unlinkat(folder, temporary.constData(), 0);
    }
    ::close(folder);
    return written;
}

QByteArray StartUpRecord::read(const QString& file) const
{
    const int folder = openFolder(false);
    if (folder < 0) {
        return {};
    }
    const int fd = ::openat(folder, QFile::encodeName(file).constData(),
                            O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK);
    ::close(folder);
    struct stat status {};
    if (fd < 0 || ::fstat(fd, &status) != 0 || !S_ISREG(status.st_mode)
        || status.st_size > largestFile) {
        if (fd >= 0) {
            ::close(fd);
        }
        return {};
    }
    QByteArray content(int(status.st_size), '\0');
    const ssize_t count = ::read(fd, content.data(), size_t(content.size()));
    ::close(fd);
    content.resize(int(std::max<ssize_t>(count, 0)));
    return content;
}

void StartUpRecord::remove(const QString& file) const
{
    const int folder = openFolder(false);
    if (folder >= 0) {
        ::unlinkat(folder, QFile::encodeName(file).constData(), 0);
        ::close(folder);
    }
}

bool StartUpRecord::recordLoading(const QString& library)
{
    return recordInitializing(QString(), library);
}

bool StartUpRecord::recordInitializing(const QString& plugin, const QString& library)
{
    const qint64 pid = QCoreApplication::applicationPid();
    if (ownStartTime.isEmpty()) {
        ownStartTime = startTimeOf(pid);
    }
    QByteArray content = "pid=" + QByteArray::number(pid) + "\nstarted=" + ownStartTime
        + "\nphase=" + (plugin.isEmpty() ? loading : initializing).toUtf8() + "\n";
    if (!plugin.isEmpty()) {
        content += "plugin=" + plugin.toUtf8() + "\n";
    }
    content += "library=" + library.toUtf8() + "\n";
    return rewriteOwnRecord(content);
}

// The first phase writes the record whole, beside its place, and keeps it open; every later
// one overwrites it with one write, padded with blank lines to at least the size it had (which
// readers skip), so that it never holds a mixture of two phases. Each phase of each plug-in
// writes it: this keeps that to a single system call.
bool StartUpRecord::rewriteOwnRecord(QByteArray content)
{
    if (ownRecordFile < 0) {
        if (!write(ownRecord, content)) {
            return false;
        }
        const int folder = openFolder(false);
        ownRecordFile = folder < 0 ? -1
                                   : ::openat(folder, QFile::encodeName(ownRecord).constData(),
                                              O_WRONLY | O_NOFOLLOW | O_CLOEXEC);
        if (folder >= 0) {
            ::close(folder);
        }
        ownRecordSize = content.size();
        return true;
    }
    if (content.size() < ownRecordSize) {
        content.append(ownRecordSize - content.size(), '\n');
    }
    if (::pwrite(ownRecordFile, content.constData(), size_t(content.size()), 0) != content.size()) {
        error = QStringLiteral("cannot write %1/%2: %3")
                    .arg(path, ownRecord, QString::fromLocal8Bit(std::strerror(errno)));
        return false;
    }
    ownRecordSize = content.size();
    return true;
}

void StartUpRecord::closeOwnRecord()
{
    if (ownRecordFile >= 0) {
        ::close(ownRecordFile);
        ownRecordFile = -1;
    }
}

void StartUpRecord::clear()
{
    closeOwnRecord();
    remove(ownRecord);
}

QList<StartUpRecord::Record> StartUpRecord::endedStarts() const
{
    QList<Record> records;
    const QFileInfoList files = QDir(path).entryInfoList({recordPrefix + QLatin1Char('*')},
                                                         QDir::Files | QDir::System | QDir::Hidden);
    for (const QFileInfo& file : files) {
        if (file.fileName() == ownRecord || file.fileName().endsWith(QLatin1String(".new"))) {
            continue;
        }
        QHash<QString, QString> values;
        for (const QByteArray& line : read(file.fileName()).split('\n')) {
            const int equals = line.indexOf('=');
            if (equals > 0) {
                values.insert(QString::fromUtf8(line.left(equals)),
                              QString::fromUtf8(line.mid(equals + 1)));
            }
        }
        Record record;
        record.file = file.fileName();
        record.modified = file.lastModified().toMSecsSinceEpoch();
        record.entry.phase = values.value(QStringLiteral("phase"));
        record.entry.plugin = values.value(QStringLiteral("plugin"));
        record.entry.library = values.value(QStringLiteral("library"));
        record.entry.pid = values.value(QStringLiteral("pid")).toLongLong();
        const QByteArray started = values.value(QStringLiteral("started")).toLatin1();
        const bool underWay = record.entry.pid > 0 && !started.isEmpty()
            && startTimeOf(record.entry.pid) == started;
        if (!underWay && (record.entry.phase == loading || record.entry.phase == initializing)) {
            records.append(record);
        }
    }
    std::sort(records.begin(), records.end(),
              [](const Record& a, const Record& b) { return a.modified > b.modified; });
    return records;
}

StartUpRecord::Entry StartUpRecord::lastEndedStart() const
{
    const QList<Record> records = endedStarts();
    return records.isEmpty() ? Entry() : records.first().entry;
}

void StartUpRecord::removeEndedStarts()
{
    for (const Record& record : endedStarts()) {
        remove(record.file);
    }
}

QStringList StartUpRecord::disabledPlugins() const
{
    QStringList names;
    for (const QByteArray& line : read(disabledFile).split('\n')) {
        const QString name = QString::fromUtf8(line).trimmed();
        if (!name.isEmpty() && !names.contains(name)) {
            names << name;
        }
    }
    return names;
}

bool StartUpRecord::disable(const QString& name)
{
    QStringList names = disabledPlugins();
    if (!names.contains(name)) {
        names << name;
    }
    return write(disabledFile, (names.join(QLatin1Char('\n')) + QLatin1Char('\n')).toUtf8());
}

bool StartUpRecord::enable(const QString& name)
{
    bool cleared = false;
    for (const Record& record : endedStarts()) {
        if (record.entry.name() == name || record.entry.library == name) {
            remove(record.file);
            cleared = true;
        }
    }
    QStringList names = disabledPlugins();
    if (names.removeAll(name) > 0) {
        cleared = true;
        if (names.isEmpty()) {
            remove(disabledFile);
        } else {
            write(disabledFile, (names.join(QLatin1Char('\n')) + QLatin1Char('\n')).toUtf8());
        }
    }
    return cleared;
}

bool StartUpRecord::storeTrace(const QByteArray& json)
{
    return write(traceFile, json);
}

QByteArray StartUpRecord::storedTrace() const
{
    return read(traceFile);
}

} // namespace business
} // namespace base
} // namespace corvane
