// A window whose terminals are the test's choice, and so are the answers that they give.
#pragma once

#include "tests/support/listed_devices.h"
#include "tests/support/scripted_ports.h"
#include "tests/window/window_fixture.h"

#include <condition_variable>
#include <mutex>

/// Holds the worker at one of its exchanges with the terminal, for as long as the test likes.
class Gate {
public:
    /// To be called by the worker after each exchange.
    void pass(std::size_t exchange);
    /// Before the load: where the worker is to be held.
    void holdAt(std::size_t exchange);
    /// Waits until the worker is there. \return false when it does not come
    bool waitForWorker();
    void open();

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::size_t m_heldAt = 0;
    bool m_isHolding = false;
};

class ScriptedWindowTest : public WindowTest {
protected:
    ScriptedWindowTest();
    ~ScriptedWindowTest() override;

    /// Has the terminal give these answers next.
    static void answer(std::initializer_list<const char*> hexadecimal);
    /// The answers of PAD 2 up to the acceptance of the load.
    static void acceptLoad() { answer({"F2E0040078012C45BB", "F240020000212A"}); }

    Gate m_gate;
};
