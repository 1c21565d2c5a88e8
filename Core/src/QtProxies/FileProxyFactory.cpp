#include "QtProxies/FileProxyFactory.h"

#include "QtProxies/FileProxy.h"

namespace corvane {
namespace base {
namespace core {

IFileProxy* FileProxyFactory::createFileProxy(QObject* parent)
{
    return new FileProxy(parent);
}

IFileProxy* FileProxyFactory::createFileProxy(const QString& name, QObject* parent)
{
    return new FileProxy(name, parent);
}

} // namespace core
} // namespace base
} // namespace corvane
