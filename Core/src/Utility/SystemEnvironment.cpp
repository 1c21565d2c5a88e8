#include "Utility/SystemEnvironment.h"

#include "Exceptions/InvalidArgumentException.h"

#include <QRegularExpression>

namespace corvane {
namespace base {
namespace core {
namespace utility {

namespace {

const QString source = QStringLiteral("Core/src/Utility/SystemEnvironment.cpp");
const QString method = QStringLiteral("expandEnvironmentVariables");

// Far more references than any real text holds; reaching it means a value refers to itself,
// directly or through other variables, and expanding would never end.
constexpr int maximumExpansions = 1000;

} // namespace

QString SystemEnvironment::expandEnvironmentVariables(const QString& text)
{
    // The greedy first group makes the last reference in the text the one that matches.
    static const QRegularExpression lastReference(QStringLiteral("^(.*)\\$\\{([\\w]+)\\}(.*)$"));

    QString expanded = text;
    for (int expansions = 0;; ++expansions) {
        const QRegularExpressionMatch match = lastReference.match(expanded);
        if (!match.hasMatch()) {
            return expanded;
        }
        const QString name = match.captured(2);
        if (expansions == maximumExpansions) {
            throw exceptions::InvalidArgumentException(
                source, method,
                QStringLiteral("Environment variable '%1' refers to itself").arg(name));
        }
        const QByteArray value = qgetenv(name.toUtf8().constData());
        if (value.isEmpty()) {
            throw exceptions::InvalidArgumentException(
                source, method, QStringLiteral("Environment variable '%1' is not set").arg(name));
        }
        expanded = match.captured(1) + QString::fromUtf8(value) + match.captured(3);
    }
}

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
