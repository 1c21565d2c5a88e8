#pragma once

#include "Plugins/StartUpRecord.h"

#include <QObject>

namespace corvane {
namespace base {
namespace business {

/**
 * The question a GUI application asks when a plug-in ended its last start: start without it
 * this time, or disable it until it is enabled again (corvane-plugins enable). Translated
 * from the start-up translations beside the executable. The box is named
 * "lastStartQuestion", its buttons "leaveOutThisTime" and "disableUntilEnabled"; closing it
 * leaves the plug-in out this time.
 */
class CORE_EXPORT LastStartQuestion : public QObject
{
    Q_OBJECT

public:
    /// Asks about the plug-in that ended the last start, in a modal box, and returns the user's
    /// choice: LastStartChoice::DisableUntilEnabled, else LastStartChoice::LeaveOutThisTime.
    static LastStartChoice ask(const StartUpRecord::Entry& lastStart);
};

} // namespace business
} // namespace base
} // namespace corvane
