#include "Exceptions/SilentExitException.h"

namespace corvane {
namespace base {
namespace exceptions {

SilentExitException::SilentExitException(const QObject* sender, QString message)
    : BaseException(sender, QString(), QStringLiteral("Silent Exit Request: %1").arg(message))
{
}

SilentExitException::~SilentExitException() = default;

} // namespace exceptions
} // namespace base
} // namespace corvane
