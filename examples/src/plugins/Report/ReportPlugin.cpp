// Prints the inventory report: the items that pass the filter of the plug-in's configuration,
// as a table or, with <format>csv</format> or <format>json</format>, through the serializer
// of that name. The inventory is bound late, by its interface. A console application ends
// itself once the report is printed.

#include "Report/FilterReader.h"
#include "Report/InventoryRecord.h"
#include "Report/ReportFormats.h"

#include <QtProxies/IProcessProxy.h>
#include <QtProxies/ProcessProxyFactory.h>
#include <Utility/AbstractPlugin.h>
#include <Utility/AbstractService.h>
#include <Utility/FilterProcessor.h>
#include <Utility/SerializerFactory.h>
#include <Utility/XMLHelper.h>

#include <QCoreApplication>
#include <QDomElement>
#include <QEvent>
#include <QTextStream>

#include <memory>

namespace corvane {
namespace demo {

using base::core::entity::EntityBase;
using base::core::interfaces::ISerializable;
using base::core::utility::SerializerFactory;

class ReportService : public base::core::utility::AbstractService
{
    Q_OBJECT

public:
    ReportService()
    {
        assignMemberToServiceName(&inventoryService,
                                  QStringLiteral("de.corvane.demo.IInventory/1.0"));
    }

    void configure(const QDomElement& configuration)
    {
        base::core::utility::XMLHelper::readStringFromXML(configuration, QStringLiteral("format"),
                                                          &format);
        filter = configuration.firstChildElement(QStringLiteral("filter"));
    }

    void initialize() override
    {
        AbstractService::initialize();
        auto* inventory = qobject_cast<IInventory*>(getServiceForConcreteName(inventoryService));
        report(*inventory);
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
    void report(const IInventory& inventory)
    {
        std::vector<std::unique_ptr<InventoryRecord>> records;
        QList<EntityBase*> all;
        for (const InventoryItem& item : inventory.items()) {
            records.emplace_back(new InventoryRecord(item));
            all << records.back().get();
        }
        QList<EntityBase*> kept;
        InventoryRecordData fields;
        base::core::utility::FilterProcessor(&fields).applyFilter(all, FilterChain(filter).chain(),
                                                                  kept);

        QTextStream out(stdout);
        if (format == QLatin1String("text")) {
            printTable(out, inventory.source(), kept);
            return;
        }
        QList<const ISerializable*> serializable;
        for (EntityBase* entity : kept) {
            serializable << static_cast<InventoryRecord*>(entity);
        }
        std::unique_ptr<base::core::interfaces::ISerializer> serializer(
            SerializerFactory::instance()->createSerializer(format));
        out << serializer->serialize(serializable);
    }

    static void printTable(QTextStream& out, const QString& source, const QList<EntityBase*>& kept)
    {
        out << "Inventory report (" << source << ")\n";
        out << "Host: " << hostName() << "\n";
        out << QStringLiteral("%1 %2 %3 %4\n")
                   .arg("Item", -20)
                   .arg("Qty", 6)
                   .arg("Price", 10)
                   .arg("Value", 10);
        int pieces = 0;
        double total = 0;
        for (EntityBase* entity : kept) {
            const InventoryItem& item = static_cast<InventoryRecord*>(entity)->value();
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
    QString format = QStringLiteral("text");
    QDomElement filter;
};

namespace {
base::core::interfaces::ISerializer* createCsv()
{
    return new CsvSerializer;
}
base::core::interfaces::ISerializer* createJson()
{
    return new JsonSerializer;
}
} // namespace

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
        addProvidedService(service, QStringLiteral("corvane::demo::ReportService"));
    }

    void setConfiguration(QDomElement& configuration) override
    {
        service->configure(configuration);
    }

    void initialize() override
    {
        SerializerFactory::instance()->registerSerializer(QStringLiteral("csv"), &createCsv);
        SerializerFactory::instance()->registerSerializer(QStringLiteral("json"), &createJson);
        AbstractPlugin::initialize();
    }

    void deinitialize() override
    {
        AbstractPlugin::deinitialize();
        SerializerFactory::instance()->unregisterSerializer(QStringLiteral("csv"));
        SerializerFactory::instance()->unregisterSerializer(QStringLiteral("json"));
    }

private:
    ReportService* service = new ReportService; // owned through addProvidedService
};

} // namespace demo
} // namespace corvane

#include "ReportPlugin.moc"
