// What a plug-in adds to the start-up of an application: the demo executable run with 50
// generated plug-in libraries against the same executable with none (only the plug-in that
// ends the run), from start to exit; and the same against its floor, a bare program that only
// loads the same libraries with QPluginLoader and makes their root objects.

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

void runProcess(benchmark::State& state, const QString& program, const QStringList& arguments)
{
    for (auto _ : state) {
        QElapsedTimer timer;
        timer.start();
        QProcess process;
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process.start(program, arguments);
        if (!process.waitForFinished(60000) || process.exitCode() != 0) {
            state.SkipWithError("the program did not run through");
            break;
        }
        state.SetIterationTime(double(timer.nsecsElapsed()) / 1e9);
    }
}

QStringList libraries(int count)
{
    QStringList files;
    for (int i = 0; i < count; ++i) {
        files << application().filePath(
            QStringLiteral("libBench%1.so").arg(i, 2, 10, QLatin1Char('0')));
    }
    return files;
}

void BM_StartUpWithoutPlugins(benchmark::State& state)
{
    runProcess(state, application().filePath("corvane-demo"), {"-C", "none.xml"});
}

void BM_StartUpWith50Plugins(benchmark::State& state)
{
    runProcess(state, application().filePath("corvane-demo"), {"-C", "fifty.xml"});
}

void BM_BareLoadOfNone(benchmark::State& state)
{
    runProcess(state, QStringLiteral(BARE_LOADER), {});
}

void BM_BareLoadOf50(benchmark::State& state)
{
    runProcess(state, QStringLiteral(BARE_LOADER), libraries(generatedPlugins));
}

// Interleaved, so that a busy moment of the machine falls on all of them alike.
void registerRuns()
{
    for (auto* run :
         {benchmark::RegisterBenchmark("BM_StartUpWithoutPlugins", BM_StartUpWithoutPlugins),
          benchmark::RegisterBenchmark("BM_BareLoadOfNone", BM_BareLoadOfNone),
          benchmark::RegisterBenchmark("BM_StartUpWith50Plugins", BM_StartUpWith50Plugins),
          benchmark::RegisterBenchmark("BM_BareLoadOf50", BM_BareLoadOf50)}) {
        run->UseManualTime()->Iterations(10)->Repetitions(5)->Unit(benchmark::kMillisecond);
    }
}

} // namespace

int main(int argc, char** argv)
{
    registerRuns();
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    const auto time = [&](const char* name) {
        return reporter.nanosecondsOf(std::string(name) + "/iterations:10/repeats:5/manual_time");
    };
    const double framework = time("BM_StartUpWith50Plugins") - time("BM_StartUpWithoutPlugins");
    const double bare = time("BM_BareLoadOf50") - time("BM_BareLoadOfNone");
    if (framework > 0 && bare > 0) {
        std::printf("PER PLUG-IN: framework %.3f ms, bare QPluginLoader %.3f ms\n",
                    framework / generatedPlugins / 1e6, bare / generatedPlugins / 1e6);
        RatioReporter::printRatio("start-up per plug-in / bare QPluginLoader load and instance",
                                  framework / bare, 1.3);
    }
    benchmark::Shutdown();
    return 0;
}
