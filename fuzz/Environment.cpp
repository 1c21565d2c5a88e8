// Environment expansion on arbitrary text, with an environment of a few known variables and
// nothing else. Checked against the rule as described: the last ${NAME} reference (NAME of word
// characters) is replaced by the variable's value and the result expanded again, until none is
// left; an unset or empty variable throws InvalidArgumentException naming it. So a text without
// a reference comes back unchanged, and a result never holds a reference.

#include "FuzzSupport.h"

#include "Exceptions/Exceptions.h"
#include "Utility/SystemEnvironment.h"

#include <QRegularExpression>

#include <fuzzer/FuzzedDataProvider.h>

#include <optional>

using corvane::base::core::utility::SystemEnvironment;
using corvane::base::exceptions::BaseException;
using corvane::base::exceptions::InvalidArgumentException;

extern char** environ;

namespace {

const QRegularExpression reference(QStringLiteral("^(.*)\\$\\{([\\w]+)\\}(.*)$"));

// The values refer onwards (C to B to A), never back, so every expansion ends.
const char* const variables[][2] = {
    {"A", "alpha"},
    {"B", "${A}/beta"},
    {"C", "<${B}|${A}>"},
    {"D", "$ {A} ${ } $A {A}"},
    {"E", "ü€\xF0\x9F\x98\x80"},
    {"EMPTY", ""},
    {"LONG_NAME_9", "x${A}${A}y"},
};

struct Outcome
{
    QString text;
    std::optional<QString> unsetVariable;
};

Outcome expected(QString text)
{
    for (int steps = 0;; ++steps) {
        const QRegularExpressionMatch match = reference.match(text);
        if (!match.hasMatch()) {
            return {text, std::nullopt};
        }
        const QString name = match.captured(2);
        const QByteArray value = qgetenv(name.toUtf8().constData());
        if (value.isEmpty()) {
            return {QString(), name};
        }
        text = match.captured(1) + QString::fromUtf8(value) + match.captured(3);
        if (steps > 100000) {
            std::abort(); // the environment above cannot loop
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzz::application();
    QStringList names;
    for (char** entry = environ; *entry; ++entry) {
        names << QString::fromLocal8Bit(*entry).section('=', 0, 0);
    }
    for (const QString& name : names) {
        qunsetenv(name.toLocal8Bit().constData());
    }
    for (const auto& variable : variables) {
        qputenv(variable[0], variable[1]);
    }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char*>(data), int(size));
    const Outcome outcome = expected(text);
    try {
        const QString result = SystemEnvironment::expandEnvironmentVariables(text);
        CHECK(!outcome.unsetVariable,
              "no exception for \"" + text + "\", expected one naming " + *outcome.unsetVariable);
        CHECK(result == outcome.text,
              "\"" + text + "\" gave \"" + result + "\", expected \"" + outcome.text + '"');
        CHECK(reference.match(text).hasMatch() || result == text,
              "a text without reference changed: \"" + text + '"');
        CHECK(!reference.match(result).hasMatch(), "result holds a reference: \"" + result + '"');
    } catch (const InvalidArgumentException& exception) {
        const QString expectedReason = QStringLiteral("Environment variable '%1' is not set")
                                           .arg(outcome.unsetVariable.value_or("<none>"));
        CHECK(outcome.unsetVariable && exception.getReason() == expectedReason
                  && exception.getMethod() == QLatin1String("expandEnvironmentVariables"),
              "\"" + text + "\" threw \"" + exception.getReason() + "\" in " + exception.getMethod()
                  + ", expected "
                  + (outcome.unsetVariable ? expectedReason : QStringLiteral("no exception")));
    } catch (const BaseException& exception) {
        fuzz::fail("unexpected exception", QString::fromUtf8(exception.what()));
    }
    return 0;
}
