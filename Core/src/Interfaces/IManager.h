#pragma once

#include "CoreExport.h"

#include <QObject>
#include <QString>

namespace corvane {
namespace base {
namespace interfaces {

/// Common surface of the framework's managers; each is a process-wide singleton.
class CORE_EXPORT IManager : public QObject
{
    Q_OBJECT

public:
    explicit IManager(QObject* parent = nullptr) : QObject(parent) { }
    ~IManager() override = default;

    virtual void initialize() = 0;
    virtual void deinitialize() = 0;
    virtual void getName(QString& name) = 0;
    virtual void getVersion(QString& version) = 0;
};

} // namespace interfaces
} // namespace base
} // namespace corvane

Q_DECLARE_INTERFACE(corvane::base::interfaces::IManager, "de.corvane.Manager/1.0")
