#include "Utility/XMLHelper.h"

namespace corvane {
namespace base {
namespace core {
namespace utility {

namespace {

bool findText(const QDomElement& parent, const QString& tag, QString& text)
{
    const QDomElement element = parent.firstChildElement(tag);
    if (element.isNull()) {
        return false;
    }
    text = element.text();
    return true;
}

} // namespace

bool XMLHelper::readIntFromXML(const QDomElement& parent, const QString& tag, int* value)
{
    QString text;
    if (value == nullptr || !findText(parent, tag, text)) {
        return false;
    }
    bool ok = false;
    const int number = text.toInt(&ok, 10);
    if (ok) {
        *value = number;
    }
    return ok;
}

bool XMLHelper::readBoolFromXML(const QDomElement& parent, const QString& tag, bool* value)
{
    QString text;
    if (value == nullptr || !findText(parent, tag, text)) {
        return false;
    }
    text = text.toLower();
    if (text == QLatin1String("true")) {
        *value = true;
        return true;
    }
    if (text == QLatin1String("false")) {
        *value = false;
        return true;
    }
    return false;
}

bool XMLHelper::readStringFromXML(const QDomElement& parent, const QString& tag, QString* value)
{
    QString text;
    if (value == nullptr || !findText(parent, tag, text)) {
        return false;
    }
    *value = text;
    return true;
}

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
