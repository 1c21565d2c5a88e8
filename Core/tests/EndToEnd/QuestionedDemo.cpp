#include "StartUp/FrameworkRunner.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QTimer>

#include <cstdio>

// The demo application with a hand for message boxes: each one shown is written to standard
// output as "box: <title>: <text>", and the button named in CORVANE_TEST_CLICK is clicked.
namespace {
void answerBoxes()
{
    auto* timer = new QTimer(QCoreApplication::instance());
    QObject::connect(timer, &QTimer::timeout, [] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (box == nullptr || !box->isVisible())
            return;
        std::printf("box: %s: %s\n", box->windowTitle().toUtf8().constData(),
                    box->text().toUtf8().constData());
        std::fflush(stdout);
        const QString button = QString::fromLocal8Bit(qgetenv("CORVANE_TEST_CLICK"));
        if (auto* found = box->findChild<QAbstractButton*>(button))
            found->click();
    });
    timer->start(20);
}
} // namespace
Q_COREAPP_STARTUP_FUNCTION(answerBoxes)

int main(int argc, char** argv)
{
    return corvane::base::business::FrameworkRunner().exec(argc, argv, false);
}
