// Greets the name from its configuration, says whether the start-up translations lie beside
// the executable, and ends the console application.

#include <Utility/AbstractPlugin.h>
#include <Utility/XMLHelper.h>

#include <QCoreApplication>
#include <QDomElement>
#include <QFile>
#include <QTextStream>

class GreeterPlugin : public corvane::base::core::utility::AbstractPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "de.corvane.plugin.IPlugin/1.0")
    Q_INTERFACES(corvane::base::interfaces::IPlugin)

public:
    void setConfiguration(QDomElement& configuration) override
    {
        corvane::base::core::utility::XMLHelper::readStringFromXML(configuration, "name", &name);
    }

    void initialize() override
    {
        AbstractPlugin::initialize();
        const QString translations
            = QCoreApplication::applicationDirPath() + "/translations/StartUp_de.qm";
        QTextStream(stdout) << "Hello " << name << ", translations "
                            << (QFile::exists(translations) ? "found" : "missing") << '\n';
        // A quit before the event loop runs would be lost: quit from within the loop.
        QMetaObject::invokeMethod(
            QCoreApplication::instance(), [] { QCoreApplication::quit(); }, Qt::QueuedConnection);
    }

private:
    QString name;
};

#include "GreeterPlugin.moc"
