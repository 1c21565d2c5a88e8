#pragma once

#include "Exceptions/BaseException.h"

namespace corvane {
namespace base {
namespace exceptions {

/// A user-management operation failed; Reason tells a login dialog or account page why.
class CORE_EXPORT UserManagementException : public BaseException
{
public:
    enum Reason {
        UNKNOWN_REASON,
        USER_NOT_FOUND,
        USER_ALREADY_EXISTS,
        WRONG_PASSWORD,
        PASSWORD_EXPIRED,
        PASSWORD_TOO_WEAK,
        ACCOUNT_LOCKED,
        ACCOUNT_DISABLED,
        PERMISSION_DENIED
    };

    UserManagementException(const QObject* sender, QString method, Reason reason,
                            QString reasonText);
    UserManagementException(const QString& source, QString method, Reason reason,
                            QString reasonText);
    UserManagementException(const UserManagementException& other);
    UserManagementException& operator=(const UserManagementException& other);
    ~UserManagementException() override;

    Reason getReasonId() const;

private:
    Reason reasonId;
};

} // namespace exceptions
} // namespace base
} // namespace corvane
