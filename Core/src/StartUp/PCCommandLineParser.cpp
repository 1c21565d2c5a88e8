#include "StartUp/PCCommandLineParser.h"

namespace corvane {
namespace base {
namespace business {

PCCommandLineParser::PCCommandLineParser() = default;

void PCCommandLineParser::parse(const QStringList& arguments)
{
    configFilePath = findConfigFilePathInArguments(arguments);
}

QString PCCommandLineParser::getConfigFilePath() const
{
    return configFilePath;
}

QString PCCommandLineParser::findConfigFilePathInArguments(const QStringList& arguments) const
{
    static const QStringList optionsWithValue {QStringLiteral("-C")};
    for (int i = 1; i < arguments.size(); ++i) {
        const QString& argument = arguments.at(i);
        if (!argument.startsWith(QLatin1Char('-'))) {
            return argument;
        }
        if (optionsWithValue.contains(argument)) {
            ++i; // its value
        }
    }
    return QString();
}

} // namespace business
} // namespace base
} // namespace corvane
