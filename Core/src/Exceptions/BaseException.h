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
    BaseException(const QObject* sender, QString method, QString reason);
    BaseException(const QString& source, QString method, QString reason);
    BaseException(const QObject* sender, QString method, QString reason, QString translationContext,
                  QString translatableReason, QList<QVariant> reasonArguments);
    BaseException(const QString& source, QString method, QString reason, QString translationContext,
                  QString translatableReason, QList<QVariant> reasonArguments);
    ~BaseException() override;

    const char* what() const noexcept override;

    virtual void getReason(QString& reason) const;
    virtual QString getReason() const;
    virtual void getSource(QString& source) const;
    virtual QString getSource() const;
    virtual void getMethod(QString& method) const;
    virtual QString getMethod() const;
    virtual void getTranslationContext(QString& translationContext) const;
    virtual QString getTranslationContext() const;
    virtual void setTranslationContext(const QString& translationContext);
    virtual void getTranslatableReason(QString& translatableReason) const;
    virtual QString getTranslatableReason() const;
    virtual void setTranslatableReason(const QString& translatableReason);
    virtual void getReasonArguments(QList<QVariant>& reasonArguments) const;
    virtual const QList<QVariant>& getReasonArguments() const;
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
