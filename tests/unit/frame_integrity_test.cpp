#include "loader/frame_integrity.h"

#include <gtest/gtest.h>

namespace {

TEST(FrameIntegrityTest, NothingGivesTwoZeroBytes) {
    EXPECT_EQ(calcCheckSum("", 0).toHex(), "0000");
    EXPECT_EQ(calcCheckSum("123", -1).toHex(), "0000");
}

TEST(FrameIntegrityTest, TheNineDigitsGiveTheCatalogueValueLowByteFirst) {
    EXPECT_EQ(calcCheckSum("123456789", 9).toHex(), "8921");
}

TEST(FrameIntegrityTest, OneByteGivesItsTableEntry) {
    // From the published table of the reflected polynomial 0x8408.
    EXPECT_EQ(update_crc_kermit(0, '\x01'), 0x1189);
    EXPECT_EQ(update_crc_kermit(0, static_cast<char>(0x80)), 0x8408);
    EXPECT_EQ(update_crc_kermit(0, static_cast<char>(0xFF)), 0x0F78);
}

TEST(FrameIntegrityTest, ASignedByteCountsAsTheSameUnsignedOne) {
    for (int value = 0x80; value <= 0xFF; ++value) {
        const char c = static_cast<char>(value);
        // The low byte of the register meets the byte: 0 XOR it is the place in the table.
        EXPECT_EQ(update_crc_kermit(0, c),
                  update_crc_kermit(static_cast<unsigned short>(value), '\0'))
            << value;
    }
    // F2 40 02 00 00, worked by hand: 21 2A.
    EXPECT_EQ(calcCheckSum("\xF2\x40\x02\x00\x00", 5).toHex(), "212a");
}

TEST(FrameIntegrityTest, IntegersAreAppendedMostSignificantByteFirst) {
    QByteArray frame("\x7F");
    frame << static_cast<unsigned char>(0xAB) << static_cast<unsigned short>(0x1234) << 0x01020304U;
    EXPECT_EQ(frame.toHex(), "7fab123401020304");
}

} // namespace
