// Helper of the logging test. "fatal": a fatal message must end the process. "static qt|direct":
// logs from the destructor of a static made after the logging manager, as a plug-in's may be.

#include "Logging/LogMessageHandler.h"
#include "Logging/LoggingManager.h"

#include <QCoreApplication>

#include <cstdio>

using corvane::base::business::LoggingManager;

struct LateWriter
{
    bool throughQt;
    ~LateWriter()
    {
        if (throughQt)
            qInfo("late message");
        else
            LoggingManager::instance()->logInfo("late", "late message");
        std::puts("late message written");
    }
};

int main(int argc, char** argv)
{
    qInstallMessageHandler(corvane::logging::log4cxxMessageHandler);
    QCoreApplication application(argc, argv);
    const QStringList arguments = application.arguments().mid(1);
    LoggingManager::instance()->initialize();
    const QMessageLogContext context("/x/src/Fatal/Writer.cpp", 7, "void a::Writer::stop()", "");
    if (arguments == QStringList {"fatal"}) {
        LoggingManager::instance()->logInfo("Fatal.Writer", "first");
        corvane::logging::log4cxxMessageHandler(QtWarningMsg, context, "second");
        corvane::logging::log4cxxMessageHandler(QtFatalMsg, context, "the end");
        std::puts("survived");
    }
    qInfo("running");
    LoggingManager::instance()->logInfo("late", "running");
    if (arguments.value(0) == "static")
        static LateWriter writer {arguments.value(1) == "qt"};
    return 0;
}
