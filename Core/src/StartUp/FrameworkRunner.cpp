#include "StartUp/FrameworkRunner.h"

#include "Configuration/ConfigurationManager.h"
#include "Exceptions/Exceptions.h"
#include "Logging/LogMessageHandler.h"
#include "Logging/LoggingManager.h"
#include "Plugins/PluginManager.h"
#include "Plugins/StartUpTrace.h"
#include "StartUp/ApplicationQuitHandler.h"
#include "StartUp/ApplicationStartupHandler.h"
#include "StartUp/LastStartQuestion.h"
#include "StartUp/ManagerRegistry.h"
#include "StartUp/Service.h"
#include "StartUp/ServiceController.h"
#include "StartUp/StartUpManager.h"
#include "Utility/XMLHelper.h"

#include <QApplication>
#include <QDebug>
#include <QDir>
#include <QDomElement>
#include <QFileInfo>
#include <QMessageBox>

#include <cstdio>
#include <memory>

namespace corvane {
namespace base {
namespace business {

using entities::ApplicationInformation;

namespace {

// Returned when a run ends through a framework failure.
constexpr int failedRun = 1;

// A GUI application asks what to do about a plug-in that ended its last start; a console
// application or a service leaves it out only when asked to start safely.
PluginManager::LastStartPolicy lastStartPolicyFor(ApplicationInformation::ApplicationType type,
                                                  bool safeStart)
{
    if (type == ApplicationInformation::GUI) {
        return &LastStartQuestion::ask;
    }
    const bool leaveOut = safeStart || qgetenv("CORVANE_SAFE_START") == "1";
    return [leaveOut](const StartUpRecord::Entry&) {
        return leaveOut ? LastStartChoice::LeaveOutThisTime : LastStartChoice::StartWithIt;
    };
}

} // namespace

FrameworkRunner::FrameworkRunner() = default;

int FrameworkRunner::exec(int argc, char** argv, bool checkSignature)
{
    this->checkSignature = checkSignature;
    QStringList arguments;
    for (int i = 0; i < argc; ++i) {
        arguments << QString::fromLocal8Bit(argv[i]);
    }

    StartUpTrace::instance()->begin();
    bool readable = false;
    {
        StartUpTrace::Span span(QStringLiteral("read configuration"));
        readable = retrieveApplicationInfo(arguments);
    }
    if (!readable) {
        qWarning() << QStringLiteral("returnValue: %1").arg(1);
        return 1;
    }

    int result = 1;
    switch (applicationInformation.getApplicationType()) {
    case ApplicationInformation::GUI:
        result = runGuiApplication(argc, argv);
        break;
    case ApplicationInformation::CONSOLE:
        result = runConsoleApplication(argc, argv);
        break;
    case ApplicationInformation::SERVICE:
        result = runServiceApplication(argc, argv);
        break;
    default:
        break;
    }
    qInfo() << QStringLiteral("returnValue: %1").arg(result);
    LoggingManager::instance()->deinitialize();
    return result;
}

bool FrameworkRunner::retrieveApplicationInfo(const QStringList& arguments)
{
    const QString path = QDir::cleanPath(arguments.value(0));
    const QString file = ConfigurationManager::getFilePath(path, arguments);
    QDomElement root;
    const QString error = ConfigurationManager::getRootElement(file, root);
    if (!error.isEmpty()) {
        std::fputs(("Error: " + error).toLocal8Bit().constData(), stdout);
        std::fflush(stdout);
        return false;
    }
    QList<entities::PluginConfiguration> pluginConfigurations;
    ConfigurationManager::readConfig(root, applicationInformation, pluginConfigurations);
    for (QDomElement child = root.firstChildElement(); !child.isNull();
         child = child.nextSiblingElement()) {
        if (child.tagName().compare(QLatin1String("service"), Qt::CaseInsensitive) == 0) {
            serviceSettings = child;
        }
        if (child.tagName().compare(QLatin1String("information"), Qt::CaseInsensitive) == 0) {
            core::utility::XMLHelper::readBoolFromXML(child, QStringLiteral("safestart"),
                                                      &safeStart);
        }
    }
    return true;
}

void FrameworkRunner::baseInitialization()
{
    qInstallMessageHandler(logging::log4cxxMessageHandler);
    ManagerRegistry* registry = ManagerRegistry::instance();
    LoggingManager* loggingManager = LoggingManager::instance();
    registry->registerManager(*loggingManager);
    {
        StartUpTrace::Span span(QStringLiteral("set up logging"));
        loggingManager->initialize();
    }
    StartUpTrace::Span span(QStringLiteral("configuration manager"));

    ConfigurationManager* configurationManager = ConfigurationManager::instance();
    registry->registerManager(*configurationManager);
    if (checkSignature) {
        configurationManager->checkConfigurationFileSignature();
    } else {
        qDebug("initialize: Did not check the signature because disabled this.");
    }
    configurationManager->initialize();

    registry->registerManager(*StartUpManager::instance());
    PluginManager::instance()->setLastStartPolicy(
        lastStartPolicyFor(applicationInformation.getApplicationType(), safeStart));
}

int FrameworkRunner::runGuiApplication(int argc, char** argv)
{
    const qint64 creating = StartUpTrace::instance()->nanoseconds();
    QApplication application(argc, argv);
    StartUpTrace::instance()->add(QStringLiteral("create application"), QString(), creating,
                                  StartUpTrace::instance()->nanoseconds());
    if (!applicationInformation.getSingleAppId().isEmpty()) {
        StartUpTrace::Span span(QStringLiteral("single-instance check"));
        const int guard
            = ApplicationStartupHandler::instance()->getSingleGuiApplicationGuardExitCode(
                application, applicationInformation.getSingleAppId(),
                applicationInformation.hasSingleAppUserNotification());
        if (guard < 0) {
            return guard;
        }
        ApplicationStartupHandler::instance()->holdRequests();
    }

    int result = failedRun;
    try {
        baseInitialization();
        qInfo("Start GUI application.");
        application.installEventFilter(new ApplicationQuitHandler(&application));
        StartUpManager::instance()->initialize();
        ApplicationStartupHandler::instance()->deliverHeldRequests();
        qInfo("Starting main event loop.");
        result = application.exec();
    } catch (const exceptions::BaseException& e) {
        LoggingManager::instance()->logException(QStringLiteral("main"), e);
        QMessageBox box;
        box.setText(QString::fromUtf8(e.what()));
        box.exec();
    } catch (...) {
        qCritical("Catched unkown exception.");
    }
    // Plug-ins must not outlive the application object, also when the loop ended without a
    // quit event (QCoreApplication::exit()).
    ApplicationQuitHandler::takeDownManagers(&application);
    return result;
}

int FrameworkRunner::runConsoleApplication(int argc, char** argv)
{
    const qint64 creating = StartUpTrace::instance()->nanoseconds();
    QCoreApplication application(argc, argv);
    StartUpTrace::instance()->add(QStringLiteral("create application"), QString(), creating,
                                  StartUpTrace::instance()->nanoseconds());
    if (!applicationInformation.getSingleAppId().isEmpty()) {
        StartUpTrace::Span span(QStringLiteral("single-instance check"));
        const int guard
            = ApplicationStartupHandler::instance()->getSingleConsoleApplicationGuardExitCode(
                application, applicationInformation.getSingleAppId(),
                applicationInformation.hasSingleAppUserNotification());
        if (guard < 0) {
            return guard;
        }
        ApplicationStartupHandler::instance()->holdRequests();
    }

    int result = failedRun;
    try {
        baseInitialization();
        qInfo("Start CONSOLE application.");
        StartUpManager::instance()->initialize();
        ApplicationStartupHandler::instance()->deliverHeldRequests();
        qInfo("Starting main event loop.");
        result = application.exec();
        // No quit handler here: take the managers down now, before the application object goes.
        ApplicationQuitHandler::takeDownManagers(&application);
    } catch (const exceptions::BaseException& e) {
        LoggingManager::instance()->logException(QStringLiteral("main"), e);
        // A console application does not return normally from a framework failure.
        qFatal("main: Console application catched: %s", e.what());
    } catch (...) {
        qCritical("Catched unkown exception.");
        ApplicationQuitHandler::takeDownManagers(&application);
    }
    return result;
}

// The command line selects a control action (install, stop, ...), which runs without the
// framework, or the service run: started as a daemon of its own unless it runs here (in the
// foreground or under systemd), then hosted by the Service with its CoreApplication.
int FrameworkRunner::runServiceApplication(int argc, char** argv)
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i) {
        arguments << QString::fromLocal8Bit(argv[i]);
    }
    QString name = applicationInformation.getApplicationName();
    if (name.isEmpty()) {
        name = QFileInfo(arguments.value(0)).baseName();
    }
    ServiceController controller(arguments, name, applicationInformation.getApplicationTitle());
    int watchdogSeconds = 0;
    if (core::utility::XMLHelper::readIntFromXML(serviceSettings, QStringLiteral("watchdogsec"),
                                                 &watchdogSeconds)) {
        controller.setWatchdogSeconds(watchdogSeconds);
    }
    if (checkSignature) {
        controller.setSignatureCheck(
            ConfigurationManager::getFilePath(QDir::cleanPath(arguments.value(0)), arguments));
    }
    if (!controller.runsService()) {
        return controller.runAction();
    }
    if (!controller.validName()) {
        return failedRun;
    }
    if (!controller.runsHere()) {
        return controller.startDaemon();
    }

    int result = failedRun;
    try {
        Service service(argc, argv, controller.controlSocket());
        baseInitialization();
        qInfo("Start as SERVICE.");
        result = service.exec();
        ApplicationQuitHandler::takeDownManagers(&service);
    } catch (const exceptions::BaseException& e) {
        LoggingManager::instance()->logException(QStringLiteral("main"), e);
    } catch (const std::exception& e) {
        qCritical().noquote() << QStringLiteral("Catched exception: ")
                + QString::fromUtf8(e.what());
    } catch (...) {
        qCritical("Catched unkown exception.");
    }
    // Whatever ended the run (an exception, plug-ins that did not start), the one running it in
    // the foreground is told.
    if (result != 0 && controller.inForeground()) {
        std::fputs("The service could not be executed.", stdout);
        std::fflush(stdout);
    }
    return result;
}

} // namespace business
} // namespace base
} // namespace corvane
