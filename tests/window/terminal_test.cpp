// The window against simulated terminals: real search, real port. Runs with umockdev preloaded.

#include "simulator/descriptor.h"
#include "simulator/line_server.h"
#include "tests/window/window_fixture.h"
#include "ui/load_worker.h"

#include <QDir>

#include <cstdlib>
#include <cstring>
#include <sys/eventfd.h>
#include <thread>

namespace {

using namespace simulator;

/// Terminals that are plugged in, and a thread that lets them answer.
class Terminals {
public:
    explicit Terminals(const Options& options) : m_end(eventfd(0, EFD_CLOEXEC)) {
        std::string error;
        EXPECT_TRUE(m_journal.open(options.traceFile, options.frameFile, "", error)) << error;
        EXPECT_TRUE(m_testbed.plugIn(options.devices, "", error)) << error;
        m_server = std::make_unique<LineServer>(options, m_testbed, m_journal);
        m_thread = std::thread([this] { m_server->serveUntil(m_end.get()); });
    }
    ~Terminals() {
        EXPECT_EQ(eventfd_write(m_end.get(), 1), 0);
        m_thread.join();
    }
    Terminals(const Terminals&) = delete;
    Terminals& operator=(const Terminals&) = delete;

private:
    Descriptor m_end;
    Journal m_journal;
    UsbTestbed m_testbed;
    std::unique_ptr<LineServer> m_server;
    std::thread m_thread;
};

class TerminalWindowTest : public WindowTest {
protected:
    void SetUp() override {
        const char* preloaded = std::getenv("LD_PRELOAD");
        ASSERT_TRUE(preloaded != nullptr && std::strstr(preloaded, "umockdev") != nullptr)
            << "run this with libumockdev-preload.so.0 preloaded, as ctest does";
        storeText(g_configParams.PAD_number, "2");
        m_options.storeFolder = path("store").toStdString();
        m_options.frameFile = path("frames").toStdString();
        g_configParams.VID = {VEXA_VENDOR_ID};
        g_configParams.PID = {"0012"};
    }
    ~TerminalWindowTest() override {
        m_window.reset();
        while (!cancelAllLoads()) {
        }
    }

    void plugIn(std::size_t count, const std::vector<const char*>& faults = {}) {
        m_terminals.reset();
        m_options.devices.assign(count, {VEXA_VENDOR_ID, "0012", "VEXA T1 - Simulated"});
        m_options.faults.clear();
        for (const char* fault : faults) {
            std::string error;
            m_options.faults.push_back(*parseFault(fault, error));
        }
        m_terminals = std::make_unique<Terminals>(m_options);
    }

    QByteArray stored(const char* terminal = "ttyACM0") const {
        return readFile(path("store/") + terminal + "/pad-02.db");
    }

    Options m_options;
    std::unique_ptr<Terminals> m_terminals;
};

TEST_F(TerminalWindowTest, ARefreshFollowsWhatIsPluggedIn) {
    plugIn(0);
    openWindow();
    EXPECT_EQ(listed(), QStringList());
    plugIn(1);
    click("refreshButton");
    EXPECT_EQ(listed(), QStringList("VEXA T1 - PORT: /dev/ttyACM0"));
    plugIn(20);
    click("refreshButton");
    EXPECT_EQ(devices()->count(), 20);
    EXPECT_EQ(devices()->itemText(19), "VEXA T1 - PORT: /dev/ttyACM19");
    plugIn(0);
    click("refreshButton");
    EXPECT_EQ(listed(), QStringList());
}

TEST_F(TerminalWindowTest, AWholeLoadIsFollowedToItsEnd) {
    plugIn(2);
    openWindow();
    EXPECT_EQ(listed(), QStringList({"VEXA T1 - PORT: ttyACM0", "VEXA T1 - PORT: ttyACM1"}));
    chooseDatabase(245760); // 8 full blocks
    devices()->setCurrentIndex(1);
    QStringList labels;
    QVector<int> values;
    const auto connection = QObject::connect(bar(), &QProgressBar::valueChanged, [&](int value) {
        values << value;
        EXPECT_EQ(enabled(), kLoading) << value;
    });
    m_dialogs.whileOpen = [this](QDialog&) { EXPECT_EQ(bar()->value(), 100); };
    click("loadButton");
    EXPECT_EQ(enabled(), kLoading);
    ASSERT_TRUE(waitForEnd());
    QObject::disconnect(connection);
    EXPECT_EQ(m_dialogs.shown()[0].text, "Loading succeeded");
    EXPECT_EQ(values, QVector<int>({12, 25, 37, 50, 62, 75, 87, 99, 100, 0}));
    EXPECT_EQ(stored("ttyACM1"), readFile(path("test.db")));
    EXPECT_EQ(stored("ttyACM0"), "");
}

TEST_F(TerminalWindowTest, OneLoadRightAfterAnother) {
    plugIn(1);
    openWindow();
    chooseDatabase(61440);
    for (std::size_t i = 1; i <= 5; ++i) {
        click("loadButton");
        ASSERT_TRUE(waitForEnd(i));
        EXPECT_EQ(m_dialogs.shown().back().text, "Loading succeeded");
    }
    EXPECT_EQ(stored(), readFile(path("test.db")));
}

TEST_F(TerminalWindowTest, ACancelledLoadStoresNothingAndTheNextOneLoads) {
    plugIn(1, {"data:3:late=500"});
    openWindow();
    chooseDatabase(245760);
    const auto connection = QObject::connect(bar(), &QProgressBar::valueChanged, [this](int value) {
        if (value == 25) { // the third block is under way
            click("cancelButton");
        }
    });
    click("loadButton");
    ASSERT_TRUE(waitForEnd());
    QObject::disconnect(connection);
    EXPECT_EQ(m_dialogs.shown()[0].text, "Loading was cancelled");
    EXPECT_EQ(stored(), "");
    click("loadButton");
    ASSERT_TRUE(waitForEnd(2));
    EXPECT_EQ(m_dialogs.shown()[1].text, "Loading succeeded");
    EXPECT_EQ(stored(), readFile(path("test.db")));
}

TEST_F(TerminalWindowTest, RefusalsAreToldWithTheirReason) {
    const std::pair<const char*, const char*> faults[] = {
        {"data:2:nack=41", "A NACK was received : A"},
        {"data:2:incomplete-nack", ""},
        {"init:wrong", "Initialisation protocol failed"},
        {"end:silence", "Failed to send ending frame"},
    };
    openWindow();
    chooseDatabase(61440);
    std::size_t loads = 0;
    for (const auto& [fault, text] : faults) {
        plugIn(1, {fault});
        click("refreshButton");
        click("loadButton");
        ASSERT_TRUE(waitForEnd(++loads));
        EXPECT_EQ(m_dialogs.shown().back().text, text) << fault;
    }
}

TEST_F(TerminalWindowTest, ATerminalUnpluggedWhileItLoads) {
    plugIn(1, {"data:2:pull"});
    openWindow();
    chooseDatabase(245760);
    click("loadButton");
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(m_dialogs.shown()[0].text, "Timeout when sending data");
    click("refreshButton");
    EXPECT_EQ(listed(), QStringList());
    EXPECT_FALSE(button("loadButton")->isEnabled());
}

TEST_F(TerminalWindowTest, ATerminalUnpluggedBeforeLoadIsPressed) {
    plugIn(1);
    openWindow();
    chooseDatabase(61440);
    plugIn(0);
    click("loadButton");
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(m_dialogs.shown()[0].text, "No response from the terminal");
}

} // namespace
