#include "tests/window/screen_fixture.h"

#include <QDir>

namespace {

constexpr int kPatienceMs = 60000;

} // namespace

ScreenTest::ScreenTest() {
    // On an X server the libraries below the toolkit leak; the window's own tests look for ours.
    m_environment << "LSAN_OPTIONS=detect_leaks=0";
    for (const char* folder : {"icons", "lang"}) {
        EXPECT_TRUE(QFile::link(QString(VEXA_RESOURCES "/") + folder, path("bin/") + folder));
    }
}

void ScreenTest::SetUp() {
    m_server.start("Xvfb", {"-displayfd", "1", "-screen", "0", "800x600x24", "-nolisten", "tcp"});
    while (m_server.state() != QProcess::NotRunning && !m_server.canReadLine()) {
        (void)m_server.waitForReadyRead(kPatienceMs);
    }
    const QByteArray display = m_server.readLine().trimmed();
    ASSERT_FALSE(display.isEmpty()) << m_server.readAllStandardError().toStdString();
    m_environment << "DISPLAY=:" + display;
}

ScreenTest::~ScreenTest() {
    m_server.terminate();
    (void)m_server.waitForFinished(kPatienceMs);
}

std::unique_ptr<QProcess> ScreenTest::start(const QStringList& terminalOptions) {
    auto program = std::make_unique<QProcess>();
    program->setWorkingDirectory(path(""));
    program->setEnvironment(environment());
    QStringList command = commandWithTerminal({}, terminalOptions);
    command[command.indexOf("--trace") + 1] = "-";
    program->start(command.first(), command.mid(1));
    return program;
}

void ScreenTest::xdotool(const QStringList& arguments) {
    QProcess tool;
    tool.setEnvironment(environment());
    tool.start("xdotool", arguments);
    EXPECT_TRUE(tool.waitForFinished(kPatienceMs) && tool.exitCode() == 0)
        << arguments.join(' ').toStdString();
}

void ScreenTest::waitForWindows(const QString& title, int count) {
    int found = -1;
    while (found != count && !HasFailure()) {
        QProcess tool;
        tool.setEnvironment(environment());
        tool.start("xdotool", {"search", "--onlyvisible", "--name", "^" + title + "$"});
        ASSERT_TRUE(tool.waitForFinished(kPatienceMs));
        found = tool.readAllStandardOutput().count('\n');
    }
}

void ScreenTest::confirm(const QString& title) {
    waitForWindow(title);
    xdotool({"key", "Return"});
    waitForWindows(title, 0);
}

void ScreenTest::waitForWindow(const QString& title) {
    // No window manager runs that would hand out the keyboard.
    xdotool(
        {"search", "--sync", "--onlyvisible", "--name", "^" + title + "$", "windowfocus", "%1"});
}

bool ScreenTest::waitForTrace(QProcess& program, const QByteArray& text) {
    program.setReadChannel(QProcess::StandardError);
    for (;;) {
        while (program.canReadLine()) {
            if (program.readLine().contains(text)) {
                return true;
            }
        }
        if (!program.waitForReadyRead(kPatienceMs)) {
            return false;
        }
    }
}

void ScreenTest::click(int x, int y) {
    xdotool({"mousemove", QString::number(x), QString::number(y), "click", "1"});
}

int ScreenTest::endOf(QProcess& program) {
    const bool ended =
        program.state() == QProcess::NotRunning || program.waitForFinished(kPatienceMs);
    return ended && program.exitStatus() == QProcess::NormalExit ? program.exitCode() : -1;
}

void ScreenTest::prepare(qint64 databaseSize) {
    makeTestDatabase(databaseSize);
    configure(defaultConfig()
                  .replace("&RecentPath=", "&RecentPath=" + path("test.db").toUtf8())
                  .replace("Numéro de PAD", "3"));
}
