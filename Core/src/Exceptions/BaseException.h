#pragma once

#include "CoreExport.h"

#include <QException>
#include <QList>
#include <QString>
#include <QVariant>

#include <string>

class QObject;

namespace corvane {
namespace base {
namespace exceptions {

/**
 * Root of every exception the framework throws.
 *
 * An exception records where it was raised (source and method) and why (reason); what()
 * returns "source::method reason" in UTF-8, fixed at construction. The translation context,
 * translatable reason and reason arguments are carried for a user interface that wants to show
 * a translated reason; they never change what().
 */
class CORE_EXPORT BaseException : public QException
{
public:
    /// Raised by sender in method for reason; the source is sender's class name, "unknown source"
    /// for a null sender.
    BaseException(const QObject* sender, QString method, QString reason);
    /// Raised by the code named source in method for reason.
    BaseException(const QString& source, QString method, QString reason);
    /// As the sender form, with the pieces of a translated reason: the translation context, the
    /// reason's source text for QCoreApplication::translate() and the values of its placeholders.
    BaseException(const QObject* sender, QString method, QString reason, QString translationContext,
                  QString translatableReason, QList<QVariant> reasonArguments);
    /// As the source-text form, with the pieces of a translated reason (see the sender form).
    BaseException(const QString& source, QString method, QString reason, QString translationContext,
                  QString translatableReason, QList<QVariant> reasonArguments);
    ~BaseException() override;

    /// "source::method reason" in UTF-8, fixed at construction; never null.
    const char* what() const noexcept override;

    /// Copies the untranslated reason into reason.
    virtual void getReason(QString& reason) const;
    /// The untranslated reason.
    virtual QString getReason() const;
    /// Copies the source (the raising object's class name or the text given) into source.
    virtual void getSource(QString& source) const;
    /// The source: the raising object's class name or the text given.
    virtual QString getSource() const;
    /// Copies the name of the raising method into method.
    virtual void getMethod(QString& method) const;
    /// The name of the raising method.
    virtual QString getMethod() const;
    /// Copies the translation context into translationContext; empty unless one was given.
    virtual void getTranslationContext(QString& translationContext) const;
    /// The context for QCoreApplication::translate(); empty unless one was given.
    virtual QString getTranslationContext() const;
    /// Replaces the translation context; what() stays as it is.
    virtual void setTranslationContext(const QString& translationContext);
    /// Copies the reason's source text for translation into translatableReason.
    virtual void getTranslatableReason(QString& translatableReason) const;
    /// The reason's source text for translation; empty unless one was given.
    virtual QString getTranslatableReason() const;
    /// Replaces the reason's source text for translation; what() stays as it is.
    virtual void setTranslatableReason(const QString& translatableReason);
    /// Copies the values for the translated reason's placeholders into reasonArguments.
    virtual void getReasonArguments(QList<QVariant>& reasonArguments) const;
    /// The values that a user interface fills into the translated reason's placeholders.
    virtual const QList<QVariant>& getReasonArguments() const;
    /// Replaces the placeholder values; what() stays as it is.
    virtual void setReasonArguments(const QList<QVariant>& reasonArguments);

private:
    /// The source recorded for a sender: its class name, or "unknown source" for null.
    static QString sourceOf(const QObject* sender);

    QString source;
    QString method;
    QString reason;
    std::string whatMessage;
    QString translationContext;
    QString translatableReason;
    QList<QVariant> reasonArguments;
};

} // namespace exceptions
} // namespace base
} // namespace corvane
