#pragma once

#include "CoreExport.h"

#include <QStringList>

namespace corvane {
namespace base {
namespace business {

/// Finds the file argument of a command line: the first argument after the program that is
/// neither an option ("-x") nor the value of "-C".
class CORE_EXPORT PCCommandLineParser
{
public:
    /// A parser with an empty result.
    PCCommandLineParser();

    /// Finds the file argument in arguments (the program first) and keeps it.
    void parse(const QStringList& arguments);
    /// The file argument that parse() found; empty when there was none.
    QString getConfigFilePath() const;
    /// The file argument of arguments (the program first); empty when there is none.
    QString findConfigFilePathInArguments(const QStringList& arguments) const;

private:
    QString configFilePath;
};

} // namespace business
} // namespace base
} // namespace corvane
