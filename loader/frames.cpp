#include "loader/frames.h"

#include "loader/frame_integrity.h"

namespace {

constexpr unsigned char kConceptBase = 0x80;
constexpr int kFrameLengthOffset = 2;
constexpr int kBlockLengthOffset = 7;
constexpr unsigned char kDataFrameType = 0x01;

// The last two bytes are the CRC of the seven before them for PAD 2. The terminal expects just
// these for every PAD: they must not be computed.
constexpr unsigned char kInitBody[] = {0xC0, 0x04, 0x00, 0x78, 0x01, 0x2C, 0xB8, 0xE4};
constexpr unsigned char kInitAnswerBody[] = {0xE0, 0x04, 0x00, 0x78, 0x01, 0x2C, 0x45, 0xBB};
constexpr unsigned char kRequestAnswerBody[] = {0x40, 0x02, 0x00, 0x00};
constexpr unsigned char kRequestHeader[] = {0x40, 0x00, 0x05, 0x01, 0x01, 0x60, 0x00, 0x80};
constexpr unsigned char kEndingFrame[] = {0x02, 0x00, 0x00};
constexpr unsigned char kEndingAnswer[] = {0x05, 0x00, 0x00};

template<std::size_t size> QByteArray bytes(const unsigned char (&values)[size]) {
    QByteArray result;
    for (const unsigned char value : values) {
        result << value;
    }
    return result;
}

QByteArray checkSumOf(const QByteArray& frame) {
    return calcCheckSum(frame.constData(), frame.size());
}

} // namespace

std::uint8_t requestAddressOf(int pad) {
    return static_cast<std::uint8_t>((static_cast<unsigned int>(pad) << 4U) | 0x0FU);
}

std::uint8_t replyAddressOf(int pad) {
    return static_cast<std::uint8_t>(static_cast<unsigned int>(pad) + 0xF0U);
}

QByteArray initFrame(std::uint8_t requestAddress) {
    QByteArray frame;
    return (frame << requestAddress) + bytes(kInitBody);
}

QByteArray initAnswer(std::uint8_t replyAddress) {
    QByteArray answer;
    return (answer << replyAddress) + bytes(kInitAnswerBody);
}

QByteArray requestAnswer(std::uint8_t replyAddress, std::uint8_t crcAddress) {
    QByteArray answer;
    QByteArray checkedBlock;
    return (answer << replyAddress) + bytes(kRequestAnswerBody) +
           checkSumOf((checkedBlock << crcAddress) + bytes(kRequestAnswerBody));
}

QByteArray sizeBytes(std::int32_t size) {
    QByteArray result;
    for (auto rest = static_cast<std::uint32_t>(size); rest != 0; rest >>= 8U) {
        result.prepend(static_cast<char>(rest & 0xFFU));
    }
    return result;
}

QByteArray conceptEntry(int concept, const std::string& value) {
    QByteArray entry;
    entry << static_cast<unsigned char>(kConceptBase + static_cast<unsigned int>(concept))
          << static_cast<unsigned char>(value.size() & 0xFFU);
    return entry.append(value.data(), static_cast<int>(value.size()));
}

QByteArray requestFrame(std::uint8_t requestAddress, const QByteArray& fileSize,
                        const QByteArray& conceptBlock) {
    QByteArray frame;
    frame << requestAddress;
    frame += bytes(kRequestHeader);
    frame << static_cast<unsigned char>(fileSize.size());
    frame += fileSize + conceptBlock;
    frame[kFrameLengthOffset] = static_cast<char>((frame.size() - 3) & 0xFF);
    frame[kBlockLengthOffset] = static_cast<char>(conceptBlock.size() & 0xFF);
    return frame + checkSumOf(frame);
}

QByteArray dataFrame(const QByteArray& block) {
    QByteArray frame;
    frame.reserve(3 + block.size());
    frame << kDataFrameType << static_cast<unsigned short>(block.size());
    return frame.append(block);
}

QByteArray endingFrame() {
    return bytes(kEndingFrame);
}

QByteArray endingAnswer() {
    return bytes(kEndingAnswer);
}
