// One plug-in source, built into several libraries that TEST_PLUGIN_NAME, TEST_PROVIDES,
// TEST_REQUIRES, TEST_OPTIONAL and TEST_TASKS (comma-separated) make different; it reports what
// is done to it as Qt messages. Its configuration may say <canClose>false</canClose>,
// <failInitialize>true</failInitialize>, <holdUntil>file</holdUntil> (its load waits, a minute
// at most and with Qt's events going on, until the file exists) or <blockOnCommandMs>ms
// </blockOnCommandMs> (each custom command of a service then blocks the main thread that long)
// or <crashInitialize>abort|segv|hang</crashInitialize> (its initialize() ends the process, or
// waits a minute at most to be killed from outside).

#include <Exceptions/Exceptions.h>
#include <StartUp/Service.h>
#include <Utility/AbstractPlugin.h>
#include <Utility/XMLHelper.h>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QFile>
#include <QThread>

#include <csignal>
#include <cstdlib>

// Its lines name the library, which for a renamed copy is not the plug-in's name.
#ifndef TEST_LIBRARY
#define TEST_LIBRARY TEST_PLUGIN_NAME
#endif

namespace {

using corvane::base::core::utility::XMLHelper;

QStringList listOf(const char* text)
{
    return QString(text).split(',', Qt::SkipEmptyParts);
}

class TestPlugin : public corvane::base::core::utility::AbstractPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "de.corvane.plugin.IPlugin/1.0")
    Q_INTERFACES(corvane::base::interfaces::IPlugin)

public:
    TestPlugin()
    {
        setDescription("test plug-in " TEST_PLUGIN_NAME);
        for (const QString& service : listOf(TEST_PROVIDES))
            addProvidedService(nullptr, service);
        for (const QString& service : listOf(TEST_REQUIRES))
            addRequiredService(service);
        for (const QString& service : listOf(TEST_OPTIONAL))
            addOptionalRequiredService(service);
    }

    void getName(QString& name) override { name = TEST_PLUGIN_NAME; }
    void getProvidedTasks(QStringList& tasks) override { tasks = listOf(TEST_TASKS); }

    void setConfiguration(QDomElement& configuration) override
    {
        XMLHelper::readBoolFromXML(configuration, "canClose", &canClose);
        XMLHelper::readBoolFromXML(configuration, "failInitialize", &failInitialize);
        XMLHelper::readIntFromXML(configuration, "blockOnCommandMs", &blockOnCommandMs);
        XMLHelper::readStringFromXML(configuration, "crashInitialize", &crash);
        QString file;
        if (XMLHelper::readStringFromXML(configuration, "holdUntil", &file)) {
            qInfo("test: %s holding", TEST_LIBRARY);
            for (QDeadlineTimer deadline(60000); !QFile::exists(file) && !deadline.hasExpired();) {
                QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
                QThread::msleep(20);
            }
            qInfo("test: %s released", TEST_LIBRARY);
        }
    }

    void initialize() override
    {
        crashIfAsked();
        if (failInitialize)
            throw corvane::base::exceptions::PluginException(this, "initialize()",
                                                             "refuses to start");
        AbstractPlugin::initialize();
        auto* service = corvane::base::business::Service::instance();
        if (blockOnCommandMs > 0 && service) {
            connect(service, &corvane::base::business::Service::command, this, [this](int number) {
                qInfo("test: %s blocking on command %d", TEST_LIBRARY, number);
                QThread::msleep(static_cast<unsigned long>(blockOnCommandMs));
                qInfo("test: %s unblocked", TEST_LIBRARY);
            });
        }
        qInfo("test: %s initialized", TEST_LIBRARY);
    }

    void deinitialize() override
    {
        AbstractPlugin::deinitialize();
        qInfo("test: %s deinitialized", TEST_LIBRARY);
    }

    bool checkCanClose() override
    {
        qInfo("test: %s asked", TEST_LIBRARY);
        return canClose;
    }

private:
    void crashIfAsked()
    {
        if (crash.isEmpty())
            return;
        qInfo("test: %s crashing (%s)", TEST_PLUGIN_NAME, qPrintable(crash));
        if (crash == "segv")
            std::raise(SIGSEGV);
        if (crash == "hang")
            QThread::sleep(60);
        std::abort();
    }

    QString crash;
    bool canClose = true;
    bool failInitialize = false;
    int blockOnCommandMs = 0;
};

} // namespace

#include "TestPlugin.moc"
