// corvane-plugins: explains in which order an application's plug-ins start, and why some do
// not, draws their service graph, checks the configuration file, profiles the last start and
// enables a plug-in again. It reads the configuration and loads the plug-ins with the library's
// own code, as a start does, but initializes none of them.

#include "ConfigurationCheck.h"

#include <Configuration/ConfigurationManager.h>
#include <Exceptions/Exceptions.h>
#include <Logging/LogMessageHandler.h>
#include <Logging/LoggingManager.h>
#include <Plugins/PluginManager.h>
#include <Plugins/ServiceManager.h>
#include <Plugins/StartUpRecord.h>
#include <Plugins/StartUpTrace.h>
#include <StartUp/ManagerRegistry.h>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QDomElement>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTextStream>

#include <log4cplus/consoleappender.h>
#include <log4cplus/layout.h>
#include <log4cplus/logger.h>

#include <algorithm>
#include <cstdio>
#include <memory>

namespace {

using namespace corvane::base;
using business::PluginManager;
using business::PluginOrder;

enum ExitCode { AllOrdered = 0, NotAllOrdered = 1, UsageError = 2, ConfigError = 3, SvgError = 4 };

const char* const description
    = "Explains the start order of an application's plug-ins, draws their service graph and\n"
      "checks the application's configuration file.\n"
      "The plug-ins are loaded and ordered as the application's start does it, but none is\n"
      "initialized. <configuration> is the application's configuration file, or its folder\n"
      "when that holds one application (an executable with <its name>.xml beside it).\n\n"
      "Commands:\n"
      "  order   print the start order, the pass that ordered each plug-in, what each provides\n"
      "          and requires, and why the plug-ins left over cannot start\n"
      "  graph   write the service graph as Graphviz DOT (or, with --svg, render it)\n"
      "  check   report, as file:line:column, what the application would refuse, ignore or\n"
      "          misread in the configuration file; loads no plug-in\n"
      "  profile where the last start's time went, by cost, from the trace it left in the\n"
      "          user's state folder (or from a trace file given instead, <file>.json)\n"
      "  enable <plug-in> <configuration>\n"
      "          enable a plug-in disabled after it ended a start, and forget that it did\n\n"
      "Exit codes: 0 all plug-ins can be ordered (check: no problem), 1 some cannot (or cannot\n"
      "be loaded; check: problems; profile: no trace; enable: nothing to enable), 2 wrong usage,\n"
      "3 the configuration cannot be read, 4 the SVG file was not written.";

QTextStream& out()
{
    static QTextStream stream(stdout);
    return stream;
}

int fail(int code, const QString& line)
{
    QTextStream(stderr) << "corvane-plugins: " << line << '\n';
    return code;
}

// What loading and ordering told about the plug-ins.
struct Report
{
    QString configuration; // as given
    QString folder;
    PluginOrder::Result result;
    QHash<QString, PluginManager::PluginDetails> details;
    QStringList why;
    QList<QPair<QString, QString>> disabled; // name, why
    business::StartUpRecord::Entry lastStart;
    QStringList disabledUntilEnabled;
};

// The plug-ins a start leaves out, and the one that ended the last start.
void printDisabled(const Report& report)
{
    if (!report.disabled.isEmpty()) {
        out() << "Disabled:\n";
        for (const auto& plugin : report.disabled) {
            out() << "  -  " << plugin.first << " (" << plugin.second << ")\n";
        }
    }
    if (!report.lastStart.isNull()) {
        out() << "The last start ended while plug-in " << report.lastStart.name() << " was "
              << report.lastStart.phase << ".\n";
    }
    for (const QString& name : report.disabledUntilEnabled) {
        out() << name << " is disabled until it is enabled again: corvane-plugins enable " << name
              << ' ' << report.configuration << "\n";
    }
}

// Every phase of a trace, the most costly first, in milliseconds with one decimal.
int printProfile(const QString& source, const QByteArray& json)
{
    QString error;
    QList<business::StartUpTrace::Event> events = business::StartUpTrace::fromJson(json, &error);
    if (!error.isEmpty()) {
        return fail(NotAllOrdered, QStringLiteral("no start-up trace in %1: %2").arg(source, error));
    }
    double total = 0;
    for (const auto& event : qAsConst(events)) {
        if (event.phase == QLatin1String("start-up")) {
            total = event.durationMs;
        }
    }
    events.erase(std::remove_if(events.begin(), events.end(),
                                [](const business::StartUpTrace::Event& event) {
                                    return event.phase == QLatin1String("start-up");
                                }),
                 events.end());
    std::stable_sort(events.begin(), events.end(), [](const auto& a, const auto& b) {
        return a.durationMs > b.durationMs;
    });
    out() << "Start-up of " << source;
    if (total > 0) {
        out() << ", " << QString::number(total, 'f', 1) << " ms until the event loop ran";
    }
    out() << ":\n" << QStringLiteral("%1  %2  %3\n").arg("ms", 8).arg("share", 6).arg("phase");
    double traced = 0;
    for (const auto& event : qAsConst(events)) {
        traced += event.durationMs;
        const QString share = total > 0
            ? QString::number(100 * event.durationMs / total, 'f', 1) + QLatin1Char('%')
            : QString();
        out() << QStringLiteral("%1  %2  %3\n")
                     .arg(QString::number(event.durationMs, 'f', 1), 8)
                     .arg(share, 6)
                     .arg(event.name());
    }
    if (total > 0) {
        out() << QStringLiteral("%1  %2  (between the phases)\n")
                     .arg(QString::number(total - traced, 'f', 1), 8)
                     .arg(QString::number(100 * (total - traced) / total, 'f', 1) + '%', 6);
    }
    return AllOrdered;
}

// A DOT string: quoted, with its quotes, backslashes and line breaks escaped.
QString quoted(QString text)
{
    text.replace('\\', QLatin1String("\\\\")).replace('"', QLatin1String("\\\""));
    return '"' + text.replace('\n', QLatin1String("\\n")) + '"';
}

QStringList providersOf(const Report& report, const QString& service)
{
    QStringList providers;
    for (const QString& name : report.result.order + report.result.leftOver) {
        if (report.details.value(name).providedServices.contains(service)) {
            providers << name;
        }
    }
    return providers;
}

// "1 plug-in", "2 plug-ins"; "1 pass", "2 passes".
QString counted(int count, const char* one, const char* many)
{
    return QStringLiteral("%1 %2").arg(count).arg(QLatin1String(count == 1 ? one : many));
}

// One plug-in of the start order (position > 0) or of the left-over ones, with its services.
void printPlugin(const Report& report, const QString& name, int position, int labelWidth)
{
    const PluginManager::PluginDetails& plugin = report.details[name];
    const int numberWidth = QString::number(report.details.size()).size();
    const QString label = name + ' ' + plugin.version;
    out() << "  "
          << (position > 0 ? QString::number(position) : QStringLiteral("-"))
                 .rightJustified(numberWidth)
          << "  "
          << (position > 0
                  ? label.leftJustified(labelWidth) + QStringLiteral("  pass %1").arg(plugin.pass)
                  : label)
          << '\n';

    const QString indent(numberWidth + 6, ' ');
    QStringList required = plugin.requiredServices;
    for (const QString& service : plugin.optionalRequiredServices) {
        required << service
                + (providersOf(report, service).isEmpty()
                       ? QStringLiteral(" (optional, provided by nobody)")
                       : QStringLiteral(" (optional)"));
    }
    if (!plugin.providedServices.isEmpty()) {
        out() << indent << "provides: " << plugin.providedServices.join(", ") << '\n';
    }
    if (!required.isEmpty()) {
        out() << indent << "requires: " << required.join(", ") << '\n';
    }
    if (plugin.tasks != QStringList {QStringLiteral("Base")}) {
        out() << indent << "tasks: " << plugin.tasks.join(", ")
              << (plugin.tasks.contains(QStringLiteral("Base"))
                      ? ""
                      : " (not started with the application)")
              << '\n';
    }
}

int printOrder(const Report& report)
{
    const PluginOrder::Result& result = report.result;
    out() << "Start order of " << report.configuration << " (plug-ins from " << report.folder
          << "):\n";
    if (report.details.isEmpty()) {
        out() << "No plug-ins configured.\n";
        return AllOrdered;
    }
    int labelWidth = 0;
    for (const PluginManager::PluginDetails& plugin : report.details) {
        labelWidth = qMax(labelWidth, plugin.name.size() + 1 + plugin.version.size());
    }
    for (int i = 0; i < result.order.size(); ++i) {
        printPlugin(report, result.order.at(i), i + 1, labelWidth);
    }
    const int passCount = result.passes.isEmpty() ? 0 : result.passes.last();
    if (result.leftOver.isEmpty()) {
        out() << result.order.size() << " of "
              << counted(result.order.size(), "plug-in", "plug-ins") << " can be ordered, in "
              << counted(passCount, "pass", "passes") << ".\n";
        return AllOrdered;
    }
    out() << "Not ordered:\n";
    for (const QString& name : result.leftOver) {
        printPlugin(report, name, 0, labelWidth);
    }
    out() << "Why:\n";
    for (const QString& line : report.why) {
        out() << "  " << line << '\n';
    }
    out() << result.leftOver.size() << " of "
          << counted(report.details.size(), "plug-in", "plug-ins")
          << " cannot be ordered: " << result.leftOver.join(", ") << ".\n";
    return NotAllOrdered;
}

// Plug-ins are boxes, an arrow leads from a plug-in to each provider of a service it requires
// (dashed when optional); what keeps plug-ins from starting is red: the left-over plug-ins, the
// arrows of cycles and the requirements nobody provides.
QString graphOf(const Report& report)
{
    const QString red = QStringLiteral(", color=red, fontcolor=red");
    QSet<QString> cycleEdges; // "from\nservice\nto"
    for (const QString& line : report.why) {
        if (line.startsWith(QLatin1String("cycle: "))) {
            const QStringList steps = line.mid(7).split(QStringLiteral(" -> "));
            for (int i = 0; i + 2 < steps.size(); i += 2) {
                cycleEdges << steps.at(i) + '\n' + steps.at(i + 1) + '\n' + steps.at(i + 2);
            }
        }
    }
    QString nodes;
    QString missing;
    QString edges;
    QStringList drawnMissing;
    for (const QString& name : report.result.order + report.result.leftOver) {
        const PluginManager::PluginDetails& plugin = report.details[name];
        nodes
            += QStringLiteral("  %1 [label=%2%3];\n")
                   .arg(quoted(name),
                        quoted(QStringLiteral("%1 %2\n%3")
                                   .arg(name, plugin.version,
                                        plugin.pass > 0 ? QStringLiteral("pass %1").arg(plugin.pass)
                                                        : QStringLiteral("not ordered"))),
                        plugin.pass > 0 ? QString() : red);
        QStringList services = plugin.requiredServices + plugin.optionalRequiredServices;
        services.removeDuplicates();
        for (const QString& service : qAsConst(services)) {
            const bool optional = !plugin.requiredServices.contains(service);
            const QString style = optional ? QStringLiteral(", style=dashed") : QString();
            QStringList providers = providersOf(report, service);
            if (providers.isEmpty()) {
                const QString node = QStringLiteral("missing: ") + service;
                const QString colour
                    = optional ? QStringLiteral(", color=gray, fontcolor=gray") : red;
                if (!drawnMissing.contains(node)) {
                    drawnMissing << node;
                    missing
                        += QStringLiteral("  %1 [label=%2, style=dashed%3];\n")
                               .arg(quoted(node), quoted(service + "\nprovided by nobody"), colour);
                }
                edges += QStringLiteral("  %1 -> %2 [label=%3%4%5];\n")
                             .arg(quoted(name), quoted(node), quoted(service), style, colour);
                continue;
            }
            for (const QString& provider : qAsConst(providers)) {
                const bool inCycle = cycleEdges.contains(name + '\n' + service + '\n' + provider);
                edges += QStringLiteral("  %1 -> %2 [label=%3%4%5];\n")
                             .arg(quoted(name), quoted(provider), quoted(service), style,
                                  inCycle ? red : QString());
            }
        }
    }
    return QStringLiteral("digraph plugins {\n  rankdir=BT;\n  node [shape=box];\n") + nodes
        + missing + edges + QStringLiteral("}\n");
}

int writeSvg(const QString& graph, const QString& file)
{
    const QString dot = QStandardPaths::findExecutable(QStringLiteral("dot"));
    if (dot.isEmpty()) {
        return fail(SvgError,
                    QStringLiteral("cannot write '%1': Graphviz's 'dot' is not "
                                   "installed (Debian package graphviz)")
                        .arg(file));
    }
    QProcess process;
    process.start(dot, {QStringLiteral("-Tsvg"), QStringLiteral("-o"), file});
    process.write(graph.toUtf8());
    process.closeWriteChannel();
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit
        || process.exitCode() != 0) {
        process.kill();
        return fail(
            SvgError,
            QStringLiteral("cannot write '%1': %2")
                .arg(file, QString::fromLocal8Bit(process.readAllStandardError()).trimmed()));
    }
    return 0;
}

