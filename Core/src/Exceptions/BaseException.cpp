#include "Exceptions/BaseException.h"

#include <QMetaObject>
#include <QObject>

namespace corvane {
namespace base {
namespace exceptions {

BaseException::BaseException(const QObject* sender, QString method, QString reason)
    : BaseException(sourceOf(sender), std::move(method), std::move(reason))
{
}

BaseException::BaseException(const QString& source, QString method, QString reason)
    : BaseException(source, std::move(method), std::move(reason), QString(), QString(), {})
{
}

BaseException::BaseException(const QObject* sender, QString method, QString reason,
                             QString translationContext, QString translatableReason,
                             QList<QVariant> reasonArguments)
    : BaseException(sourceOf(sender), std::move(method), std::move(reason),
                    std::move(translationContext), std::move(translatableReason),
                    std::move(reasonArguments))
{
}

BaseException::BaseException(const QString& source, QString method, QString reason,
                             QString translationContext, QString translatableReason,
                             QList<QVariant> reasonArguments)
    : source(source),
      method(std::move(method)),
      reason(std::move(reason)),
      translationContext(std::move(translationContext)),
      translatableReason(std::move(translatableReason)),
      reasonArguments(std::move(reasonArguments))
{
    whatMessage
        = (this->source + QStringLiteral("::") + this->method + QLatin1Char(' ') + this->reason)
              .toStdString();
}

BaseException::~BaseException() = default;

const char* BaseException::what() const noexcept
{
    return whatMessage.c_str();
}

void BaseException::getReason(QString& reason) const
{
    reason = this->reason;
}

QString BaseException::getReason() const
{
    return reason;
}

void BaseException::getSource(QString& source) const
{
    source = this->source;
}

QString BaseException::getSource() const
{
    return source;
}

void BaseException::getMethod(QString& method) const
{
    method = this->method;
}

QString BaseException::getMethod() const
{
    return method;
}

void BaseException::getTranslationContext(QString& translationContext) const
{
    translationContext = this->translationContext;
}

QString BaseException::getTranslationContext() const
{
    return translationContext;
}

void BaseException::setTranslationContext(const QString& translationContext)
{
    this->translationContext = translationContext;
}

void BaseException::getTranslatableReason(QString& translatableReason) const
{
    translatableReason = this->translatableReason;
}

QString BaseException::getTranslatableReason() const
{
    return translatableReason;
}

void BaseException::setTranslatableReason(const QString& translatableReason)
{
    this->translatableReason = translatableReason;
}

void BaseException::getReasonArguments(QList<QVariant>& reasonArguments) const
{
    reasonArguments = this->reasonArguments;
}

const QList<QVariant>& BaseException::getReasonArguments() const
{
    return reasonArguments;
}

void BaseException::setReasonArguments(const QList<QVariant>& reasonArguments)
{
    if (&reasonArguments == &this->reasonArguments) {
        return;
    }
    this->reasonArguments = reasonArguments;
}

QString BaseException::sourceOf(const QObject* sender)
{
    if (sender == nullptr) {
        return QStringLiteral("unknown source");
    }
    return QString::fromUtf8(sender->metaObject()->className());
}

} // namespace exceptions
} // namespace base
} // namespace corvane
