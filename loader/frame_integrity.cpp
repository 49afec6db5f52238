#include "loader/frame_integrity.h"

#include <array>
#include <cstddef>

namespace {

using CrcTable = std::array<unsigned short, 256>;

constexpr unsigned int kByteBits = 8;
constexpr unsigned int kByteMask = 0xFF;

constexpr CrcTable makeCrcTable() {
    constexpr unsigned int kReflectedPolynomial = 0x8408;
    CrcTable table{};
    for (std::size_t i = 0; i < table.size(); ++i) {
        auto value = static_cast<unsigned int>(i);
        for (unsigned int bit = 0; bit < kByteBits; ++bit) {
            value = (value & 1U) != 0 ? (value >> 1U) ^ kReflectedPolynomial : value >> 1U;
        }
        table[i] = static_cast<unsigned short>(value);
    }
    return table;
}

constexpr CrcTable kCrcTable = makeCrcTable();

} // namespace

unsigned short update_crc_kermit(unsigned short crc, char c) {
    const unsigned int low = (crc ^ static_cast<unsigned char>(c)) & kByteMask;
    return static_cast<unsigned short>((crc >> kByteBits) ^ kCrcTable[low]);
}

QByteArray calcCheckSum(char const* data, int length) {
    unsigned short crc = 0;
    for (int i = 0; i < length; ++i) {
        crc = update_crc_kermit(crc, data[i]);
    }
    QByteArray wire;
    return wire << static_cast<unsigned char>(crc & kByteMask)
                << static_cast<unsigned char>(crc >> kByteBits);
}

QByteArray& operator<<(QByteArray& a, unsigned char v) {
    return a.append(static_cast<char>(v));
}

QByteArray& operator<<(QByteArray& a, unsigned short v) {
    return a << static_cast<unsigned char>(v >> kByteBits)
             << static_cast<unsigned char>(v & kByteMask);
}

QByteArray& operator<<(QByteArray& a, unsigned int v) {
    constexpr unsigned int kShortBits = 16;
    constexpr unsigned int kShortMask = 0xFFFF;
    return a << static_cast<unsigned short>(v >> kShortBits)
             << static_cast<unsigned short>(v & kShortMask);
}
