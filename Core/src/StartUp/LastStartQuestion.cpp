#include "StartUp/LastStartQuestion.h"

#include "StartUp/ApplicationStartupHandler.h"

#include <QApplication>
#include <QDebug>
#include <QMessageBox>
#include <QPushButton>
#include <QTranslator>

namespace corvane {
namespace base {
namespace business {

LastStartChoice LastStartQuestion::ask(const StartUpRecord::Entry& lastStart)
{
    QTranslator translator;
    const bool translated = ApplicationStartupHandler::instance()->loadTranslator(
                                translator, QCoreApplication::applicationDirPath())
        && QCoreApplication::installTranslator(&translator);
    const QString what = lastStart.phase == StartUpRecord::loading
        ? tr("The last start ended while plug-in %1 was loading.")
        : tr("The last start ended while plug-in %1 was initializing.");
    QMessageBox box(QMessageBox::Warning, QGuiApplication::applicationDisplayName(),
                    what.arg(lastStart.name()) + QStringLiteral("\n\n")
                        + tr("Start without it this time, or disable it until it is enabled "
                             "again?"));
    box.setObjectName(QStringLiteral("lastStartQuestion"));
    QPushButton* once = box.addButton(tr("Start without it this time"), QMessageBox::AcceptRole);
    QPushButton* disable = box.addButton(tr("Disable it"), QMessageBox::DestructiveRole);
    once->setObjectName(QStringLiteral("leaveOutThisTime"));
    disable->setObjectName(QStringLiteral("disableUntilEnabled"));
    box.setDefaultButton(once);
    box.setEscapeButton(once);
    box.exec();
    if (translated) {
        QCoreApplication::removeTranslator(&translator);
    }
    const bool disabled = box.clickedButton() == disable;
    qInfo().noquote() << QStringLiteral("ask: %1 %2").arg(lastStart.name(),
                                                         disabled ? QStringLiteral("disabled until it is enabled again")
                                                                  : QStringLiteral("left out of this start"));
    return disabled ? LastStartChoice::DisableUntilEnabled : LastStartChoice::LeaveOutThisTime;
}

} // namespace business
} // namespace base
} // namespace corvane
