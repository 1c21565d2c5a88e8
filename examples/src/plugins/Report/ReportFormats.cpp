#include "Report/ReportFormats.h"

#include <Utility/ISerializable.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

namespace corvane {
namespace demo {

using base::core::interfaces::ISerializable;

QString CsvSerializer::getFormat() const
{
    return QStringLiteral("csv");
}

// One header line with the value names, then one line per object; values hold no commas.
QByteArray CsvSerializer::serialize(const QList<const ISerializable*>& objects)
{
    if (objects.isEmpty()) {
        return {};
    }
    const QStringList names = objects.first()->toVariantMap().keys();
    QStringList lines {names.join(',')};
    for (const ISerializable* object : objects) {
        const QVariantMap values = object->toVariantMap();
        QStringList fields;
        for (const QString& name : names) {
            fields << values.value(name).toString();
        }
        lines << fields.join(',');
    }
    return (lines.join('\n') + '\n').toUtf8();
}

bool CsvSerializer::deserialize(const QByteArray& data, const QList<ISerializable*>& objects)
{
    const QStringList lines = QString::fromUtf8(data).split('\n', Qt::SkipEmptyParts);
    if (lines.size() != objects.size() + 1) {
        return false;
    }
    const QStringList names = lines.first().split(',');
    for (int i = 0; i < objects.size(); ++i) {
        const QStringList fields = lines.at(i + 1).split(',');
        if (fields.size() != names.size()) {
            return false;
        }
        QVariantMap values;
        for (int f = 0; f < names.size(); ++f) {
            values.insert(names.at(f), fields.at(f));
        }
        objects.at(i)->fromVariantMap(values);
    }
    return true;
}

QString JsonSerializer::getFormat() const
{
    return QStringLiteral("json");
}

QByteArray JsonSerializer::serialize(const QList<const ISerializable*>& objects)
{
    QJsonArray array;
    for (const ISerializable* object : objects) {
        array.append(QJsonObject::fromVariantMap(object->toVariantMap()));
    }
    return QJsonDocument(array).toJson(QJsonDocument::Indented);
}

bool JsonSerializer::deserialize(const QByteArray& data, const QList<ISerializable*>& objects)
{
    const QJsonDocument document = QJsonDocument::fromJson(data);
    if (!document.isArray() || document.array().size() != objects.size()) {
        return false;
    }
    for (int i = 0; i < objects.size(); ++i) {
        objects.at(i)->fromVariantMap(document.array().at(i).toObject().toVariantMap());
    }
    return true;
}

} // namespace demo
} // namespace corvane
