#pragma once

#include "Exceptions/BaseException.h"

namespace corvane {
namespace base {
namespace exceptions {

/// A user-management operation failed; Reason tells a login dialog or account page why.
class CORE_EXPORT UserManagementException : public BaseException
{
public:
    /// Why the operation failed, for the user interface to react to.
    enum Reason {
        /// None of the reasons below, or not known.
        UNKNOWN_REASON,
        /// No user of that name exists.
        USER_NOT_FOUND,
        /// A user of that name exists already.
        USER_ALREADY_EXISTS,
        /// The password does not match.
        WRONG_PASSWORD,
        /// The password is valid but has expired and must be changed.
        PASSWORD_EXPIRED,
        /// A new password does not meet the password rules.
        PASSWORD_TOO_WEAK,
        /// The account is locked, for example after too many failed log-ins.
        ACCOUNT_LOCKED,
        /// The account has been disabled.
        ACCOUNT_DISABLED,
        /// The user lacks the permission for the operation.
        PERMISSION_DENIED
    };

    /// Raised by sender in method; reasonText becomes the reason, reason its id.
    UserManagementException(const QObject* sender, QString method, Reason reason,
                            QString reasonText);
    /// Raised by the code named source in method; reasonText becomes the reason, reason its id.
    UserManagementException(const QString& source, QString method, Reason reason,
                            QString reasonText);
    /// Copies the exception with its reason id.
    UserManagementException(const UserManagementException& other);
    /// Copies the exception with its reason id.
    UserManagementException& operator=(const UserManagementException& other);
    ~UserManagementException() override;

    /// Why the operation failed.
    Reason getReasonId() const;

private:
    Reason reasonId;
};

} // namespace exceptions
} // namespace base
} // namespace corvane
