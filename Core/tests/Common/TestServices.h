#pragma once

// Services with real Qt interfaces, for the service manager, cache and base class tests.

#include "Interfaces/IService.h"
#include "Utility/AbstractService.h"

class ICalculator
{
public:
    virtual ~ICalculator() = default;
    virtual int add(int a, int b) = 0;
};
Q_DECLARE_INTERFACE(ICalculator, "de.corvane.test.ICalculator/1.0")

class IPrinter
{
public:
    virtual ~IPrinter() = default;
    virtual QString print(const QString& text) = 0;
};
Q_DECLARE_INTERFACE(IPrinter, "de.corvane.test.IPrinter/1.0")

namespace corvane::test {

/// What the Recorders went through: "init <name>", "deinit <name>", "delete <name>".
inline QStringList& events()
{
    static QStringList recorded;
    return recorded;
}

class Recorder : public base::interfaces::IService
{
    Q_OBJECT

public:
    explicit Recorder(const QString& name) : name(name) { }
    ~Recorder() override { events() << "delete " + name; }
    void initialize() override { events() << "init " + name; }
    void deinitialize() override { events() << "deinit " + name; }
    void getName(QString& out) override { out = name; }
    void getVersion(QString& out) override { out = QStringLiteral("1.0"); }
    QString name;
};

class Calculator : public base::core::utility::AbstractService, public ICalculator
{
    Q_OBJECT
    Q_INTERFACES(ICalculator)

public:
    int add(int a, int b) override { return a + b; }
};

class FastCalculator : public Calculator
{
    Q_OBJECT
};

class Printer : public base::core::utility::AbstractService, public IPrinter
{
    Q_OBJECT
    Q_INTERFACES(IPrinter)

public:
    Printer() { assignMemberToServiceName(&calculator, "de.corvane.test.ICalculator/1.0"); }
    QString print(const QString& text) override { return text; }
    QString calculator;
};

class SelfPrinter : public base::core::utility::AbstractService, public IPrinter
{
    Q_OBJECT
    Q_INTERFACES(IPrinter)

public:
    SelfPrinter() { assignMemberToServiceName(&printer, "de.corvane.test.IPrinter/1.0"); }
    QString print(const QString& text) override { return text; }
    QString printer;
};

} // namespace corvane::test
