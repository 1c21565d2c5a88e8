// Prints the inventory report. The inventory is bound late, by its interface: the service
// learns at initialization which registered service implements it. A console application ends
// itself once the report is printed.

#include "Inventory/IInventory.h"

#include <QtProxies/IProcessProxy.h>
#include <QtProxies/ProcessProxyFactory.h>
#include <Utility/AbstractPlugin.h>
#include <Utility/AbstractService.h>

#include <QCoreApplication>
#include <QEvent>
#include <QTextStream>

#include <memory>

namespace corvane {
namespace demo {

class ReportService : public base::core::utility::AbstractService
{
    Q_OBJECT

public:
    ReportService()
    {
        assignMemberToServiceName(&inventoryService,
                                  QStringLiteral("de.corvane.demo.IInventory/1.0"));
    }

    void initialize() override
    {
        AbstractService::initialize();
        auto* inventory = qobject_cast<IInventory*>(getServiceForConcreteName(inventoryService));
        print(*inventory);
        if (!QCoreApplication::instance()->inherits("QGuiApplication")) {
            // Entering the event loop drops Quit events posted before it, so post from within.
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
    static void print(const IInventory& inventory)
    {
        QTextStream out(stdout);
        out << "Inventory report (" << inventory.source() << ")\n";
        out << "Host: " << hostName() << "\n";
        out << QStringLiteral("%1 %2 %3 %4\n")
                   .arg("Item", -20)
                   .arg("Qty", 6)
                   .arg("Price", 10)
                   .arg("Value", 10);
        int pieces = 0;
        double total = 0;
        for (const InventoryItem& item : inventory.items()) {
            const double value = item.quantity * item.price;
            out << QStringLiteral("%1 %2 %3 %4\n")
                       .arg(item.name, -20)
                       .arg(item.quantity, 6)
                       .arg(item.price, 10, 'f', 2)
                       .arg(value, 10, 'f', 2);
            pieces += item.quantity;
            total += value;
        }
        out << QStringLiteral("%1 %2 %3 %4\n")
                   .arg("Total", -20)
                   .arg(pieces, 6)
                   .arg("", 10)
                   .arg(total, 10, 'f', 2);
    }

    // Asked of the system, through a process proxy that tests or other hosts can replace.
    static QString hostName()
    {
        std::unique_ptr<base::core::IProcessProxy> process(
            base::core::ProcessProxyFactory::createProcessProxy(nullptr));
        process->start(QStringLiteral("uname"), {QStringLiteral("-n")});
        if (!process->waitForFinished(5000) || process->exitCode() != 0) {
            return QStringLiteral("unknown");
        }
        return QString::fromLocal8Bit(process->readAllStandardOutput()).trimmed();
    }

    QString inventoryService;
};

class ReportPlugin : public base::core::utility::AbstractPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "de.corvane.plugin.IPlugin/1.0")
    Q_INTERFACES(corvane::base::interfaces::IPlugin)

public:
    ReportPlugin()
    {
        setDescription(QStringLiteral("Prints the inventory report"));
        addRequiredService(QStringLiteral("corvane::demo::InventoryService"));
        addProvidedService(new ReportService, QStringLiteral("corvane::demo::ReportService"));
    }
};

} // namespace demo
} // namespace corvane

#include "ReportPlugin.moc"
