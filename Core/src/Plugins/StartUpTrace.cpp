#include "Plugins/StartUpTrace.h"

#include <QCoreApplication>
#include <QDebug>
#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMutexLocker>
#include <QSaveFile>
#include <QTimer>

namespace corvane {
namespace base {
namespace business {

namespace {
const QString startUp = QStringLiteral("start-up");
} // namespace

StartUpTrace::Span::Span(QString phase, QString plugin)
    : phase(std::move(phase)), plugin(std::move(plugin)),
      start(StartUpTrace::instance()->nanoseconds())
{
}

StartUpTrace::Span::~Span()
{
    StartUpTrace* trace = StartUpTrace::instance();
    trace->add(phase, plugin, start, trace->nanoseconds());
}

void StartUpTrace::Span::setPlugin(const QString& plugin)
{
    this->plugin = plugin;
}

StartUpTrace* StartUpTrace::instance()
{
    static QMutex creation;
    QMutexLocker locker(&creation);
    static StartUpTrace trace;
    return &trace;
}

StartUpTrace::StartUpTrace()
{
    clock.start();
}

void StartUpTrace::begin()
{
    QMutexLocker locker(&mutex);
    clock.restart();
    recorded.clear();
    const QString file = QString::fromLocal8Bit(qgetenv("CORVANE_STARTUP_TRACE"));
    traceFile = file.isEmpty() ? QString() : QDir::current().absoluteFilePath(file);
}

qint64 StartUpTrace::nanoseconds() const
{
    QMutexLocker locker(&mutex);
    return clock.nsecsElapsed();
}

void StartUpTrace::add(const QString& phase, const QString& plugin, qint64 startNs, qint64 endNs)
{
    QMutexLocker locker(&mutex);
    recorded.append({phase, plugin, double(startNs) / 1e6, double(endNs - startNs) / 1e6});
}

QList<StartUpTrace::Event> StartUpTrace::events() const
{
    QMutexLocker locker(&mutex);
    return recorded;
}

double StartUpTrace::milliseconds(const QString& plugin, const QString& phase) const
{
    QMutexLocker locker(&mutex);
    for (auto event = recorded.crbegin(); event != recorded.crend(); ++event) {
        if (event->plugin == plugin && event->phase == phase) {
            return event->durationMs;
        }
    }
    return -1;
}

void StartUpTrace::queueFinish(std::function<void(const QByteArray&)> store)
{
    if (QCoreApplication::instance() == nullptr || finishing) {
        return;
    }
    finishing = true;
    QTimer::singleShot(0, QCoreApplication::instance(), [this, store] { finish(store); });
}

void StartUpTrace::finish(const std::function<void(const QByteArray&)>& store)
{
    finishing = false;
    add(startUp, QString(), 0, nanoseconds());
    const QByteArray json = toJson(QCoreApplication::applicationName());
    store(json);
    QString file;
    {
        QMutexLocker locker(&mutex);
        file = traceFile;
    }
    if (file.isEmpty()) {
        return;
    }
    QSaveFile trace(file);
    if (!trace.open(QIODevice::WriteOnly) || trace.write(json) != json.size() || !trace.commit()) {
        qWarning().noquote() << QStringLiteral("finish: Cannot write the start-up trace %1: %2")
                                    .arg(file, trace.errorString());
    } else {
        qInfo().noquote() << QStringLiteral("finish: Start-up trace written to ") + file;
    }
}

QByteArray StartUpTrace::toJson(const QString& processName) const
{
    const qint64 pid = QCoreApplication::applicationPid();
    QJsonArray events;
    events.append(QJsonObject {{"name", "process_name"},
                               {"ph", "M"},
                               {"pid", pid},
                               {"tid", pid},
                               {"args", QJsonObject {{"name", processName}}}});
    for (const Event& event : this->events()) {
        QJsonObject args {{"phase", event.phase}};
        if (!event.plugin.isEmpty()) {
            args.insert(QStringLiteral("plugin"), event.plugin);
        }
        events.append(QJsonObject {{"name", event.name()},
                                   {"cat", event.plugin.isEmpty() ? "framework" : "plugin"},
                                   {"ph", "X"},
                                   {"ts", event.startMs * 1000},
                                   {"dur", event.durationMs * 1000},
                                   {"pid", pid},
                                   {"tid", pid},
                                   {"args", args}});
    }
    return QJsonDocument(QJsonObject {{"traceEvents", events}, {"displayTimeUnit", "ms"}})
        .toJson(QJsonDocument::Indented);
}

QList<StartUpTrace::Event> StartUpTrace::fromJson(const QByteArray& json, QString* error)
{
    QJsonParseError parsing {};
    const QJsonDocument document = QJsonDocument::fromJson(json, &parsing);
    QList<Event> events;
    if (parsing.error != QJsonParseError::NoError) {
        *error = parsing.errorString();
        return events;
    }
    const QJsonArray array = document.isArray() ? document.array()
                                                : document.object().value("traceEvents").toArray();
    for (const QJsonValue& value : array) {
        const QJsonObject event = value.toObject();
        if (event.value("ph").toString() != QLatin1String("X")) {
            continue;
        }
        const QJsonObject args = event.value("args").toObject();
        const QString phase = args.value("phase").toString(event.value("name").toString());
        events.append({phase, args.value("plugin").toString(), event.value("ts").toDouble() / 1000,
                       event.value("dur").toDouble() / 1000});
    }
    if (events.isEmpty()) {
        *error = QStringLiteral("no complete events");
    }
    return events;
}

} // namespace business
} // namespace base
} // namespace corvane
