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
    PCCommandLineParser();

    void parse(const QStringList& arguments);
    QString getConfigFilePath() const;
    QString findConfigFilePathInArguments(const QStringList& arguments) const;

private:
    QString configFilePath;
};

} // namespace business
} // namespace base
} // namespace corvane
