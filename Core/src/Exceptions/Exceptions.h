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
        /** Raised by sender (its class name becomes the source) in method, for reason. */         \
        ClassName(const QObject* sender, QString method, QString reason);                          \
        /** Raised by the code named source in method, for reason. */                              \
        ClassName(const QString& source, QString method, QString reason);                          \
        ~ClassName() override;                                                                     \
    };

namespace corvane {
namespace base {
namespace exceptions {

/// The manager registry refused a registration or a look-up.
CORVANE_DECLARE_EXCEPTION(ManagerRegistryException)
/// The configuration file could not be opened, parsed or understood.
CORVANE_DECLARE_EXCEPTION(ConfigurationManagerException)
/// A plug-in could not be loaded, ordered, started, stopped or unloaded.
CORVANE_DECLARE_EXCEPTION(PluginManagerException)
/// A service was registered twice, or a service that is not registered was asked for.
CORVANE_DECLARE_EXCEPTION(ServiceManagerException)
/// The start or the shut-down of the managers failed.
CORVANE_DECLARE_EXCEPTION(StartUpManagerException)
/// A pointer that must not be null was null.
CORVANE_DECLARE_EXCEPTION(NullPointerException)
/// A signal could not be connected to its slot.
CORVANE_DECLARE_EXCEPTION(ConnectFailedException)
/// A plug-in failed to set itself or its services up, or down.
CORVANE_DECLARE_EXCEPTION(PluginException)
/// A service that is needed is not available.
CORVANE_DECLARE_EXCEPTION(ServiceUnavailableException)
/// The operation is not possible in the object's present state or for these values.
CORVANE_DECLARE_EXCEPTION(InvalidOperationException)
/// A file that is needed does not exist.
CORVANE_DECLARE_EXCEPTION(FileNotFoundException)
/// Data could not be stored or read back.
CORVANE_DECLARE_EXCEPTION(PersistenceException)
/// A stored record that was asked for does not exist.
CORVANE_DECLARE_EXCEPTION(RecordNotFoundException)
/// A record to be stored exists already.
CORVANE_DECLARE_EXCEPTION(RecordAlreadyExistsException)
/// Reading or writing a file failed.
CORVANE_DECLARE_EXCEPTION(FileIOException)
/// A file's content does not have the expected format.
CORVANE_DECLARE_EXCEPTION(InvalidFileFormatException)
/// Data could not be exchanged with another program or system.
CORVANE_DECLARE_EXCEPTION(DataExchangeException)
/// The operation is not implemented.
CORVANE_DECLARE_EXCEPTION(NotImplementedException)
/// A file does not match its signature.
CORVANE_DECLARE_EXCEPTION(InvalidSignatureException)
/// A configuration holds values that cannot be used.
CORVANE_DECLARE_EXCEPTION(InvalidConfigurationException)
/// An object could not be serialized or deserialized.
CORVANE_DECLARE_EXCEPTION(SerializerException)
/// The help could not be shown.
CORVANE_DECLARE_EXCEPTION(HelpException)
/// A network address could not be bound.
CORVANE_DECLARE_EXCEPTION(BindException)
/// A network connection could not be made.
CORVANE_DECLARE_EXCEPTION(ConnectException)
/// The network host cannot be reached.
CORVANE_DECLARE_EXCEPTION(NoRouteToHostException)
/// The network port cannot be reached.
CORVANE_DECLARE_EXCEPTION(PortUnreachableException)
/// Printing failed.
CORVANE_DECLARE_EXCEPTION(PrintException)
/// Translations or locale data could not be loaded or applied.
CORVANE_DECLARE_EXCEPTION(I18nException)
/// The user interface could not be built or updated.
CORVANE_DECLARE_EXCEPTION(UIException)
/// A report or label could not be designed, filled or printed.
CORVANE_DECLARE_EXCEPTION(ListAndLabelException)
/// The requested language is not available.
CORVANE_DECLARE_EXCEPTION(LanguageNotAvailableException)

} // namespace exceptions
} // namespace base
} // namespace corvane

#undef CORVANE_DECLARE_EXCEPTION
