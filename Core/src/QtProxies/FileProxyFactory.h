#pragma once

#include "CoreExport.h"

#include <QString>

class QObject;

namespace corvane {
namespace base {
namespace core {

class IFileProxy;

/// Creates file proxies; the caller owns them.
class CORE_EXPORT FileProxyFactory
{
public:
    static IFileProxy* createFileProxy(QObject* parent);
    static IFileProxy* createFileProxy(const QString& name, QObject* parent);
};

} // namespace core
} // namespace base
} // namespace corvane
