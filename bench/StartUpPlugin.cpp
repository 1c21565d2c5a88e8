// A plug-in for the start-up benchmark, copied under many file names: it is named after its
// own library file (libBench07.so is "Bench07"), so every copy is a plug-in of its own. With
// <quit>true</quit> in its configuration it ends the application once the event loop runs.

#include <Utility/AbstractPlugin.h>
#include <Utility/XMLHelper.h>

#include <QCoreApplication>
#include <QDomElement>
#include <QEvent>
#include <QFileInfo>

#include <dlfcn.h>

namespace {

QString ownLibraryName()
{
    Dl_info info {};
    dladdr(reinterpret_cast<void*>(&ownLibraryName), &info);
    return QFileInfo(QString::fromLocal8Bit(info.dli_fname)).completeBaseName().mid(3);
}

class StartUpPlugin : public corvane::base::core::utility::AbstractPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "de.corvane.plugin.IPlugin/1.0")
    Q_INTERFACES(corvane::base::interfaces::IPlugin)

public:
    void getName(QString& name) override { name = ownLibraryName(); }

    void setConfiguration(QDomElement& configuration) override
    {
        corvane::base::core::utility::XMLHelper::readBoolFromXML(configuration,
                                                                 QStringLiteral("quit"), &quit);
    }

    void initialize() override
    {
        AbstractPlugin::initialize();
        if (quit) {
            QMetaObject::invokeMethod(
                QCoreApplication::instance(),
                [] {
                    QCoreApplication::postEvent(QCoreApplication::instance(),
                                                new QEvent(QEvent::Quit));
                },
                Qt::QueuedConnection);
        }
    }

private:
    bool quit = false;
};

} // namespace

#include "StartUpPlugin.moc"
