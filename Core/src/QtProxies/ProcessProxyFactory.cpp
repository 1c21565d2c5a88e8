#include "QtProxies/ProcessProxyFactory.h"

#include "QtProxies/ProcessProxy.h"

namespace corvane {
namespace base {
namespace core {

IProcessProxy* ProcessProxyFactory::createProcessProxy(QObject* parent)
{
    return new ProcessProxy(parent);
}

} // namespace core
} // namespace base
} // namespace corvane
