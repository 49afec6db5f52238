// The CRC in the expected answer to a request belongs to the first PAD of the process. This needs
// a process whose first session is the test's, so it stands in a program of its own.

#include "tests/unit/session_fixture.h"

namespace {

TEST_F(SessionTest, TheCrcOfTheAnswerStaysThatOfTheFirstPad) {
    const QByteArray frame = QByteArray::fromHex("00");
    std::string response;
    bool answered = false;

    VEXAUsbConnector first(terminal(), VEXADbManager(), 1);
    (void)first.initializeConnection(answered);
    answer({"", "F140020000ED37"});
    EXPECT_TRUE(first.sendRequestFrame(frame, response));

    scripted_ports::reset();
    VEXAUsbConnector second(terminal(), VEXADbManager(), 2);
    (void)second.initializeConnection(answered);
    answer({"", "F240020000212A", "F240020000ED37"});
    EXPECT_FALSE(second.sendRequestFrame(frame, response));
    EXPECT_TRUE(second.sendRequestFrame(frame, response));
}

} // namespace
