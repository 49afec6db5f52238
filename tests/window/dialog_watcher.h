// Answers the dialogs that the window opens, as a user would.
#pragma once

#include <QDialog>
#include <QObject>
#include <QString>

#include <functional>
#include <vector>

/// What a dialog showed.
struct ShownDialog {
    QString title;
    QString text; ///< of a message box
    bool isModal = false;
    QWidget* parent = nullptr;
};

class DialogWatcher : public QObject {
public:
    DialogWatcher();

    /// The dialogs so far; each is closed by OK once it is shown.
    const std::vector<ShownDialog>& shown() const { return m_shown; }

    /// What else is done with a dialog that is open, before OK.
    std::function<void(QDialog&)> whileOpen;

    /// With false, OK is what whileOpen does of it.
    bool accepts = true;

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void answer(QDialog* dialog);

    std::vector<ShownDialog> m_shown;
};
