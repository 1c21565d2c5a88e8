// Fingerprinting a 64 MiB text file against plain SHA-1 over the same bytes.

#include "RatioReporter.h"

#include "Configuration/FileSignature.h"
#include "Logging/LoggingManager.h"
#include "StartUp/ManagerRegistry.h"

#include <QCryptographicHash>
#include <QFile>
#include <QTemporaryDir>

using namespace corvane::base::business;

namespace {

constexpr qint64 fileSize = 64LL * 1024 * 1024;

// 64 MiB of 80-character lines with "\r\n" ends, written once.
const QString& textFile()
{
    static QTemporaryDir folder;
    static const QString path = folder.filePath(QStringLiteral("big.xml"));
    if (!QFile::exists(path)) {
        QFile file(path);
        file.open(QIODevice::WriteOnly);
        QByteArray line = QByteArray(78, 'a') + "\r\n";
        for (qint64 written = 0; written < fileSize; written += line.size()) {
            line[int(written / line.size() % 78)] = char('a' + written % 26);
            file.write(line);
        }
    }
    return path;
}

void BM_CreateHashFromFileContent(benchmark::State& state)
{
    FileSignature signature;
    for (auto _ : state) {
        QString hash;
        signature.createHashFromFileContent(textFile(), hash);
        benchmark::DoNotOptimize(hash);
    }
    state.SetBytesProcessed(state.iterations() * fileSize);
}
BENCHMARK(BM_CreateHashFromFileContent)->Unit(benchmark::kMillisecond);

void BM_QCryptographicHash(benchmark::State& state)
{
    for (auto _ : state) {
        QFile file(textFile());
        file.open(QIODevice::ReadOnly);
        QCryptographicHash sha1(QCryptographicHash::Sha1);
        sha1.addData(&file);
        benchmark::DoNotOptimize(sha1.result());
    }
    state.SetBytesProcessed(state.iterations() * fileSize);
}
BENCHMARK(BM_QCryptographicHash)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    ManagerRegistry::instance()->registerManager(*LoggingManager::instance());
    LoggingManager::instance()->changeLoglevel(
        QStringLiteral("corvane.base.business.FileSignature"),
        corvane::base::interfaces::ILoggingManager::FATAL);
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.printRatios({{"BM_CreateHashFromFileContent", "BM_QCryptographicHash"}}, {1.3});
    benchmark::Shutdown();
    return 0;
}
