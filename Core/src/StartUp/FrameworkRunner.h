#pragma once

#include "Configuration/ApplicationInformation.h"

#include <QDomElement>
#include <QStringList>

namespace corvane {
namespace base {
namespace business {

/**
 * The entry of an application:
 *
 *     int main(int argc, char** argv)
 *     {
 *         return corvane::base::business::FrameworkRunner().exec(argc, argv, false);
 *     }
 *
 * reads the configuration beside the executable (or the file after "-C"), runs the
 * application as a GUI or console application with its managers and plug-ins, and returns the
 * exit code: the event loop's, 1 for an unreadable configuration or an unknown application
 * type, a negative code when another instance runs.
 */
class CORE_EXPORT FrameworkRunner
{
public:
    /// Creates a runner; nothing happens until exec().
    FrameworkRunner();

    /// Runs the application that the configuration file describes and returns its exit code.
    /// With checkSignature, a configuration file that does not match its signature ends the start.
    int exec(int argc, char** argv, bool checkSignature);

    /// Reads the application information; writes "Error: <reason>" to standard output and
    /// answers false when the configuration cannot be read.
    bool retrieveApplicationInfo(const QStringList& arguments);
    /// Message handler, logging and configuration managers, signature check, start-up manager.
    void baseInitialization();
    /// Runs a GUI application (QApplication) with the single-application guard, managers and event loop.
    int runGuiApplication(int argc, char** argv);
    /// Runs a console application (QCoreApplication) as runGuiApplication() does, without a GUI.
    int runConsoleApplication(int argc, char** argv);
    /// Service control actions ("-i", "-t", ...) or the service itself; see ServiceController.
    int runServiceApplication(int argc, char** argv);

private:
    entities::ApplicationInformation applicationInformation;
    bool checkSignature = false;
    bool safeStart = false; // <information><safestart>true</safestart>
    QDomElement serviceSettings; // <service> of the configuration: settings of a service's unit
};

} // namespace business
} // namespace base
} // namespace corvane
