// What the tests of the window share: its settings and its widgets.
#pragma once

#include "configuration/config.h"
#include "tests/support/files.h"
#include "tests/support/log_capture.h"
#include "tests/window/dialog_watcher.h"
#include "ui/main_window.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

#include <gtest/gtest.h>

#include <memory>

// What is enabled: at the start, in the middle of a load, and after one.
inline const QStringList kAtTheStart = {"browseButton", "cancelButton", "closeButton",
                                        "dbPathEdit",   "deviceCombo",  "loadButton",
                                        "refreshButton"};
inline const QStringList kLoading = {"cancelButton", "closeButton"};
inline const QStringList kIdle = {"browseButton", "closeButton", "dbPathEdit",
                                  "deviceCombo",  "loadButton",  "refreshButton"};

class WindowTest : public testing::Test {
protected:
    WindowTest();
    ~WindowTest() override;

    void openWindow();

    QString path(const QString& name) const { return m_folder.path() + "/" + name; }

    template<class Widget> Widget* child(const char* name) const {
        auto* widget = m_window->findChild<Widget*>(name);
        EXPECT_NE(widget, nullptr) << name;
        return widget;
    }
    QPushButton* button(const char* name) const { return child<QPushButton>(name); }
    QComboBox* devices() const { return child<QComboBox>("deviceCombo"); }
    QLineEdit* databaseField() const { return child<QLineEdit>("dbPathEdit"); }
    QProgressBar* bar() const { return child<QProgressBar>("progressBar"); }
    QLabel* percentage() const { return child<QLabel>("progressLabel"); }

    /// The entries of the device list.
    QStringList listed() const;

    /// The widgets that are enabled.
    QStringList enabled() const;

    /// A database of two concepts, of just this size, named "test.db", chosen in the window.
    void chooseDatabase(qint64 size);

    void click(const char* name) const { QTest::mouseClick(button(name), Qt::LeftButton); }

    /// Waits for the message at the end of so many loads to have been closed.
    bool waitForEnd(std::size_t messages = 1);

    QTemporaryDir m_folder;
    DialogWatcher m_dialogs;
    std::unique_ptr<VEXAInterface> m_window;
};
