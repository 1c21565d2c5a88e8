#include "Exceptions/UserManagementException.h"

namespace corvane {
namespace base {
namespace exceptions {

UserManagementException::UserManagementException(const QObject* sender, QString method,
                                                 Reason reason, QString reasonText)
    : BaseException(sender, std::move(method), std::move(reasonText)), reasonId(reason)
{
}

UserManagementException::UserManagementException(const QString& source, QString method,
                                                 Reason reason, QString reasonText)
    : BaseException(source, std::move(method), std::move(reasonText)), reasonId(reason)
{
}

UserManagementException::UserManagementException(const UserManagementException& other) = default;

UserManagementException& UserManagementException::operator=(const UserManagementException& other)
    = default;

UserManagementException::~UserManagementException() = default;

UserManagementException::Reason UserManagementException::getReasonId() const
{
    return reasonId;
}

} // namespace exceptions
} // namespace base
} // namespace corvane
