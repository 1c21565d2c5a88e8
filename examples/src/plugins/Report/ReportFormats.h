#pragma once

#include <Utility/ISerializer.h>

namespace corvane {
namespace demo {

/// The report's machine-readable formats, registered with the serializer factory as "csv"
/// and "json" while the report plug-in runs.
class CsvSerializer : public base::core::interfaces::ISerializer
{
public:
    QString getFormat() const override;
    QByteArray
    serialize(const QList<const base::core::interfaces::ISerializable*>& objects) override;
    bool deserialize(const QByteArray& data,
                     const QList<base::core::interfaces::ISerializable*>& objects) override;
};

class JsonSerializer : public base::core::interfaces::ISerializer
{
public:
    QString getFormat() const override;
    QByteArray
    serialize(const QList<const base::core::interfaces::ISerializable*>& objects) override;
    bool deserialize(const QByteArray& data,
                     const QList<base::core::interfaces::ISerializable*>& objects) override;
};

} // namespace demo
} // namespace corvane
