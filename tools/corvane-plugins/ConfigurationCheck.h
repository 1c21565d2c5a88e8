#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <QDomElement>

// Checks an application's configuration file as the application reads it and lists what the
// application would ignore, misread or fail on, each as "file:line:column: problem".
class ConfigurationCheck
{
public:
    // shownName: the file as the user named it; folder: where the plug-in libraries must be.
    ConfigurationCheck(const QString& path, const QString& shownName, const QString& folder);

    // False when the file cannot be opened at all (openError() says why).
    bool run();
    QString openError() const { return error; }
    // Sorted by their place in the file.
    QStringList problems() const;

private:
    struct Position
    {
        int line = 1;
        int column = 1;
    };
    struct Problem
    {
        Position at;
        QString text;
    };

    void readStartTagPositions();
    Position enter(); // the position of the next element in document order
    void skip(const QDomElement& element);
    void checkRoot(const QDomElement& root);
    void checkInformation(const QDomElement& section);
    void checkPlugins(const QDomElement& section);
    void checkPlugin(const QDomElement& plugin);
    void checkService(const QDomElement& section);
    void checkLibrary(const QDomElement& element, Position at);
    void checkInformationValue(const QDomElement& value, Position at);
    void checkPluginConfiguration(const QDomElement& configuration, Position at);
    void checkTextOnly(const QDomElement& element);
    void unknown(const QDomElement& element, const QDomElement& parent);
    void checkAttributes(const QDomElement& element, Position at);
    void report(Position at, const QString& text);

    QString path;
    QString shownName;
    QString folder;
    QString error;
    QDomElement root;
    QList<Position> startTags; // of every element, in document order
    int visited = 0;
    QList<Problem> found;
    QStringList libraries; // as the application reads them, in file order
    int pluginCount = 0;
    bool typeGiven = false;
};
