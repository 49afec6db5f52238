// Measures how long a program takes until its window is shown, from outside, as the X server sees
// it.
//
// window-probe FILE PROCESSOR COMMAND [ARGUMENT]...
//   Runs COMMAND on one processor and writes the seconds into FILE. No window manager may run.

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <poll.h>
#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/xcb.h>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kPatienceMs = 120000;

struct Freer {
    void operator()(void* memory) const { std::free(memory); }
};
using Event = std::unique_ptr<xcb_generic_event_t, Freer>;

[[noreturn]] void fail(const char* what) {
    (void)std::fprintf(stderr, "window-probe: %s\n", what);
    std::exit(1);
}

pid_t start(char* const* command, int processor) {
    const pid_t child = fork();
    if (child == 0) {
        if (processor >= 0) {
            cpu_set_t set;
            CPU_ZERO(&set);
            CPU_SET(processor, &set);
            (void)sched_setaffinity(0, sizeof set, &set);
        }
        (void)execvp(command[0], command);
        _exit(127);
    }
    return child;
}

/// The X server, as a window manager would listen to it.
class Screen {
public:
    Screen() : m_connection(xcb_connect(nullptr, nullptr)) {
        if (xcb_connection_has_error(m_connection) != 0) {
            fail("no X server");
        }
        const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
        const std::uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        (void)xcb_change_window_attributes(m_connection, root, XCB_CW_EVENT_MASK, &mask);
        (void)xcb_flush(m_connection);
    }
    ~Screen() { xcb_disconnect(m_connection); }
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    /// The next event, nothing when none comes in time.
    Event next(int timeoutMs) {
        (void)xcb_flush(m_connection);
        Event event(xcb_poll_for_event(m_connection));
        if (!event) {
            pollfd descriptor = {xcb_get_file_descriptor(m_connection), POLLIN, 0};
            (void)poll(&descriptor, 1, timeoutMs);
            event.reset(xcb_poll_for_event(m_connection));
        }
        return event;
    }

    static bool showsWindow(const xcb_generic_event_t& event) {
        const auto& map = reinterpret_cast<const xcb_map_notify_event_t&>(event);
        return (event.response_type & 0x7F) == XCB_MAP_NOTIFY && map.override_redirect == 0;
    }

private:
    xcb_connection_t* m_connection;
};

void waitForWindow(Screen& screen) {
    for (;;) {
        const Event event = screen.next(kPatienceMs);
        if (!event) {
            fail("no window");
        }
        if (Screen::showsWindow(*event)) {
            return;
        }
    }
}

} // namespace

int main(int argc, char* argv[]) {
    if (argc < 4) {
        return 64;
    }
    Screen screen;
    const Clock::time_point started = Clock::now();
    const pid_t program = start(argv + 3, std::atoi(argv[2]));
    waitForWindow(screen);
    const double shown = std::chrono::duration<double>(Clock::now() - started).count();
    (void)kill(program, SIGTERM);
    (void)waitpid(program, nullptr, 0);
    std::FILE* file = std::fopen(argv[1], "w");
    if (file == nullptr) {
        return 73;
    }
    (void)std::fprintf(file, "%.6f\n", shown);
    return std::fclose(file) == 0 ? 0 : 74;
}
