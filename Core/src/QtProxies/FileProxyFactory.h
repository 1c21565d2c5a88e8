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
    /// A new FileProxy without a file name, as a child of parent.
    static IFileProxy* createFileProxy(QObject* parent);
    /// A new FileProxy for the file name, as a child of parent.
    static IFileProxy* createFileProxy(const QString& name, QObject* parent);
};

} // namespace core
} // namespace base
} // namespace corvane
