#pragma once

// All exceptions of the framework in one include. The classes declared here only name a
// category of failure so that callers can catch it by type; the ones that carry data of their
// own have headers of their own.

#include "Exceptions/BaseException.h"
#include "Exceptions/InvalidArgumentException.h"
#include "Exceptions/SilentExitException.h"
#include "Exceptions/UserManagementException.h"
#include "Exceptions/ValueOutOfRangeException.h"

#define CORVANE_DECLARE_EXCEPTION(ClassName)                                                       \
    class CORE_EXPORT ClassName : public BaseException                                             \
    {                                                                                              \
    public:                                                                                        \
        ClassName(const QObject* sender, QString method, QString reason);                          \
        ClassName(const QString& source, QString method, QString reason);                          \
        ~ClassName() override;                                                                     \
    };

namespace corvane {
namespace base {
namespace exceptions {

CORVANE_DECLARE_EXCEPTION(ManagerRegistryException)
CORVANE_DECLARE_EXCEPTION(ConfigurationManagerException)
CORVANE_DECLARE_EXCEPTION(PluginManagerException)
CORVANE_DECLARE_EXCEPTION(ServiceManagerException)
CORVANE_DECLARE_EXCEPTION(StartUpManagerException)
CORVANE_DECLARE_EXCEPTION(NullPointerException)
CORVANE_DECLARE_EXCEPTION(ConnectFailedException)
CORVANE_DECLARE_EXCEPTION(PluginException)
CORVANE_DECLARE_EXCEPTION(ServiceUnavailableException)
CORVANE_DECLARE_EXCEPTION(InvalidOperationException)
CORVANE_DECLARE_EXCEPTION(FileNotFoundException)
CORVANE_DECLARE_EXCEPTION(PersistenceException)
CORVANE_DECLARE_EXCEPTION(RecordNotFoundException)
CORVANE_DECLARE_EXCEPTION(RecordAlreadyExistsException)
CORVANE_DECLARE_EXCEPTION(FileIOException)
CORVANE_DECLARE_EXCEPTION(InvalidFileFormatException)
CORVANE_DECLARE_EXCEPTION(DataExchangeException)
CORVANE_DECLARE_EXCEPTION(NotImplementedException)
CORVANE_DECLARE_EXCEPTION(InvalidSignatureException)
CORVANE_DECLARE_EXCEPTION(InvalidConfigurationException)
CORVANE_DECLARE_EXCEPTION(SerializerException)
CORVANE_DECLARE_EXCEPTION(HelpException)
CORVANE_DECLARE_EXCEPTION(BindException)
CORVANE_DECLARE_EXCEPTION(ConnectException)
CORVANE_DECLARE_EXCEPTION(NoRouteToHostException)
CORVANE_DECLARE_EXCEPTION(PortUnreachableException)
CORVANE_DECLARE_EXCEPTION(PrintException)
CORVANE_DECLARE_EXCEPTION(I18nException)
CORVANE_DECLARE_EXCEPTION(UIException)
CORVANE_DECLARE_EXCEPTION(ListAndLabelException)
CORVANE_DECLARE_EXCEPTION(LanguageNotAvailableException)

} // namespace exceptions
} // namespace base
} // namespace corvane

#undef CORVANE_DECLARE_EXCEPTION
