#pragma once

#include "CoreExport.h"

#include <QObject>

namespace corvane {
namespace base {
namespace core {

/// A timer behind an interface, so that tests or other hosts can substitute it.
class CORE_EXPORT ITimerProxy : public QObject
{
    Q_OBJECT

public:
    explicit ITimerProxy(QObject* parent = nullptr) : QObject(parent) { }
    ~ITimerProxy() override = default;

    virtual void setInterval(int msec) = 0;
    virtual bool isActive() const = 0;
    virtual void setSingleShot(bool singleShot) = 0;
    virtual bool isSingleShot() const = 0;
    Q_INVOKABLE virtual void start(int msec) = 0;
    Q_INVOKABLE virtual void start() = 0;
    Q_INVOKABLE virtual void stop() = 0;

signals:
    void timeout();
};

} // namespace core
} // namespace base
} // namespace corvane
