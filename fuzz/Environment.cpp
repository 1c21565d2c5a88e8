// Environment expansion of arbitrary text among a few known variables, against the rule as
// described: the last ${NAME} first, values expanded again; an unset or empty variable, and one
// met again inside its own value (a cycle, however many references there are), throw naming it.

#include "FuzzSupport.h"

#include "Exceptions/Exceptions.h"
#include "Utility/SystemEnvironment.h"

#include <QRegularExpression>

using corvane::base::core::utility::SystemEnvironment;
using corvane::base::exceptions::InvalidArgumentException;

namespace {

const QRegularExpression reference(QStringLiteral("^(.*)\\$\\{([\\w]+)\\}(.*)$"));

// The outcome as {result} or {"unset" or "cycle", name}, or empty where a reference is pieced
// together from several values, which the rule leaves open. Each character remembers the
// variable whose value brought it in, that one its own, and so on.
QStringList expected(QString text)
{
    QList<QPair<QString, int>> origins; // the variable and the index of its own origin
    QVector<int> origin(text.size(), -1);
    for (QRegularExpressionMatch match; (match = reference.match(text)).hasMatch();) {
        const QString name = match.captured(2);
        const int start = match.capturedStart(2) - 2, end = match.capturedEnd(2) + 1;
        if (origin.mid(start, end - start).count(origin[start]) != end - start)
            return {};
        for (int at = origin[start]; at >= 0; at = origins[at].second)
            if (origins[at].first == name)
                return {"cycle", name};
        const QString value = QString::fromUtf8(qgetenv(name.toUtf8().constData()));
        if (value.isEmpty())
            return {"unset", name};
        origins << qMakePair(name, origin[start]);
        text.replace(start, end - start, value);
        origin = origin.mid(0, start) + QVector<int>(value.size(), origins.size() - 1)
            + origin.mid(end);
    }
    return {text};
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzz::startApplication();
    clearenv();
    // F has many references and no cycle; LONG_NAME_9's second reference is on another line.
    const QString variables = QStringLiteral(
        "A=alpha B=${A}/beta C=<${B}|${A}> D=$~{A}~${~}~$A~{A} E=ü€😀 EMPTY= F=${C}${C}${B} "
        "LONG_NAME_9=x${A}\n${A}y SELF=x${SELF} PING=(${A}${PONG}) PONG=${B}${PING} INTO=${SELF}");
    for (const QString& variable : variables.split(' ')) // "~" for a blank
        qputenv(variable.section('=', 0, 0).toUtf8(),
                variable.section('=', 1).replace('~', ' ').toUtf8());
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char*>(data), int(size));
    const QStringList outcome = expected(text);
    QStringList got;
    try {
        got << SystemEnvironment::expandEnvironmentVariables(text);
    } catch (const InvalidArgumentException& exception) {
        const QString reason = exception.getReason(), name = outcome.value(1);
        const bool unset
            = reason == QStringLiteral("Environment variable '%1' is not set").arg(name);
        // A cycle's reason is not fixed beyond naming the variable.
        got << (unset ? "unset" : reason.contains('\'' + name + '\'') ? "cycle" : reason) << name;
        if (exception.getMethod() != QLatin1String("expandEnvironmentVariables"))
            got << exception.getMethod();
    }
    CHECK(outcome.isEmpty() || got == outcome,
          '"' + text + "\" gave " + fuzz::show(got) + ", expected " + fuzz::show(outcome));
    return 0;
}
