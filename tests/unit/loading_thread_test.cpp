// A whole load by the worker, against a scripted port, in both modes.

#include "loader/loading_thread.h"
#include "tests/unit/session_fixture.h"

#include <QMetaMethod>

#include <atomic>
#include <unistd.h>

namespace {

using Events = std::vector<std::string>;

class WorkerTest : public SessionTest {
protected:
    ~WorkerTest() override { g_inCmdMode = false; }

    /// Runs a load in window mode and keeps what is emitted.
    int load(VEXADbManager manager) {
        VEXAUsbConnector session(terminal(), manager, 2);
        VEXAThread worker(session);
        QObject::connect(&worker, &VEXAThread::threadFeedback,
                         [this](int code) { m_emitted.push_back("code " + std::to_string(code)); });
        QObject::connect(&worker, &VEXAThread::threadFeedback_NACK, [this](const QString& text) {
            m_emitted.push_back("text " + text.toStdString());
        });
        QObject::connect(&worker, &VEXAThread::threadProgress, [this](int percentage) {
            m_emitted.push_back("progress " + std::to_string(percentage));
        });
        m_worker = &worker;
        return worker.operate();
    }

    /// Runs a load in command-line mode and keeps what is printed.
    int loadOnCommandLine(VEXADbManager manager) {
        g_inCmdMode = true;
        testing::internal::CaptureStdout();
        const int code = load(manager);
        m_printed = testing::internal::GetCapturedStdout();
        return code;
    }

    VEXADbManager incoherent() {
        EXPECT_TRUE(writeFile(path("text.db"), QByteArray(5000, 't')));
        return VEXADbManager(path("text.db").toStdString());
    }

    VEXADbManager unopenable() {
        VEXADbManager manager = databaseOf(4096);
        EXPECT_TRUE(QDir().mkdir(path("elsewhere")) || QFile::remove(path("elsewhere/test.db")));
        EXPECT_TRUE(QFile::rename(path("test.db"), path("elsewhere/test.db")));
        return manager;
    }

    std::size_t framesOf(const char* hexadecimal) const {
        std::size_t count = 0;
        for (std::size_t i = 1; i <= scripted_ports::exchanges.size(); ++i) {
            count += sent(i) == hexadecimal ? 1 : 0;
        }
        return count;
    }

