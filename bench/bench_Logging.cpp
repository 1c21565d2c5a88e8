// The cost of the logging manager over log4cplus itself, on a logger with a NullAppender.

#include "RatioReporter.h"

#include "Logging/LogMessageHandler.h"
#include "Logging/LoggingManager.h"

#include <log4cplus/hierarchy.h>
#include <log4cplus/logger.h>
#include <log4cplus/nullappender.h>

using corvane::base::business::LoggingManager;

namespace {

const QString source = QStringLiteral("bench.logger");
const QString message = QStringLiteral("Plugin loaded: \"Hello.dll\" (0.12.0)");

log4cplus::Logger benchLogger(log4cplus::LogLevel level)
{
    LoggingManager::instance(); // initializes log4cplus
    log4cplus::Logger logger = log4cplus::Logger::getInstance("bench.logger");
    logger.removeAllAppenders();
    logger.addAppender(log4cplus::SharedAppenderPtr(new log4cplus::NullAppender()));
    logger.setAdditivity(false);
    logger.setLogLevel(level);
    return logger;
}

void BM_ManagerLogInfo(benchmark::State& state)
{
    benchLogger(log4cplus::INFO_LOG_LEVEL);
    LoggingManager* manager = LoggingManager::instance();
    for (auto _ : state) {
        manager->logInfo(source, message);
    }
}
BENCHMARK(BM_ManagerLogInfo);

void BM_Log4cplusLog(benchmark::State& state)
{
    const log4cplus::Logger logger = benchLogger(log4cplus::INFO_LOG_LEVEL);
    const std::string text = message.toStdString();
    for (auto _ : state) {
        logger.log(log4cplus::INFO_LOG_LEVEL, text, __FILE__, __LINE__, "BM_Log4cplusLog");
    }
}
BENCHMARK(BM_Log4cplusLog);

void BM_ManagerLogDebugFiltered(benchmark::State& state)
{
    benchLogger(log4cplus::INFO_LOG_LEVEL);
    LoggingManager* manager = LoggingManager::instance();
    for (auto _ : state) {
        manager->logDebug(source, message);
    }
}
BENCHMARK(BM_ManagerLogDebugFiltered);

void BM_Log4cplusIsEnabledFor(benchmark::State& state)
{
    const log4cplus::Logger logger = benchLogger(log4cplus::INFO_LOG_LEVEL);
    for (auto _ : state) {
        benchmark::DoNotOptimize(logger.isEnabledFor(log4cplus::DEBUG_LOG_LEVEL));
    }
}
BENCHMARK(BM_Log4cplusIsEnabledFor);

// A Qt message as the framework routes it: through the handler into the logging manager, to the
// logger named after this file.
void BM_QtInfoRouted(benchmark::State& state)
{
    LoggingManager::instance();
    log4cplus::Logger routed
        = log4cplus::Logger::getInstance(corvane::logging::sanitizeSource(__FILE__).toStdString());
    routed.removeAllAppenders();
    routed.addAppender(log4cplus::SharedAppenderPtr(new log4cplus::NullAppender()));
    routed.setAdditivity(false);
    routed.setLogLevel(log4cplus::INFO_LOG_LEVEL);
    const QtMessageHandler previous
        = qInstallMessageHandler(corvane::logging::log4cxxMessageHandler);
    for (auto _ : state) {
        qInfo("Plugin loaded: \"Hello.dll\" (0.12.0)");
    }
    qInstallMessageHandler(previous);
}
BENCHMARK(BM_QtInfoRouted);

// Qt's own part of a qInfo(): the message made and handed to a handler that does nothing.
void BM_QtInfoToNoHandler(benchmark::State& state)
{
    const QtMessageHandler previous
        = qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    for (auto _ : state) {
        qInfo("Plugin loaded: \"Hello.dll\" (0.12.0)");
    }
    qInstallMessageHandler(previous);
}
BENCHMARK(BM_QtInfoToNoHandler);

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.printRatios({{"BM_ManagerLogInfo", "BM_Log4cplusLog"},
                          {"BM_ManagerLogDebugFiltered", "BM_Log4cplusIsEnabledFor"},
                          {"BM_QtInfoRouted", "BM_Log4cplusLog"}},
                         {1.2, 2, 2});
    benchmark::Shutdown();
    return 0;
}
