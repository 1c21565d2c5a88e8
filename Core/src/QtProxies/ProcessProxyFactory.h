#pragma once

#include "CoreExport.h"

class QObject;

namespace corvane {
namespace base {
namespace core {

class IProcessProxy;

/// Creates process proxies; the caller owns them.
class CORE_EXPORT ProcessProxyFactory
{
public:
    /// A new ProcessProxy, as a child of parent.
    static IProcessProxy* createProcessProxy(QObject* parent);
};

} // namespace core
} // namespace base
} // namespace corvane