    Events m_emitted;
    std::string m_printed;
    VEXAThread* m_worker = nullptr;
};

TEST_F(WorkerTest, ASuccessfulLoadReportsProgressAndCode0) {
    acceptLoad();
    answer({"05", "05", "050000"});
    EXPECT_EQ(load(databaseOf(61440)), 0);
    EXPECT_EQ(m_emitted, Events({"progress 50", "progress 100", "code 0"}));
    EXPECT_EQ(scripted_ports::events, Events({"serial /dev/ttyACM7", "close"}));
    EXPECT_EQ(sent(5), "020000");
}

TEST_F(WorkerTest, ASuccessfulLoadOnTheCommandLineIsPrintedAndEmitsNothing) {
    acceptLoad();
    answer({"05", "05", "05", "05", "050000"});
    EXPECT_EQ(loadOnCommandLine(databaseOf(122880)), 0);
    EXPECT_EQ(m_printed, "\nCommunication initialization process succeeded"
                         "\nLoading progress : 50 %"
                         "\nLoading progress : 100 %"
                         "\nAll data frames have been sent. Sending ending frame ... "
                         "\nLoading succeeded\n");
    EXPECT_EQ(m_emitted, Events());
}

TEST_F(WorkerTest, APercentageIsPrintedOnceAndZeroNever) {
    // 200 blocks: every percentage comes twice, 0 among them.
    acceptLoad();
    for (int i = 0; i < 200; ++i) {
        answer({"05"});
    }
    answer({"050000"});
    EXPECT_EQ(loadOnCommandLine(databaseOf(200 * 30720)), 0);
    EXPECT_EQ(m_printed, "\nCommunication initialization process succeeded"
                         "\nLoading progress : 10 %\nLoading progress : 20 %"
                         "\nLoading progress : 30 %\nLoading progress : 40 %"
                         "\nLoading progress : 50 %\nLoading progress : 60 %"
                         "\nLoading progress : 70 %\nLoading progress : 80 %"
                         "\nLoading progress : 90 %\nLoading progress : 100 %"
                         "\nAll data frames have been sent. Sending ending frame ... "
                         "\nLoading succeeded\n");
}

TEST_F(WorkerTest, AnEmptyFileIsEndedWithoutProgress) {
    acceptLoad();
    answer({"050000"});
    ASSERT_TRUE(writeFile(path("empty.db"), ""));
    EXPECT_EQ(load(VEXADbManager(path("empty.db").toStdString())), 0);
    EXPECT_EQ(m_emitted, Events({"code 0"}));
}

TEST_F(WorkerTest, Code1AnIncoherentDatabase) {
    EXPECT_EQ(load(incoherent()), 1);
    EXPECT_EQ(m_emitted, Events({"code 1"}));
    EXPECT_EQ(loadOnCommandLine(incoherent()), 1);
    EXPECT_EQ(m_printed,
              "\nThe database is not coherent\nCommunication initialization process failed");
    EXPECT_TRUE(scripted_ports::events.empty());
}

TEST_F(WorkerTest, Code2ADatabaseThatCannotBeOpened) {
    EXPECT_EQ(load(unopenable()), 2);
    EXPECT_EQ(m_emitted, Events({"code 2"}));
    EXPECT_EQ(loadOnCommandLine(unopenable()), 2);
    EXPECT_EQ(m_printed, "\nCommunication initialization process failed");
}

TEST_F(WorkerTest, Code3AWrongInitialisationAnswer) {
    answer({"FF"});
    EXPECT_EQ(load(databaseOf(4096)), 3);
    EXPECT_EQ(m_emitted, Events({"code 3"}));
    EXPECT_EQ(scripted_ports::events.back(), "close");
    scripted_ports::reset();
    answer({"FF"});
    EXPECT_EQ(loadOnCommandLine(databaseOf(4096)), 3);
    EXPECT_EQ(m_printed, "\nCommunication initialization process failed");
}

TEST_F(WorkerTest, Code14ASilentTerminal) {
    EXPECT_EQ(load(databaseOf(4096)), 14);
    EXPECT_EQ(m_emitted, Events({"code 14"}));
    EXPECT_EQ(scripted_ports::events.back(), "close");
    scripted_ports::reset();
    EXPECT_EQ(loadOnCommandLine(databaseOf(4096)), 14);
    EXPECT_EQ(m_printed,
              "\nNo response from the terminal\nCommunication initialization process failed");
}

TEST_F(WorkerTest, Code4ARefusedRequestIsReportedAsATextOnly) {
    answer({"F2E0040078012C45BB", "F2400200010A1B"});
    const LogCapture log;
    EXPECT_EQ(load(databaseOf(4096)), 4);
    EXPECT_EQ(m_emitted, Events({"text Loading request failed - error : 0xF2400200010A1B"}));
    EXPECT_EQ(scripted_ports::events.back(), "close");
    EXPECT_TRUE(
        log.contains("VEXALD    Update request failed with returned message : 0xF2400200010A1B"));
    scripted_ports::reset();
    answer({"F2E0040078012C45BB", "F2400200010A1B"});
    EXPECT_EQ(loadOnCommandLine(databaseOf(4096)), 4);
    EXPECT_EQ(m_printed, "\nUpdate request failed with returned message : 0xF2400200010A1B");
}

TEST_F(WorkerTest, Code5ANackIsReportedWithItsCharacter) {
    acceptLoad();
    answer({"060000E9"});
    const LogCapture log;
    EXPECT_EQ(load(databaseOf(4096)), 5);
    EXPECT_EQ(m_emitted, Events({"text A NACK was received : é"}));
    EXPECT_EQ(framesOf("020000"), 0U);
    EXPECT_EQ(scripted_ports::events.back(), "close");
    EXPECT_TRUE(log.contains("VEXALD    A NACK was received : é"));
    scripted_ports::reset();
    acceptLoad();
    answer({"06000041"});
    EXPECT_EQ(loadOnCommandLine(databaseOf(4096)), 5);
    EXPECT_EQ(m_printed,
              "\nCommunication initialization process succeeded\nA NACK was received : A");
}

TEST_F(WorkerTest, Code6AnIncompleteNack) {
    acceptLoad();
    answer({"0600"});
    EXPECT_EQ(load(databaseOf(4096)), 6);
    EXPECT_EQ(m_emitted, Events({"code 6"}));
    EXPECT_EQ(framesOf("020000"), 0U);
    scripted_ports::reset();
    acceptLoad();
    answer({"06"});
    EXPECT_EQ(loadOnCommandLine(databaseOf(4096)), 6);
    EXPECT_EQ(m_printed,
              "\nCommunication initialization process succeeded\nAn incomplete NACK was received");
}

TEST_F(WorkerTest, Code7ARefusedBlockStillSendsTheEndingFrame) {
    acceptLoad();
    answer({"05", "15", "050000"});
    EXPECT_EQ(load(databaseOf(92160)), 7);
    EXPECT_EQ(m_emitted, Events({"progress 33", "code 0"}));
    EXPECT_EQ(sent(5), "020000");
    scripted_ports::reset();
    acceptLoad();
    answer({"15", "060000"});
    EXPECT_EQ(loadOnCommandLine(databaseOf(92160)), 7);
    EXPECT_EQ(m_printed, "\nCommunication initialization process succeeded"
                         "\nNo response for the ending frame");
}

TEST_F(WorkerTest, Code8AFailedEndingFrameIsReportedAndReturned0) {
    acceptLoad();
    answer({"05", "0500"});
    const LogCapture log;
    EXPECT_EQ(load(databaseOf(4096)), 0);
    EXPECT_EQ(m_emitted, Events({"progress 100", "code 8"}));
    EXPECT_TRUE(log.contains("VEXALD    No response for the ending frame"));
    EXPECT_FALSE(log.contains("VEXALD Loading succeeded"));
    scripted_ports::reset();
    acceptLoad();
    answer({"05"});
    EXPECT_EQ(loadOnCommandLine(databaseOf(4096)), 0);
    EXPECT_EQ(m_printed, "\nCommunication initialization process succeeded"
                         "\nLoading progress : 100 %"
                         "\nAll data frames have been sent. Sending ending frame ... "
                         "\nNo response for the ending frame");
}

TEST_F(WorkerTest, Code10ACancelTakesEffectAfterTheBlockUnderWay) {
    acceptLoad();
    answer({"05", "05", "05", "050000"});
    scripted_ports::afterExchange = [this](std::size_t number) {
        if (number == 4) {
            m_worker->loadCancel();
        }
    };
    const LogCapture log;
    EXPECT_EQ(load(databaseOf(92160)), 10);
    EXPECT_EQ(m_emitted, Events({"progress 33", "progress 66", "code 10"}));
    EXPECT_EQ(scripted_ports::exchanges.size(), 4U);
    EXPECT_EQ(scripted_ports::events.back(), "close");
    EXPECT_TRUE(log.contains("VEXALD Loading was cancelled"));
}

TEST_F(WorkerTest, ACancelDuringABlockThatIsRefusedIsStillACancel) {
    for (const char* block : {"06000041", "0600", "15", ""}) {
        scripted_ports::reset();
        m_emitted.clear();
        acceptLoad();
        answer({block, "050000"});
        scripted_ports::afterExchange = [this](std::size_t number) {
            if (number == 3) {
                m_worker->loadCancel();
            }
        };
        EXPECT_EQ(load(databaseOf(61440)), 10) << block;
        EXPECT_EQ(m_emitted, Events({"code 10"})) << block;
        EXPECT_EQ(framesOf("020000"), 0U) << block;
    }
}

TEST_F(WorkerTest, ACancelDuringTheInitialisationTakesEffectAtTheFirstBlock) {
    acceptLoad();
    answer({"05", "05", "050000"});
    scripted_ports::afterExchange = [this](std::size_t number) {
        if (number == 1) {
            m_worker->loadCancel();
        }
    };
    EXPECT_EQ(load(databaseOf(61440)), 10);
    EXPECT_EQ(scripted_ports::exchanges.size(), 3U);
}

TEST_F(WorkerTest, ACancelDuringTheEndingFrameHasNoEffect) {
    acceptLoad();
    answer({"05", "050000"});
    scripted_ports::afterExchange = [this](std::size_t number) {
        if (number == 4) {
            m_worker->loadCancel();
        }
    };
    EXPECT_EQ(load(databaseOf(4096)), 0);
    EXPECT_EQ(m_emitted, Events({"progress 100", "code 0"}));
}

TEST_F(WorkerTest, ACancelBeforeTheStartHasNoEffect) {
    acceptLoad();
    answer({"05", "050000"});
    VEXAUsbConnector session(terminal(), databaseOf(4096), 2);
    VEXAThread worker(session);
    worker.loadCancel();
    EXPECT_EQ(worker.operate(), 0);
    EXPECT_EQ(worker.getProgress(), 100);
}

TEST_F(WorkerTest, Code14ABlockWithoutAnAnswer) {
    acceptLoad();
    answer({"05"});
    const LogCapture log;
    EXPECT_EQ(load(databaseOf(61440)), 14);
    EXPECT_EQ(m_emitted, Events({"progress 50", "text Timeout when sending data"}));
    EXPECT_EQ(framesOf("020000"), 0U);
    EXPECT_TRUE(log.contains("VEXALD    Timeout when sending data"));
    scripted_ports::reset();
    acceptLoad();
    EXPECT_EQ(loadOnCommandLine(databaseOf(61440)), 14);
    EXPECT_EQ(m_printed, "\nCommunication initialization process succeeded"
                         "\nNo response from the terminal\nTimeout when sending data");
}

TEST_F(WorkerTest, ClosingIsLoggedWithItsResult) {
    {
        const LogCapture log;
        (void)load(databaseOf(4096));
        EXPECT_EQ(log.count("VEXALD Connection has been successfully closed"), 1U);
    }
    scripted_ports::closingSucceeds = false;
    const LogCapture log;
    EXPECT_EQ(load(databaseOf(4096)), 14);
    EXPECT_EQ(log.count("VEXALD    Failed to close connection"), 1U);
}

TEST_F(WorkerTest, TheCourseOfALoadIsLogged) {
    acceptLoad();
    answer({"05", "050000"});
    const LogCapture log;
    (void)load(databaseOf(4096));
    Events course;
    for (const std::string& line : log.lines()) {
        if (line.find(" has been") != std::string::npos ||
            line.find("succeed") != std::string::npos ||
            line.find("All data") != std::string::npos) {
            course.push_back(line);
        }
    }
    EXPECT_EQ(course, Events({"VEXALD Database integrity check succeeded",
                              "VEXALD Protocol initialization succeeded",
                              "VEXALD Communication initialization process succeeded",
                              "VEXALD    All data in file have been read",
                              "VEXALD Data processing has been finished",
                              "VEXALD All data frames have been sent", "VEXALD Loading succeeded",
                              "VEXALD Connection has been successfully closed"}));
}

TEST_F(WorkerTest, StartedAsAThreadItRunsTheLoad) {
    acceptLoad();
    answer({"05", "050000"});
    VEXAUsbConnector session(terminal(), databaseOf(4096), 2);
    VEXAThread worker(session);
    std::atomic<int> code{-1};
    QObject::connect(&worker, &VEXAThread::threadFeedback, [&](int value) { code = value; });
    worker.start();
    ASSERT_TRUE(worker.wait());
    EXPECT_EQ(code, 0);
}

TEST_F(WorkerTest, TheSignalsAndTheSlotAreDeclaredAsKnown) {
    const QMetaObject& meta = VEXAThread::staticMetaObject;
    const int first = meta.methodOffset();
    EXPECT_EQ(meta.method(first).methodSignature(), "threadFeedback(int)");
    EXPECT_STREQ(meta.method(first).typeName(), "int");
    EXPECT_EQ(meta.method(first + 1).methodSignature(), "threadFeedback_NACK(QString)");
    EXPECT_STREQ(meta.method(first + 1).typeName(), "QString");
    EXPECT_EQ(meta.method(first + 2).methodSignature(), "threadProgress(int)");
    EXPECT_STREQ(meta.method(first + 2).typeName(), "int");
    EXPECT_EQ(meta.method(first + 3).methodSignature(), "loadCancel()");
    EXPECT_EQ(meta.methodCount(), first + 4);
}

TEST_F(WorkerTest, AWorkerWithoutASessionCannotLoad) {
    VEXAThread worker;
    EXPECT_EQ(worker.operate(), 1);
}

} // namespace