// The configuration file that a path names: the file itself, or in a folder the one of its
// only application, as the runner would find it. Sets problem and code when there is none.
QString configurationOf(const QString& path, QString& problem, int& code)
{
    if (!QFileInfo(path).isDir()) {
        return path;
    }
    QStringList found;
    const QDir folder(path);
    for (const QFileInfo& file : folder.entryInfoList(QDir::Files | QDir::Executable, QDir::Name)) {
        const QString configuration
            = business::ConfigurationManager::getFilePath(file.absoluteFilePath(), {});
        if (QFileInfo::exists(configuration)) {
            found << configuration;
        }
    }
    if (found.size() == 1) {
        return found.first();
    }
    QStringList names;
    for (const QString& file : qAsConst(found)) {
        names << QFileInfo(file).fileName();
    }
    code = found.isEmpty() ? ConfigError : UsageError;
    problem = found.isEmpty()
        ? QStringLiteral("no application in '%1' (an executable with <its name>.xml beside it)")
              .arg(path)
        : QStringLiteral("'%1' holds several applications (%2): name the configuration file")
              .arg(path, names.join(", "));
    return QString();
}

// Reports the configuration's problems; plug-in libraries must be in folder (default: the
// configuration's own).
int check(const QString& path, const QString& given, const QString& folder)
{
    ConfigurationCheck check(path, given,
                             QDir::cleanPath(QFileInfo(folder.isEmpty() ? path : folder + "/")
                                                 .absolutePath()));
    if (!check.run()) {
        QTextStream(stderr) << "Error: " << check.openError() << '\n';
        return ConfigError;
    }
    const QStringList problems = check.problems();
    for (const QString& problem : problems) {
        out() << problem << '\n';
    }
    if (problems.isEmpty()) {
        out() << given << ": no problems found.\n";
    } else {
        out() << given << ": " << counted(problems.size(), "problem", "problems") << " found.\n";
    }
    out().flush();
    return problems.isEmpty() ? AllOrdered : NotAllOrdered;
}

