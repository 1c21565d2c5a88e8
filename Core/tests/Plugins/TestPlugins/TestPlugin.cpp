// One plug-in source, built into several libraries: TEST_PLUGIN_NAME, TEST_PROVIDES,
// TEST_REQUIRES, TEST_OPTIONAL and TEST_TASKS (comma-separated) make each one different.
// Its configuration element may say <canClose>false</canClose>,
// <failInitialize>true</failInitialize>, <holdUntil>file</holdUntil> (its load then takes
// until that file exists, at most a minute, with Qt's events going on meanwhile) or
// <blockOnCommandMs>ms</blockOnCommandMs> (in a service, each custom command then blocks the
// main thread for that long). It reports what is done to it as Qt messages.

#include <Exceptions/Exceptions.h>
#include <StartUp/Service.h>
#include <Utility/AbstractPlugin.h>
#include <Utility/XMLHelper.h>

#include <QDeadlineTimer>
#include <QDebug>
#include <QDomElement>
#include <QEventLoop>
#include <QFile>
#include <QThread>
#include <QTimer>

namespace {

QStringList listOf(const char* text)
{
    return QString::fromLatin1(text).split(QLatin1Char(','), Qt::SkipEmptyParts);
}

using corvane::base::core::utility::XMLHelper;

class TestPlugin : public corvane::base::core::utility::AbstractPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "de.corvane.plugin.IPlugin/1.0")
    Q_INTERFACES(corvane::base::interfaces::IPlugin)

public:
    TestPlugin()
    {
        setDescription(QStringLiteral("test plug-in " TEST_PLUGIN_NAME));
        for (const QString& service : listOf(TEST_PROVIDES)) {
            addProvidedService(nullptr, service);
        }
        for (const QString& service : listOf(TEST_REQUIRES)) {
            addRequiredService(service);
        }
        for (const QString& service : listOf(TEST_OPTIONAL)) {
            addOptionalRequiredService(service);
        }
    }

    void getName(QString& name) override { name = QStringLiteral(TEST_PLUGIN_NAME); }
    void getProvidedTasks(QStringList& tasks) override { tasks = listOf(TEST_TASKS); }

    void setConfiguration(QDomElement& configuration) override
    {
        XMLHelper::readBoolFromXML(configuration, QStringLiteral("canClose"), &canClose);
        XMLHelper::readBoolFromXML(configuration, QStringLiteral("failInitialize"),
                                   &failInitialize);
        XMLHelper::readIntFromXML(configuration, QStringLiteral("blockOnCommandMs"),
                                  &blockOnCommandMs);
        QString holdUntil;
        XMLHelper::readStringFromXML(configuration, QStringLiteral("holdUntil"), &holdUntil);
        if (!holdUntil.isEmpty()) {
            qInfo("test: %s holding", TEST_PLUGIN_NAME);
            const QDeadlineTimer deadline(60000);
            QEventLoop loop;
            QTimer poll;
            connect(&poll, &QTimer::timeout, &loop, [&] {
                if (QFile::exists(holdUntil) || deadline.hasExpired()) {
                    loop.quit();
                }
            });
            poll.start(20);
            loop.exec();
            qInfo("test: %s released", TEST_PLUGIN_NAME);
        }
    }

    void initialize() override
    {
        if (failInitialize) {
            throw corvane::base::exceptions::PluginException(this, QStringLiteral("initialize()"),
                                                             QStringLiteral("refuses to start"));
        }
        AbstractPlugin::initialize();
        auto* service = corvane::base::business::Service::instance();
        if (blockOnCommandMs > 0 && service) {
            connect(service, &corvane::base::business::Service::command, this, [this](int number) {
                qInfo("test: %s blocking on command %d", TEST_PLUGIN_NAME, number);
                QThread::msleep(static_cast<unsigned long>(blockOnCommandMs));
                qInfo("test: %s unblocked", TEST_PLUGIN_NAME);
            });
        }
        qInfo("test: %s initialized", TEST_PLUGIN_NAME);
    }

    void deinitialize() override
    {
        AbstractPlugin::deinitialize();
        qInfo("test: %s deinitialized", TEST_PLUGIN_NAME);
    }

    bool checkCanClose() override
    {
        qInfo("test: %s asked", TEST_PLUGIN_NAME);
        return canClose;
    }

private:
    bool canClose = true;
    bool failInitialize = false;
    int blockOnCommandMs = 0;
};

} // namespace

#include "TestPlugin.moc"
