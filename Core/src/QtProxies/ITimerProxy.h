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
    /// Creates the proxy as a child of parent.
    explicit ITimerProxy(QObject* parent = nullptr) : QObject(parent) { }
    ~ITimerProxy() override = default;

    /// Sets the interval in milliseconds.
    virtual void setInterval(int msec) = 0;
    /// Whether the timer runs.
    virtual bool isActive() const = 0;
    /// Sets whether the timer fires once only.
    virtual void setSingleShot(bool singleShot) = 0;
    /// Whether the timer fires once only.
    virtual bool isSingleShot() const = 0;
    /// Starts or restarts the timer with an interval of msec milliseconds.
    Q_INVOKABLE virtual void start(int msec) = 0;
    /// Starts or restarts the timer with its interval.
    Q_INVOKABLE virtual void start() = 0;
    /// Stops the timer.
    Q_INVOKABLE virtual void stop() = 0;

signals:
    /// The interval has passed.
    void timeout();
};

} // namespace core
} // namespace base
} // namespace corvane
