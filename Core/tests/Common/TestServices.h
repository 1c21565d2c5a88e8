#pragma once

// Services with real Qt interfaces, for the service manager, cache and base class tests.

#include "Interfaces/IService.h"
#include "Utility/AbstractService.h"

#include <QStringList>

namespace corvane {
namespace test {

class ICalculator
{
public:
    virtual ~ICalculator() = default;
    virtual int add(int a, int b) = 0;
};

class IPrinter
{
public:
    virtual ~IPrinter() = default;
    virtual QString print(const QString& text) = 0;
};

} // namespace test
} // namespace corvane

Q_DECLARE_INTERFACE(corvane::test::ICalculator, "de.corvane.test.ICalculator/1.0")
Q_DECLARE_INTERFACE(corvane::test::IPrinter, "de.corvane.test.IPrinter/1.0")

namespace corvane {
namespace test {

/// What the services below did, in order: "init <name>", "deinit <name>", "delete <name>".
inline QStringList& events()
{
    static QStringList recorded;
    return recorded;
}

/// A bare IService that only records what is done to it.
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
    Q_INTERFACES(corvane::test::ICalculator)

public:
    int add(int a, int b) override { return a + b; }
};

class FastCalculator : public Calculator
{
    Q_OBJECT
};

/// Needs a calculator, bound late by the calculator interface id.
class Printer : public base::core::utility::AbstractService, public IPrinter
{
    Q_OBJECT
    Q_INTERFACES(corvane::test::IPrinter)

public:
    Printer()
    {
        assignMemberToServiceName(&calculator, QStringLiteral("de.corvane.test.ICalculator/1.0"));
    }
    QString print(const QString& text) override { return text; }

    QString calculator;
};

/// Needs a printer while being one itself.
class SelfPrinter : public base::core::utility::AbstractService, public IPrinter
{
    Q_OBJECT
    Q_INTERFACES(corvane::test::IPrinter)

public:
    SelfPrinter()
    {
        assignMemberToServiceName(&printer, QStringLiteral("de.corvane.test.IPrinter/1.0"));
    }
    QString print(const QString& text) override { return text; }

    QString printer;
};

} // namespace test
} // namespace corvane
