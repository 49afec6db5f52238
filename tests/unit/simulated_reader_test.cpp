// The simulated reader: what it takes, what it writes down, and how its faults are asked for.

#include "simulator/simulated_reader.h"
#include "tests/support/files.h"

#include <gtest/gtest.h>

namespace {

using namespace simulator;

const Bytes kWake = {0x11, 0x2F, 0xC0, 0x04, 0x00, 0x78, 0x01, 0x2C, 0xB8, 0xE4};
const Bytes kWoken = {0x91, 0x00, 0xF2, 0xE0, 0x04, 0x00, 0x78, 0x01, 0x2C, 0x45, 0xBB};

std::optional<ReaderOptions> parse(std::vector<std::string> words) {
    std::string error;
    words.insert(words.end(), {"--", "true"});
    std::optional<ReaderOptions> options = parseReaderOptions(words, error);
    EXPECT_EQ(options.has_value(), error.empty());
    return options;
}

class SimulatedReaderTest : public testing::Test {
protected:
    /// A reader as the first that these options describe.
    SimulatedReader reader(const std::vector<std::string>& options) {
        return {"reader0", parse(options)->readers.at(0), m_folder.path().toStdString(), m_journal,
                m_log};
    }

    std::string file() const { return (m_folder.path() + "/exchanges").toStdString(); }

    QTemporaryDir m_folder;
    Journal m_journal;
    ExchangeLog m_log{file(), ""};
    Bytes m_answer;
};

TEST_F(SimulatedReaderTest, AnExchangeReachesTheTerminalAndIsWrittenDown) {
    EXPECT_EQ(reader({}).exchange(0x42000000, kWake, 11, m_answer), SimulatedReader::Result::done);
    EXPECT_EQ(m_answer, kWoken);
    EXPECT_EQ(readFile(QString::fromStdString(file())),
              "> reader0 42000000 capacity 11 size 10 11 2F C0 04 00 78 01 2C B8 E4\n"
              "< 91 00 F2 E0 04 00 78 01 2C 45 BB\n");
}

TEST_F(SimulatedReaderTest, AnAnswerLongerThanTheCapacityIsTooLong) {
    EXPECT_EQ(reader({}).exchange(0x42000000, kWake, 10, m_answer),
              SimulatedReader::Result::tooLong);
}

TEST_F(SimulatedReaderTest, AnotherCodeOrPrefixIsRefused) {
    SimulatedReader tested = reader({});
    EXPECT_EQ(tested.exchange(0x42000001, kWake, 11, m_answer), SimulatedReader::Result::refused);
    Bytes wrong = kWake;
    wrong[0] = 0x12;
    EXPECT_EQ(tested.exchange(0x42000000, wrong, 11, m_answer), SimulatedReader::Result::refused);
    EXPECT_EQ(tested.exchange(0x42000000, {0x11}, 11, m_answer), SimulatedReader::Result::refused);
}

TEST_F(SimulatedReaderTest, AnEmptyCommandIsAnsweredByTheReaderItself) {
    EXPECT_EQ(reader({}).exchange(0x42000000, {0x11, 0x0D}, 11, m_answer),
              SimulatedReader::Result::done);
    EXPECT_EQ(m_answer, Bytes({0x91, 0x00}));
}

TEST_F(SimulatedReaderTest, AFaultComesAtItsExchange) {
    SimulatedReader tested = reader({"--escape", "2:fail", "--escape", "3:bytes=01"});
    EXPECT_EQ(tested.exchange(0x42000000, kWake, 11, m_answer), SimulatedReader::Result::done);
    EXPECT_EQ(tested.exchange(0x42000000, kWake, 11, m_answer), SimulatedReader::Result::refused);
    EXPECT_EQ(tested.exchange(0x42000000, kWake, 11, m_answer), SimulatedReader::Result::done);
    EXPECT_EQ(m_answer, Bytes({0x01}));
}

TEST_F(SimulatedReaderTest, AReaderThatIsGoneStaysGone) {
    SimulatedReader removed = reader({"--escape", "1:remove"});
    SimulatedReader pulled = reader({"--fault", "init:pull"});
    for (int i = 0; i < 2; ++i) {
        for (SimulatedReader* tested : {&removed, &pulled}) {
            m_answer.clear();
            EXPECT_EQ(tested->exchange(0x42000000, kWake, 11, m_answer),
                      SimulatedReader::Result::gone);
            EXPECT_TRUE(tested->isGone());
        }
    }
}

TEST(ReaderOptionsTest, WithoutAnyThereIsOneUsualReader) {
    const auto options = parse({});
    ASSERT_EQ(options->readers.size(), 1U);
    EXPECT_EQ(options->readers[0].name, "Halvorin Terminal");
    EXPECT_EQ(options->readers[0].vendor, "Halvorin");
    EXPECT_EQ(options->readers[0].serial, "VT-0001");
    EXPECT_EQ(options->readers[0].features, Bytes({0x13, 0x04, 0x42, 0x33, 0x00, 0x01}));
    EXPECT_EQ(options->readers[0].escapeCode, 0x42000000U);
    EXPECT_TRUE(options->daemon);
}

TEST(ReaderOptionsTest, EachReaderHasItsOwn) {
    const auto options = parse({"--serial", "", "--reader", "B", "--vendor", "", "--slots", "2",
                                "--features", "none", "--readers", "2"});
    ASSERT_EQ(options->readers.size(), 4U);
    EXPECT_FALSE(options->readers[0].serial);
    EXPECT_EQ(options->readers[0].slotCount, 1U);
    for (std::size_t i = 1; i < 4; ++i) {
        EXPECT_EQ(options->readers[i].name, "B");
        EXPECT_FALSE(options->readers[i].vendor);
        EXPECT_FALSE(options->readers[i].features);
        EXPECT_EQ(options->readers[i].slotCount, 2U);
        EXPECT_EQ(options->readers[i].serial, "VT-0001");
    }
    EXPECT_TRUE(parse({"--readers", "0"})->readers.empty());
}

TEST(ReaderOptionsTest, WrongWordsAreRefused) {
    const std::vector<std::vector<std::string>> wrong = {{"--escape", "0:fail"},
                                                         {"--escape", "fail"},
                                                         {"--escape", "1:bytes=1"},
                                                         {"--escape", "1:other"},
                                                         {"--fault", "data:pull"},
                                                         {"--slots", "0"},
                                                         {"--slots", "9"},
                                                         {"--escape-code", "4200"},
                                                         {"--features", "zz"},
                                                         {"--reader", ""},
                                                         {"--reader", "a\"b"},
                                                         {"--readers", "101"},
                                                         {"--serial", "a\nb"},
                                                         {"--held", "no"},
                                                         {"--rate", "0"},
                                                         {"--unknown", "1"},
                                                         {"--vendor"}};
    for (const std::vector<std::string>& words : wrong) {
        std::string error;
        std::vector<std::string> all = words;
        all.insert(all.end(), {"--", "true"});
        EXPECT_FALSE(parseReaderOptions(all, error)) << words[0] << ' ' << words.back();
        EXPECT_FALSE(error.empty());
    }
    std::string error;
    EXPECT_FALSE(parseReaderOptions({"--no-daemon"}, error));
    EXPECT_EQ(error, "no command is given");
}

} // namespace
