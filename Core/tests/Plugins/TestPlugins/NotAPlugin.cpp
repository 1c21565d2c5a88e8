// A Qt plug-in whose root object is no IPlugin.

#include <QObject>

class NotAPlugin : public QObject
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "de.corvane.test.NotAPlugin/1.0")
};

#include "NotAPlugin.moc"
