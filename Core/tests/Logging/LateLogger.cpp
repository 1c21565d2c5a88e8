// Helper process for the logging tests: logs while the process or a thread ends, after the
// logging manager's own per-thread state may already be gone. The argument chooses who writes
// and how: "static qt", "static direct" (from the destructor of a static object created after
// the logging manager, as a plug-in's singleton is), "thread qt", "thread direct" (from the
// destructor of a thread-local object that a thread created before its first log call).
// Configured from LateLogger.properties beside the executable; "late message written" on
// standard output tells that the late call returned.

#include "Logging/LogMessageHandler.h"
#include "Logging/LoggingManager.h"

#include <QCoreApplication>

#include <cstdio>
#include <cstring>
#include <thread>

using corvane::base::business::LoggingManager;

namespace {

bool throughQt = false;

class LateWriter
{
public:
    explicit LateWriter(const char* who) : who(who) { }
    ~LateWriter()
    {
        if (throughQt) {
            qInfo("late message from the %s", who);
        } else {
            LoggingManager::instance()->logInfo(QStringLiteral("late"),
                                                QStringLiteral("late message from the ") + who);
        }
        std::puts("late message written");
        std::fflush(stdout);
    }

private:
    const char* who;
};

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        return 2;
    }
    const bool onThread = std::strcmp(argv[1], "thread") == 0;
    throughQt = std::strcmp(argv[2], "qt") == 0;
    qInstallMessageHandler(corvane::logging::log4cxxMessageHandler);
    {
        QCoreApplication application(argc, argv);
        LoggingManager::instance()->initialize();
        qInfo("running");
        LoggingManager::instance()->logInfo(QStringLiteral("late"), QStringLiteral("running"));
        if (onThread) {
            std::thread([] {
                thread_local LateWriter writer("ending thread");
                qInfo("thread running");
                LoggingManager::instance()->logInfo(QStringLiteral("late"),
                                                    QStringLiteral("thread running"));
            }).join();
        } else {
            static LateWriter writer("static destructor");
        }
    }
    return 0;
}
