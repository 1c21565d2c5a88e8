#include "Exceptions/Exceptions.h"

// The destructors are defined here so that each class has its virtual table and type
// information in the library: plug-ins then catch the very types that the library throws.
#define CORVANE_DEFINE_EXCEPTION(ClassName)                                                        \
    ClassName::ClassName(const QObject* sender, QString method, QString reason)                    \
        : BaseException(sender, std::move(method), std::move(reason))                              \
    {                                                                                              \
    }                                                                                              \
    ClassName::ClassName(const QString& source, QString method, QString reason)                    \
        : BaseException(source, std::move(method), std::move(reason))                              \
    {                                                                                              \
    }                                                                                              \
    ClassName::~ClassName() = default;

namespace corvane {
namespace base {
namespace exceptions {

CORVANE_DEFINE_EXCEPTION(ManagerRegistryException)
CORVANE_DEFINE_EXCEPTION(ConfigurationManagerException)
CORVANE_DEFINE_EXCEPTION(PluginManagerException)
CORVANE_DEFINE_EXCEPTION(ServiceManagerException)
CORVANE_DEFINE_EXCEPTION(StartUpManagerException)
CORVANE_DEFINE_EXCEPTION(NullPointerException)
CORVANE_DEFINE_EXCEPTION(ConnectFailedException)
CORVANE_DEFINE_EXCEPTION(PluginException)
CORVANE_DEFINE_EXCEPTION(ServiceUnavailableException)
CORVANE_DEFINE_EXCEPTION(InvalidOperationException)
CORVANE_DEFINE_EXCEPTION(FileNotFoundException)
CORVANE_DEFINE_EXCEPTION(PersistenceException)
CORVANE_DEFINE_EXCEPTION(RecordNotFoundException)
CORVANE_DEFINE_EXCEPTION(RecordAlreadyExistsException)
CORVANE_DEFINE_EXCEPTION(FileIOException)
CORVANE_DEFINE_EXCEPTION(InvalidFileFormatException)
CORVANE_DEFINE_EXCEPTION(DataExchangeException)
CORVANE_DEFINE_EXCEPTION(NotImplementedException)
CORVANE_DEFINE_EXCEPTION(InvalidSignatureException)
CORVANE_DEFINE_EXCEPTION(InvalidConfigurationException)
CORVANE_DEFINE_EXCEPTION(SerializerException)
CORVANE_DEFINE_EXCEPTION(HelpException)
CORVANE_DEFINE_EXCEPTION(BindException)
CORVANE_DEFINE_EXCEPTION(ConnectException)
CORVANE_DEFINE_EXCEPTION(NoRouteToHostException)
CORVANE_DEFINE_EXCEPTION(PortUnreachableException)
CORVANE_DEFINE_EXCEPTION(PrintException)
CORVANE_DEFINE_EXCEPTION(I18nException)
CORVANE_DEFINE_EXCEPTION(UIException)
CORVANE_DEFINE_EXCEPTION(ListAndLabelException)
CORVANE_DEFINE_EXCEPTION(LanguageNotAvailableException)

} // namespace exceptions
} // namespace base
} // namespace corvane
