#include "tests/window/window_fixture.h"

#include "app/run_mode.h"
#include "tests/support/chosen_executable.h"
#include "tests/support/sample_database.h"
#include "ui/load_worker.h"

#include <QDir>

#include <chrono>

void Gate::pass(std::size_t exchange) {
    std::unique_lock<std::mutex> lock(m_mutex);
    if (exchange == m_heldAt) {
        m_isHolding = true;
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return m_heldAt == 0; });
        m_isHolding = false;
    }
}

void Gate::holdAt(std::size_t exchange) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_heldAt = exchange;
}

bool Gate::waitForWorker() {
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_changed.wait_for(lock, std::chrono::seconds(30), [this] { return m_isHolding; });
}

void Gate::open() {
    holdAt(0);
    m_changed.notify_all();
}

WindowTest::WindowTest() {
    g_inCmdMode = false;
    scripted_ports::reset();
    scripted_ports::afterExchange = [this](std::size_t exchange) { m_gate.pass(exchange); };
    listed_devices::serial.clear();
    listed_devices::readers.clear();
    (void)QDir().mkdir(path("bin"));
    chosenExecutable = path("bin/VEXACharger").toStdString();
    PreviousdbName.clear();
    g_configParams = getDefaultConfig();
    storeText(g_configParams.RecentPath, "");
    storeText(g_configParams.copyright, "The foot");
}

WindowTest::~WindowTest() {
    m_gate.open();
    m_window.reset();
    while (!endLoads()) {
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

void WindowTest::answer(std::initializer_list<const char*> hexadecimal) {
    for (const char* text : hexadecimal) {
        scripted_ports::answers.push_back(QByteArray::fromHex(text));
    }
}

bool WindowTest::waitForEnd(std::size_t messages) {
    constexpr int kPatienceMs = 60000;
    return QTest::qWaitFor(
        [&] { return m_dialogs.shown().size() == messages && enabled() == kIdle; }, kPatienceMs);
}
