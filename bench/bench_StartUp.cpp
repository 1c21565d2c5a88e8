// What a plug-in adds to the start-up of an application: the demo executable run with 50
// generated plug-in libraries against the same executable with none (only the plug-in that
// ends the run), from start to exit.

#include "RatioReporter.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <cstdio>

namespace {

constexpr int generatedPlugins = 50;

QTemporaryDir& application()
{
    static QTemporaryDir folder;
    static bool prepared = false;
    if (!prepared) {
        prepared = true;
        const QDir bin(QStringLiteral(DEMO_FOLDER));
        QFile::copy(bin.filePath("corvane-demo"), folder.filePath("corvane-demo"));
        QFile::copy(QStringLiteral(START_UP_PLUGIN), folder.filePath("libQuitter.so"));
        QString plugins = "<plugin><library>Quitter</library><configuration><quit>true</quit>"
                          "</configuration></plugin>";
        const QString quitOnly = plugins;
        for (int i = 0; i < generatedPlugins; ++i) {
            const QString name = QStringLiteral("Bench%1").arg(i, 2, 10, QLatin1Char('0'));
            QFile::copy(QStringLiteral(START_UP_PLUGIN), folder.filePath("lib" + name + ".so"));
            plugins += "<plugin><library>" + name + "</library></plugin>";
        }
        for (const auto& config : {qMakePair(QStringLiteral("none.xml"), quitOnly),
                                   qMakePair(QStringLiteral("fifty.xml"), plugins)}) {
            QFile file(folder.filePath(config.first));
            file.open(QIODevice::WriteOnly);
            file.write(("<config><information><applicationtype>CONSOLE</applicationtype>"
                        "</information><plugins>"
                        + config.second + "</plugins></config>")
                           .toUtf8());
        }
        QFile properties(folder.filePath("corvane-demo.properties"));
        properties.open(QIODevice::WriteOnly);
        properties.write("log4cplus.rootLogger=INFO, NULL\n"
                         "log4cplus.appender.NULL=log4cplus::NullAppender\n");
    }
    return folder;
}

void runDemo(benchmark::State& state, const char* configuration)
{
    const QString program = application().filePath("corvane-demo");
    for (auto _ : state) {
        QElapsedTimer timer;
        timer.start();
        QProcess demo;
        demo.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        demo.start(program, {"-C", QString::fromLatin1(configuration)});
        if (!demo.waitForFinished(60000) || demo.exitCode() != 0) {
            state.SkipWithError("the demo did not run through");
            break;
        }
        state.SetIterationTime(double(timer.nsecsElapsed()) / 1e9);
    }
}

void BM_StartUpWithoutPlugins(benchmark::State& state)
{
    runDemo(state, "none.xml");
}
BENCHMARK(BM_StartUpWithoutPlugins)->UseManualTime()->Iterations(20)->Unit(benchmark::kMillisecond);

void BM_StartUpWith50Plugins(benchmark::State& state)
{
    runDemo(state, "fifty.xml");
}
BENCHMARK(BM_StartUpWith50Plugins)->UseManualTime()->Iterations(20)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    const double added = reporter.nanosecondsOf("BM_StartUpWith50Plugins/iterations:20/manual_time")
        - reporter.nanosecondsOf("BM_StartUpWithoutPlugins/iterations:20/manual_time");
    if (added > 0) {
        std::printf("ADDED per plug-in (load + initialize): %.2f ms\n",
                    added / generatedPlugins / 1e6);
    }
    benchmark::Shutdown();
    return 0;
}
