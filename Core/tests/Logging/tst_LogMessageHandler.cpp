#include "Logging/LogMessageHandler.h"

#include <QtTest>

using namespace corvane::logging;

class tst_LogMessageHandler : public QObject
{
    Q_OBJECT

private slots:
    void sanitizeFunction_data();
    void sanitizeFunction();
    void sanitizeSource_data();
    void sanitizeSource();
    void formatLogMessage_data();
    void formatLogMessage();
};

void tst_LogMessageHandler::sanitizeFunction_data()
{
    QTest::addColumn<QByteArray>("function");
    QTest::addColumn<QString>("name");

    QTest::newRow("member with qualifiers") << QByteArray(
        "void corvane::base::business::PluginManager::loadPlugin(const QString&) const")
                                            << "loadPlugin";
    QTest::newRow("scoped parameter types")
        << QByteArray("bool a::B::run(std::vector<a::C>, int)") << "run";
    QTest::newRow("free function keeps its return type")
        << QByteArray("int main(int, char**)") << "int main";
    QTest::newRow("lambda") << QByteArray("a::B::f()::<lambda()>") << "f";
    QTest::newRow("empty") << QByteArray("") << "";
    QTest::newRow("null") << QByteArray() << "";
}

void tst_LogMessageHandler::sanitizeFunction()
{
    QFETCH(QByteArray, function);
    QFETCH(QString, name);
    QCOMPARE(corvane::logging::sanitizeFunction(function.isNull() ? nullptr : function.constData()),
             name);
}

void tst_LogMessageHandler::sanitizeSource_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QString>("logger");

    QTest::newRow("Windows path") << QByteArray("C:\\build\\Core\\src\\Logging\\LoggingManager.cpp")
                                  << "Logging.LoggingManager";
    QTest::newRow("header") << QByteArray("D:/work/src/Core/Logger.h") << "Core.Logger";
    QTest::newRow("absolute Linux path")
        << QByteArray("/home/ada/Core/src/Logging/LoggingManager.cpp") << "Logging.LoggingManager";
    QTest::newRow("two src folders")
        << QByteArray("x/src/Module/src/Main.cpp") << "Module.src.Main";
    QTest::newRow("src first is kept")
        << QByteArray("src/Utility/SystemEnvironment.cpp") << "src.Utility.SystemEnvironment";
    QTest::newRow("no src") << QByteArray("/opt/app/main.cpp") << ".opt.app.main";
    QTest::newRow("no dot drops the last character") << QByteArray("Makefile") << "Makefil";
    QTest::newRow("null") << QByteArray() << "";
}

void tst_LogMessageHandler::sanitizeSource()
{
    QFETCH(QByteArray, file);
    QFETCH(QString, logger);
    QCOMPARE(corvane::logging::sanitizeSource(file.isNull() ? nullptr : file.constData()), logger);
}

void tst_LogMessageHandler::formatLogMessage_data()
{
    QTest::addColumn<QByteArray>("function");
    QTest::addColumn<int>("line");
    QTest::addColumn<QString>("text");

    QTest::newRow("with context") << QByteArray("void a::PluginManager::loadPlugin(const QString&)")
                                  << 212 << "loadPlugin(212): Plugin loaded";
    QTest::newRow("without context") << QByteArray() << 0 << "(0): Plugin loaded";
}

void tst_LogMessageHandler::formatLogMessage()
{
    QFETCH(QByteArray, function);
    QFETCH(int, line);
    QFETCH(QString, text);
    const QMessageLogContext context("file.cpp", line,
                                     function.isNull() ? nullptr : function.constData(), "default");
    QCOMPARE(corvane::logging::formatLogMessage(context, QStringLiteral("Plugin loaded")), text);
}

QTEST_MAIN(tst_LogMessageHandler)
#include "tst_LogMessageHandler.moc"
