// Logs a heartbeat at the interval of its configuration (<intervalMs>, default 1000) from a
// timer on a thread of its own, which matters once the application runs for long. As a
// service it stops on pause, starts again on resume and logs the commands it is sent.

#include <QtProxies/TimerProxy.h>
#include <StartUp/Service.h>
#include <Utility/AbstractPlugin.h>
#include <Utility/XMLHelper.h>

#include <QDebug>
#include <QDomElement>

#include <memory>

namespace corvane {
namespace demo {

class HeartbeatPlugin : public base::core::utility::AbstractPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "de.corvane.plugin.IPlugin/1.0")
    Q_INTERFACES(corvane::base::interfaces::IPlugin)

public:
    HeartbeatPlugin() { setDescription(QStringLiteral("Logs that the application is alive")); }

    void setConfiguration(QDomElement& configuration) override
    {
        base::core::utility::XMLHelper::readIntFromXML(configuration, QStringLiteral("intervalMs"),
                                                       &intervalMs);
    }

    void initialize() override
    {
        AbstractPlugin::initialize();
        timer.reset(base::core::TimerProxy::createAsynchronousTimer());
        // Direct: the beat is logged on the timer's own thread (logging is thread-safe).
        connect(
            timer.get(), &base::core::ITimerProxy::timeout, timer.get(),
            [this] { qInfo("heartbeat %d", ++beats); }, Qt::DirectConnection);
        timer->start(intervalMs);

        // Run as a service, the heartbeat follows pause and resume and logs commands.
        if (auto* service = base::business::Service::instance()) {
            connect(service, &base::business::Service::paused, this, [this] {
                timer->stop();
                qInfo("heartbeat paused");
            });
            connect(service, &base::business::Service::resumed, this, [this] {
                timer->start(intervalMs);
                qInfo("heartbeat resumed");
            });
            connect(service, &base::business::Service::command, this,
                    [](int number) { qInfo("heartbeat: command %d received", number); });
        }
    }

    void deinitialize() override
    {
        timer.reset(); // stops the timer and joins its thread
        qInfo("deinitialize: %d heartbeats", beats);
        AbstractPlugin::deinitialize();
    }

private:
    int intervalMs = 1000;
    int beats = 0;
    std::unique_ptr<base::core::TimerProxy> timer;
};

} // namespace demo
} // namespace corvane

#include "HeartbeatPlugin.moc"
