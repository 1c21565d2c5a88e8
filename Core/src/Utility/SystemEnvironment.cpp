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

// An expansion still open: the variable and where its value begins in the text.
struct OpenExpansion
{
    QString name;
    int start;
};

} // namespace

// References are replaced from the last towards the first, each by its variable's value, until
// none is left. Nothing behind the last reference ever holds one, so the next reference lies
// inside the values inserted last (they nest) or before them, where they are done with. A
// variable met again inside its own value would never end and is refused; any number of other
// references is fine.
QString SystemEnvironment::expandEnvironmentVariables(const QString& text)
{
    // The greedy first group makes the last reference in the text the one that matches.
    static const QRegularExpression lastReference(QStringLiteral("^(.*)\\$\\{([\\w]+)\\}(.*)$"));

    QString expanded = text;
    QVector<OpenExpansion> open; // outermost first
    for (;;) {
        const QRegularExpressionMatch match = lastReference.match(expanded);
        if (!match.hasMatch()) {
            return expanded;
        }
        const QString name = match.captured(2);
        const int start = match.capturedStart(0) + match.capturedLength(1);
        const int length = name.size() + 3;
        while (!open.isEmpty() && start < open.last().start) {
            open.removeLast(); // everything in it is expanded
        }
        for (const OpenExpansion& outer : qAsConst(open)) {
            if (outer.name == name) {
                throw exceptions::InvalidArgumentException(
                    source, method,
                    QStringLiteral("Environment variable '%1' refers to itself").arg(name));
            }
        }
        const QByteArray value = qgetenv(name.toUtf8().constData());
        if (value.isEmpty()) {
            throw exceptions::InvalidArgumentException(
                source, method, QStringLiteral("Environment variable '%1' is not set").arg(name));
        }
        const QString replacement = QString::fromUtf8(value);
        expanded.replace(start, length, replacement);
        open.append({name, start});
    }
}

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
