#pragma once

// What the harnesses share: a quiet Qt application (an "ASSERT: ..." of the library is a finding),
// a check whose failure ends the run so that libFuzzer keeps the input, files, bounded waiting.

#include <fuzzer/FuzzedDataProvider.h>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QFile>
#include <QRandomGenerator>
#include <QStringList>

#include <cstdio>
#include <cstdlib>

namespace fuzz {

[[noreturn]] inline void fail(const char* what, const QString& detail)
{
    std::fprintf(stderr, "PROPERTY VIOLATED: %s\n%s\n", what, qPrintable(detail));
    std::abort();
}

inline void startApplication()
{
    static int argc = 1;
    static char* argv[] = {const_cast<char*>("corvane-fuzz"), nullptr};
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
        if (type == QtFatalMsg || text.startsWith(QLatin1String("ASSERT")))
            fail("no Qt message of this kind", text);
    });
    new QCoreApplication(argc, argv);
}

inline QString show(const QByteArray& bytes)
{
    return '"' + QString::fromLatin1(bytes.toPercentEncoding(" /:.-_<>='|")) + '"';
}

inline QString show(const QStringList& list)
{
    return '[' + show(list.join('|').toUtf8()) + ']';
}

// The input as a byte stream, cut into pieces of 1 to 16 bytes chosen by its first bytes, as a
// socket may deliver it.
inline QList<QByteArray> streamInPieces(const uint8_t* data, size_t size, QByteArray& stream)
{
    FuzzedDataProvider provider(data, size);
    QRandomGenerator random(provider.ConsumeIntegral<quint32>());
    const quint32 largestPiece = 1 + provider.ConsumeIntegralInRange<quint32>(0, 15);
    stream = QByteArray::fromStdString(provider.ConsumeRemainingBytesAsString());
    QList<QByteArray> pieces;
    for (int position = 0; position < stream.size(); position += pieces.last().size())
        pieces << stream.mid(position, 1 + int(random.bounded(largestPiece)));
    return pieces;
}

inline void writeFile(const QString& path, const QByteArray& content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        fail("cannot write", path);
}

inline QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
}

inline void pump()
{
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

// Pumps events until condition holds, at most 5 s; answers whether it holds.
template <class Condition>
bool pumpUntil(Condition condition)
{
    for (QDeadlineTimer deadline(5000); !condition() && !deadline.hasExpired();)
        pump();
    return condition();
}

} // namespace fuzz

// CHECK(condition, detail): a violated property; detail (a QString) says what was seen.
#define CHECK(condition, detail) ((condition) ? void() : ::fuzz::fail(#condition, (detail)))
