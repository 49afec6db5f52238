// The unchanged program on a real X server of its own, used with mouse and keyboard.
#pragma once

#include "tests/program/program_test.h"

#include <QProcess>

#include <memory>

class ScreenTest : public ProgramTest {
protected:
    ScreenTest();
    void SetUp() override;
    ~ScreenTest() override;

    /// Starts the program against one simulated terminal, or what the options say.
    std::unique_ptr<QProcess> start(const QStringList& terminalOptions = {});

    /// Waits until a window with this title is there, and gives it the keyboard.
    void waitForWindow(const QString& title);

    /// Waits for a line of the terminal's trace, which the program's standard error carries.
    static bool waitForTrace(QProcess& program, const QByteArray& text);

    /// Clicks on a place of the screen; the window is in the upper left corner.
    void click(int x, int y);
    void clickLoad() { click(212, 372); }
    void clickClose() { click(322, 371); }

    /// Waits until so many windows with this title are there.
    void waitForWindows(const QString& title, int count);

    /// Waits for a message, presses Return and waits for it to go.
    void confirm(const QString& title);

    /// Waits for the end. \return the exit status, -1 when it does not end or is killed
    static int endOf(QProcess& program);

    /// Has the program start with these settings, and with a database of this size chosen.
    void prepare(qint64 databaseSize);

private:
    void xdotool(const QStringList& arguments);

    QProcess m_server;
};
