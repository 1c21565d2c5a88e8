// Helper process for the logging tests: configures logging from FatalWriter.properties beside
// itself, writes two lines and then hands one fatal message to the Qt message handler. The
// handler must end the process once the message is written; "survived" on standard output
// means it did not.

#include "Logging/LogMessageHandler.h"
#include "Logging/LoggingManager.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    corvane::base::business::LoggingManager* logging
        = corvane::base::business::LoggingManager::instance();
    logging->initialize();
    const QMessageLogContext context("/x/src/Fatal/Writer.cpp", 7, "void a::Writer::stop()",
                                     "default");
    logging->logInfo(QStringLiteral("Fatal.Writer"), QStringLiteral("first"));
    corvane::logging::log4cxxMessageHandler(QtWarningMsg, context, QStringLiteral("second"));
    corvane::logging::log4cxxMessageHandler(QtFatalMsg, context, QStringLiteral("the end"));
    std::puts("survived");
    return 0;
}
