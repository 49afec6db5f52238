#include "tests/window/window_fixture.h"

#include "app/run_mode.h"
#include "tests/support/chosen_executable.h"
#include "tests/support/sample_database.h"
#include "ui/load_worker.h"

#include <QDir>

WindowTest::WindowTest() {
    g_inCmdMode = false;
    (void)QDir().mkdir(path("bin"));
    chosenExecutable = path("bin/VEXACharger").toStdString();
    PreviousdbName.clear();
    g_configParams = getDefaultConfig();
    storeText(g_configParams.RecentPath, "");
    storeText(g_configParams.copyright, "The foot");
}

WindowTest::~WindowTest() {
    m_window.reset();
    while (!cancelAllLoads()) {
    }
}

void WindowTest::openWindow() {
    m_window = std::make_unique<VEXAInterface>();
    m_window->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(m_window.get()));
}

QStringList WindowTest::listed() const {
    QStringList texts;
    for (int i = 0; i < devices()->count(); ++i) {
        texts << devices()->itemText(i);
    }
    return texts;
}

QStringList WindowTest::enabled() const {
    QStringList names;
    for (const QString& name : kAtTheStart) {
        if (m_window->findChild<QWidget*>(name)->isEnabled()) {
            names << name;
        }
    }
    return names;
}

void WindowTest::chooseDatabase(qint64 size) {
    QStringList statements = twoConcepts();
    statements.prepend("PRAGMA page_size=512");
    (void)QFile::remove(path("test.db"));
    ASSERT_TRUE(makeDatabase(path("test.db"), statements, size));
    databaseField()->setText(path("test.db"));
}

bool WindowTest::waitForEnd(std::size_t messages) {
    constexpr int kPatienceMs = 60000;
    return QTest::qWaitFor(
        [&] { return m_dialogs.shown().size() == messages && enabled() == kIdle; }, kPatienceMs);
}
