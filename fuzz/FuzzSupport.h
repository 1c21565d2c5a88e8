#pragma once

// What every harness shares: a Qt application object, quiet Qt messages, and a check that
// ends the run with a report, so that libFuzzer keeps the input as a finding.

#include <QByteArray>
#include <QCoreApplication>
#include <QString>
#include <QStringList>

#include <cstdio>
#include <cstdlib>

namespace fuzz {

// Any "ASSERT: ..." report of the library counts as a finding; other messages are dropped.
inline void quietMessageHandler(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    if (type == QtFatalMsg || text.startsWith(QLatin1String("ASSERT"))) {
        std::fprintf(stderr, "Qt message: %s\n", qPrintable(text));
        std::abort();
    }
}

inline QCoreApplication& application()
{
    static int argc = 1;
    static char name[] = "corvane-fuzz";
    static char* argv[] = {name, nullptr};
    static QCoreApplication* app = [] {
        qInstallMessageHandler(quietMessageHandler);
        return new QCoreApplication(argc, argv);
    }();
    return *app;
}

[[noreturn]] inline void fail(const char* what, const QString& detail)
{
    std::fprintf(stderr, "PROPERTY VIOLATED: %s\n%s\n", what, qPrintable(detail));
    std::abort();
}

inline QString show(const QStringList& list)
{
    QStringList quoted;
    for (const QString& item : list) {
        quoted << '"' + QString::fromLatin1(item.toUtf8().toPercentEncoding(" /:.-_")) + '"';
    }
    return '[' + quoted.join(", ") + ']';
}

inline QString show(const QByteArray& bytes)
{
    return QString::fromLatin1(bytes.toPercentEncoding(" /:.-_<>=\"'"));
}

} // namespace fuzz

// CHECK(condition, detail): a violated property; detail (a QString) says what was seen.
#define CHECK(condition, detail)                                                                   \
    do {                                                                                           \
        if (!(condition)) {                                                                        \
            ::fuzz::fail(#condition, (detail));                                                    \
        }                                                                                          \
    } while (false)
