#include "tests/window/scripted_window.h"

#include "ui/load_worker.h"

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

ScriptedWindowTest::ScriptedWindowTest() {
    scripted_ports::reset();
    scripted_ports::afterExchange = [this](std::size_t exchange) { m_gate.pass(exchange); };
    listed_devices::serial.clear();
    listed_devices::readers.clear();
}

ScriptedWindowTest::~ScriptedWindowTest() {
    m_gate.open();
    m_window.reset();
    while (!cancelAllLoads()) {
    }
}

void ScriptedWindowTest::answer(std::initializer_list<const char*> hexadecimal) {
    for (const char* text : hexadecimal) {
        scripted_ports::answers.push_back(QByteArray::fromHex(text));
    }
}