// The library's and the plug-ins' log lines go to standard error when asked for, else nowhere.
void setUpLogging(bool verbose)
{
    business::ManagerRegistry::instance()->registerManager(*business::LoggingManager::instance());
    log4cplus::Logger root = log4cplus::Logger::getRoot();
    if (verbose) {
        log4cplus::SharedAppenderPtr console(new log4cplus::ConsoleAppender(true));
        console->setLayout(std::make_unique<log4cplus::PatternLayout>("%-5p %c - %m%n"));
        root.addAppender(console);
        root.setLogLevel(log4cplus::DEBUG_LOG_LEVEL);
    } else {
        root.setLogLevel(log4cplus::OFF_LOG_LEVEL);
    }
    qInstallMessageHandler(corvane::logging::log4cxxMessageHandler);
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("corvane-plugins"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QString::fromLatin1(description));
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("command"),
                                 QStringLiteral("order, graph, check, profile or enable"));
    parser.addPositionalArgument(QStringLiteral("configuration"),
                                 QStringLiteral("the configuration file, or the application's "
                                                "folder"));
    const QCommandLineOption folderOption(
        QStringLiteral("folder"),
        QStringLiteral("The folder of the application and its plug-ins (default: the "
                       "configuration's folder)."),
        QStringLiteral("folder"));
    const QCommandLineOption svgOption(QStringLiteral("svg"),
                                       QStringLiteral("graph: render the graph to <file> with "
                                                      "Graphviz's dot instead."),
                                       QStringLiteral("file"));
    const QCommandLineOption verboseOption(
        QStringLiteral("verbose"),
        QStringLiteral("Write the library's and the plug-ins' log lines to standard error."));
    parser.addOptions({folderOption, svgOption, verboseOption});

    QString usageProblem;
    if (!parser.parse(QCoreApplication::arguments())) {
        usageProblem = parser.errorText();
    } else if (parser.isSet(QStringLiteral("help"))) {
        parser.showHelp(0);
    } else if (parser.positionalArguments().value(0) == "enable"
               && parser.positionalArguments().size() != 3) {
        usageProblem = QStringLiteral("expected: enable <plug-in> <configuration>");
    } else if (parser.positionalArguments().value(0) != "enable"
               && (parser.positionalArguments().size() != 2
                   || !QStringList {"order", "graph", "check", "profile"}.contains(
                       parser.positionalArguments().at(0)))) {
        usageProblem = QStringLiteral(
            "expected a command (order, graph, check, profile or enable) and a configuration");
    } else if (parser.isSet(svgOption) && parser.positionalArguments().at(0) != "graph") {
        usageProblem = QStringLiteral("--svg belongs to the graph command");
    }
    if (!usageProblem.isEmpty()) {
        fail(UsageError, usageProblem);
        std::fputs(qPrintable(parser.helpText()), stderr);
        return UsageError;
    }
    const QString command = parser.positionalArguments().at(0);
    const QString given = parser.positionalArguments().last();
    if (command == QLatin1String("profile") && given.endsWith(QLatin1String(".json"))) {
        QFile trace(given);
        if (!trace.open(QIODevice::ReadOnly)) {
            return fail(ConfigError, QStringLiteral("cannot read %1: %2").arg(given, trace.errorString()));
        }
        return printProfile(given, trace.readAll());
    }
    const QString svg = parser.isSet(svgOption)
        ? QFileInfo(parser.value(svgOption)).absoluteFilePath()
        : QString();

    QString problem;
    int code = 0;
    const QString configuration = configurationOf(given, problem, code);
    if (configuration.isEmpty()) {
        return fail(code, problem);
    }
    setUpLogging(parser.isSet(verboseOption));

    const QString path = QFileInfo(configuration).absoluteFilePath();
    if (command == QLatin1String("check")) {
        return check(path, given, parser.isSet(folderOption) ? parser.value(folderOption) : "");
    }
    // The runner's own reading, and its words when the file cannot be read.
    QDomElement root;
    const QString error = business::ConfigurationManager::getRootElement(path, root);
    if (!error.isEmpty()) {
        QTextStream(stderr) << "Error: " << error << '\n';
        return ConfigError;
    }
    entities::ApplicationInformation information;
    QList<entities::PluginConfiguration> plugins;
    business::ConfigurationManager::readConfig(root, information, plugins);
    // The state folder's name: the application's, as its start takes it.
    const QString applicationName = information.getApplicationName().isEmpty()
        ? QFileInfo(path).completeBaseName()
        : information.getApplicationName();
    business::StartUpRecord record(applicationName);
    if (command == QLatin1String("profile")) {
        const QByteArray trace = record.storedTrace();
        if (trace.isEmpty()) {
            return fail(NotAllOrdered, QStringLiteral("no start of %1 has left a trace in %2")
                                           .arg(applicationName, record.folder()));
        }
        return printProfile(given, trace);
    }
    if (command == QLatin1String("enable")) {
        const QString name = parser.positionalArguments().at(1);
        if (!record.enable(name)) {
            return fail(NotAllOrdered,
                        QStringLiteral("%1 is neither disabled nor recorded for %2 (in %3)")
                            .arg(name, applicationName, record.folder()));
        }
        out() << "Enabled " << name << " for " << applicationName << ".\n";
        return AllOrdered;
    }

    Report report;
    report.configuration = given;
    report.folder = QDir::cleanPath(
        QFileInfo(parser.isSet(folderOption) ? parser.value(folderOption) + "/" : path)
            .absolutePath());

    // Loaded as a start loads them: in the applicationName's folder, with its managers there.
    business::ManagerRegistry::instance()->registerManager(*business::ServiceManager::instance());
    PluginManager* manager = PluginManager::instance();
    business::ManagerRegistry::instance()->registerManager(*manager);
    manager->setPluginFolder(report.folder);
    manager->setApplicationName(applicationName);
    report.lastStart = record.lastEndedStart();
    report.disabledUntilEnabled = record.disabledPlugins();
    manager->setPluginConfigurations(plugins);
    QDir::setCurrent(report.folder);
    int result = AllOrdered;
    try {
        manager->loadPlugins();
        try {
            manager->orderPlugins();
        } catch (const exceptions::PluginManagerException&) {
            // The left-over plug-ins are in the recorded result.
        }
        report.result = manager->getOrdering();
        report.disabled = manager->getDisabledPlugins();
        report.why = PluginOrder::explainLeftOver(manager->getOrderingInput(), report.result);
        for (const QString& name : report.result.order + report.result.leftOver) {
            report.details.insert(name, manager->getPluginDetails(name));
        }
        if (command == QLatin1String("order")) {
            result = printOrder(report);
            printDisabled(report);
        } else {
            const QString graph = graphOf(report);
            result = report.result.leftOver.isEmpty() ? AllOrdered : NotAllOrdered;
            if (svg.isEmpty()) {
                out() << graph;
            } else if (writeSvg(graph, svg) != 0) {
                result = SvgError;
            } else {
                out() << "Wrote the service graph of " << given << " to " << svg << ".\n";
            }
        }
    } catch (const exceptions::BaseException& e) {
        result = fail(NotAllOrdered, e.getReason());
    }
    out().flush();
    try {
        manager->unloadPlugins();
    } catch (const exceptions::BaseException& e) {
        fail(result, e.getReason());
    }
    return result;
}
