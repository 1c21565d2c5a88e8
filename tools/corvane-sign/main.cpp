// corvane-sign: computes, writes and checks the fingerprints of configuration files.

#include <Configuration/FileSignature.h>
#include <Logging/LoggingManager.h>
#include <StartUp/ManagerRegistry.h>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QTextStream>

#include <cstdio>

namespace {

using corvane::base::business::FileSignature;

enum ExitCode { Success = 0, InvalidSignature = 1, UsageError = 2, FileError = 3 };

const char* const description
    = "Computes, writes and checks salted SHA-1 fingerprints of configuration files.\n\n"
      "Commands:\n"
      "  hash    print the file's fingerprint\n"
      "  sign    write the fingerprint to <file>.sig\n"
      "  embed   append the fingerprint to the file as its last line\n"
      "  verify  check the file against <file>.sig or its last line\n\n"
      "Exit codes: 0 done or valid, 1 signature invalid, 2 wrong usage,\n"
      "3 file missing, unreadable or unwritable.";

void say(const QString& line)
{
    QTextStream(stdout) << line << '\n';
}

int fail(ExitCode code, const QString& line)
{
    QTextStream(stderr) << "corvane-sign: " << line << '\n';
    return code;
}

// Empty when the file can be read, else why not.
QString readProblem(const QString& path)
{
    QFile file(path);
    if (!QFileInfo::exists(path)) {
        return QStringLiteral("no such file");
    }
    if (!file.open(QIODevice::ReadOnly)) {
        return file.errorString();
    }
    return QString();
}

int run(const QString& command, const QString& path)
{
    const QString problem = readProblem(path);
    if (!problem.isEmpty()) {
        return fail(FileError, QStringLiteral("cannot read '%1': %2").arg(path, problem));
    }
    FileSignature signature;
    QString hash;
    signature.createHashFromFileContent(path, hash);

    if (command == QLatin1String("hash")) {
        say(hash);
        return Success;
    }
    if (command == QLatin1String("sign")) {
        signature.saveHashInAFile(path, hash);
        QFile written(path + QStringLiteral(".sig"));
        if (!written.open(QIODevice::ReadOnly) || written.readAll() != hash.toLatin1()) {
            return fail(FileError, QStringLiteral("cannot write '%1'").arg(written.fileName()));
        }
        say(QStringLiteral("Wrote the signature of '%1' to '%2'.").arg(path, written.fileName()));
        return Success;
    }
    if (command == QLatin1String("embed")) {
        signature.signFile(path);
        if (!signature.checkFileWithIncludedSignature(path)) {
            return fail(FileError, QStringLiteral("cannot append the signature to '%1'").arg(path));
        }
        say(QStringLiteral("Appended the signature to '%1'.").arg(path));
        return Success;
    }
    if (signature.isValid(path, true)) {
        say(QStringLiteral("'%1': signature valid.").arg(path));
        return Success;
    }
    say(QStringLiteral("'%1': signature INVALID.").arg(path));
    return InvalidSignature;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("corvane-sign"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QString::fromLatin1(description));
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("command"),
                                 QStringLiteral("hash, sign, embed or verify"));
    parser.addPositionalArgument(QStringLiteral("file"), QStringLiteral("the file"));
    parser.process(application);

    const QStringList arguments = parser.positionalArguments();
    static const QStringList commands {"hash", "sign", "embed", "verify"};
    if (arguments.size() != 2 || !commands.contains(arguments.at(0))) {
        fail(UsageError,
             QStringLiteral("expected a command (hash, sign, embed or verify) and a file"));
        std::fputs(qPrintable(parser.helpText()), stderr);
        return UsageError;
    }

    // The signature code logs its steps; a command-line tool keeps quiet about them.
    using namespace corvane::base;
    business::LoggingManager* logging = business::LoggingManager::instance();
    business::ManagerRegistry::instance()->registerManager(*logging);
    logging->changeLoglevel(QStringLiteral("corvane.base.business.FileSignature"),
                            interfaces::ILoggingManager::FATAL);

    return run(arguments.at(0), arguments.at(1));
}
