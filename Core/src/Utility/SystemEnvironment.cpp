#include "Utility/SystemEnvironment.h"

#include "Exceptions/InvalidArgumentException.h"

#include <QSet>
#include <QVector>

namespace corvane {
namespace base {
namespace core {
namespace utility {

namespace {

const QString source = QStringLiteral("Core/src/Utility/SystemEnvironment.cpp");
const QString method = QStringLiteral("expandEnvironmentVariables");

// An expansion still open: the variable and where its value begins in the text.
struct OpenExpansion
{
    QString name;
    int start;
};

// A word character of a reference's name: ASCII letters, digits and the underscore.
bool isWord(QChar c)
{
    return c.unicode() < 128 && (c.isLetterOrNumber() || c == QLatin1Char('_'));
}

// Whether the text holds no unpaired surrogate.
bool isValidUtf16(const QString& text)
{
    for (int i = 0; i < text.size(); ++i) {
        if (text.at(i).isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate()) {
            ++i;
        } else if (text.at(i).isSurrogate()) {
            return false;
        }
    }
    return true;
}

/*
 * The text while it is expanded: the part before and at the last reference ("left"), and the
 * part behind it, which holds no reference of its own ("right", kept reversed, so that text
 * moves into it at its end). Each step finds the last reference at the end of the left part,
 * moves what follows it into the right part and puts the value in its place, at the left
 * part's end again: every character is looked at a bounded number of times, however long the
 * text grows. A reference may still begin in the left part and end in the right one.
 */
class Text
{
public:
    explicit Text(const QString& text) : left(text), newlines(int(text.count(QLatin1Char('\n'))))
    {
    }

    int size() const { return left.size() + rightReversed.size(); }
    QChar at(int i) const
    {
        return i < left.size() ? left.at(i) : rightReversed.at(size() - 1 - i);
    }

    // A reference is only found while the text has no line break but perhaps its last character
    // (as "." and "$" of a regular expression take them).
    bool isOneLine() const
    {
        return newlines == 0 || (newlines == 1 && at(size() - 1) == QLatin1Char('\n'));
    }

    // The last ${NAME} in the text: its start and end, or false when there is none.
    bool findLastReference(int& start, int& end) const
    {
        for (start = left.size() - 1; start >= 0; --start) {
            if (at(start) == QLatin1Char('$') && start + 1 < size()
                && at(start + 1) == QLatin1Char('{')) {
                const int nameEnd = endOfWord(start + 2);
                if (nameEnd > start + 2 && nameEnd < size() && at(nameEnd) == QLatin1Char('}')) {
                    end = nameEnd + 1;
                    return true;
                }
            }
        }
        return false;
    }

    QString mid(int start, int end) const
    {
        QString part;
        for (int i = start; i < end; ++i) {
            part += at(i);
        }
        return part;
    }

    // Replaces the reference from start to end, which begins in the left part, by the value.
    void replace(int start, int end, const QString& value)
    {
        if (end <= left.size()) {
            prependToRight(QStringView(left).mid(end));
        } else {
            rightReversed.chop(end - left.size());
            countRightWordRuns();
        }
        left.truncate(start);
        left += value;
        newlines += int(value.count(QLatin1Char('\n')));
    }

    QString text() const
    {
        QString whole = left;
        whole.reserve(size());
        for (int i = rightReversed.size() - 1; i >= 0; --i) {
            whole += rightReversed.at(i);
        }
        return whole;
    }

private:
    // Where the word characters that begin at from end. Those at the start of the right part,
    // or behind its first character, are counted as the right part changes.
    int endOfWord(int from) const
    {
        int i = from;
        while (i < left.size() && isWord(left.at(i))) {
            ++i;
        }
        if (i < left.size() || i >= size()) {
            return i;
        }
        return i + (i == left.size() ? rightWordRuns[0] : rightWordRuns[1]);
    }

    void prependToRight(QStringView part)
    {
        int runs[2] = {0, 0};
        for (int first = 0; first < 2; ++first) {
            int i = first;
            while (i < int(part.size()) && isWord(part.at(i))) {
                ++i;
            }
            runs[first] = i - first + (i < int(part.size()) ? 0 : rightWordRuns[i - int(part.size())]);
        }
        for (int i = int(part.size()) - 1; i >= 0; --i) {
            rightReversed += part.at(i);
        }
        rightWordRuns[0] = runs[0];
        rightWordRuns[1] = runs[1];
    }

    void countRightWordRuns()
    {
        for (int first = 0; first < 2; ++first) {
            int run = 0;
            while (first + run < rightReversed.size()
                   && isWord(rightReversed.at(rightReversed.size() - 1 - first - run))) {
                ++run;
            }
            rightWordRuns[first] = run;
        }
    }

    QString left;
    QString rightReversed;
    int rightWordRuns[2] = {0, 0}; // word characters at the right part's start, and behind its first
    int newlines;
};

} // namespace

// References are replaced from the last towards the first, each by its variable's value, until
// none is left. Nothing behind the last reference ever holds one, so the next reference lies
// inside the values inserted last (they nest) or before them, where they are done with. A
// variable met again inside its own value would never end and is refused; any number of other
// references is fine, as long as their values add up to no more than maximumExpandedSize.
QString SystemEnvironment::expandEnvironmentVariables(const QString& text)
{
    if (!isValidUtf16(text)) {
        return text;
    }
    Text expanded(text);
    QVector<OpenExpansion> open; // outermost first
    QSet<QString> openNames;
    qint64 produced = 0;
    int start = 0;
    int end = 0;
    while (expanded.isOneLine() && expanded.findLastReference(start, end)) {
        const QString name = expanded.mid(start + 2, end - 1);
        while (!open.isEmpty() && start < open.last().start) {
            openNames.remove(open.takeLast().name); // everything in it is expanded
        }
        if (openNames.contains(name)) {
            throw exceptions::InvalidArgumentException(
                source, method,
                QStringLiteral("Environment variable '%1' refers to itself").arg(name));
        }
        const QByteArray value = qgetenv(name.toUtf8().constData());
        if (value.isEmpty()) {
            throw exceptions::InvalidArgumentException(
                source, method, QStringLiteral("Environment variable '%1' is not set").arg(name));
        }
        const QString replacement = QString::fromUtf8(value);
        produced += replacement.size();
        if (produced > maximumExpandedSize) {
            throw exceptions::InvalidArgumentException(
                source, method,
                QStringLiteral("Environment variable '%1' expands to more than %2 characters")
                    .arg(open.isEmpty() ? name : open.first().name)
                    .arg(maximumExpandedSize));
        }
        expanded.replace(start, end, replacement);
        open.append({name, start});
        openNames.insert(name);
    }
    return expanded.text();
}

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
