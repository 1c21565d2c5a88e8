#pragma once

#include "Exceptions/BaseException.h"

namespace corvane {
namespace base {
namespace exceptions {

/// An orderly request to end the program without an error, e.g. for a second instance.
class CORE_EXPORT SilentExitException : public BaseException
{
public:
    /// Raised by sender; the reason is "Silent Exit Request: " + message, the method empty.
    SilentExitException(const QObject* sender, QString message);
    ~SilentExitException() override;
};

} // namespace exceptions
} // namespace base
} // namespace corvane
