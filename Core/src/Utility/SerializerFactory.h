#pragma once

#include "CoreExport.h"

#include <QMap>
#include <QString>

namespace corvane {
namespace base {
namespace interfaces {
class ILoggingManager;
}
namespace core {
namespace interfaces {
class ISerializer;
}
namespace utility {

/**
 * The process-wide registry of serializers: plug-ins register a creator under a name at
 * start-up (and unregister it at shut-down); others create serializers by name. Registering
 * and unregistering take no lock; creating does.
 */
class CORE_EXPORT SerializerFactory
{
public:
    /// A function that creates a new serializer of one format.
    using Creator = interfaces::ISerializer* (*)();

    /// The process-wide factory, created on first call; requires a registered logging manager.
    static SerializerFactory* instance();

    /// A name registered already keeps its first creator (logged as an error).
    void registerSerializer(QString name, Creator creator);
    /// Removes the creator of name; an unknown name is logged as an error.
    void unregisterSerializer(QString name);
    /// A new serializer the caller owns; InvalidArgumentException for an unknown name.
    interfaces::ISerializer* createSerializer(const QString& name);

private:
    SerializerFactory();
    Q_DISABLE_COPY(SerializerFactory)

    void log(int level, const QString& text) const;

    QMap<QString, Creator> creators;
    base::interfaces::ILoggingManager* loggingManager;
};

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
