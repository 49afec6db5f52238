#include "tests/window/dialog_watcher.h"

#include <QApplication>
#include <QMessageBox>
#include <QPointer>
#include <QTimer>

DialogWatcher::DialogWatcher() {
    qApp->installEventFilter(this);
}

bool DialogWatcher::eventFilter(QObject* watched, QEvent* event) {
    auto* dialog = qobject_cast<QDialog*>(watched);
    if (dialog != nullptr && event->type() == QEvent::Show) {
        const QPointer<QDialog> guarded(dialog);
        QTimer::singleShot(0, this, [this, guarded] {
            if (guarded) {
                answer(guarded);
            }
        });
    }
    return false;
}

void DialogWatcher::answer(QDialog* dialog) {
    const auto* box = qobject_cast<QMessageBox*>(dialog);
    m_shown.push_back({dialog->windowTitle(), box == nullptr ? QString() : box->text(),
                       dialog->isModal(), dialog->parentWidget()});
    if (whileOpen) {
        whileOpen(*dialog);
    }
    if (accepts) {
        (void)QMetaObject::invokeMethod(dialog, "accept");
    }
}
