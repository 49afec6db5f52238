#include "simulator/request_frame.h"

namespace simulator {

namespace {

constexpr std::size_t kLengthOffset = 2;
constexpr std::size_t kConstantsOffset = 3;
constexpr std::size_t kConceptLengthOffset = 7;
constexpr std::size_t kSizeTagOffset = 8;
constexpr std::size_t kSizeCountOffset = 9;
constexpr std::size_t kCrcSize = 2;
constexpr std::uint8_t kSizeTag = 0x80;
constexpr std::uint8_t kFirstConceptTag = 0x81;
constexpr std::uint8_t kLastConceptTag = 0x8F;

const Bytes kConstants = {0x05, 0x01, 0x01, 0x60};

/// CRC-16/KERMIT, bit by bit.
std::uint16_t crcOf(const Bytes& bytes) {
    std::uint16_t crc = 0;
    for (const std::uint8_t byte : bytes) {
        crc = static_cast<std::uint16_t>(crc ^ byte);
        for (int bit = 0; bit < 8; ++bit) {
            crc = static_cast<std::uint16_t>((crc & 1) != 0 ? (crc >> 1) ^ 0x8408 : crc >> 1);
        }
    }
    return crc;
}

Bytes slice(const Bytes& frame, std::size_t begin, std::size_t end) {
    return {frame.begin() + static_cast<std::ptrdiff_t>(begin),
            frame.begin() + static_cast<std::ptrdiff_t>(end)};
}

std::string mismatch(const std::string& what, const Bytes& got, const Bytes& expected) {
    return what + " " + hexadecimal(got) + ", expected " + hexadecimal(expected);
}

std::string objectionToConcepts(const Bytes& concepts) {
    for (std::size_t i = 0; i < concepts.size(); i += 2U + concepts[i + 1]) {
        if (concepts[i] < kFirstConceptTag || concepts[i] > kLastConceptTag) {
            return "no concept begins with " + hexadecimal({concepts[i]});
        }
        if (i + 2 > concepts.size() || i + 2 + concepts[i + 1] > concepts.size()) {
            return "the last concept goes beyond the concept block";
        }
    }
    return {};
}

/// Text as it is but for what would break a line of the trace.
std::string printable(const Bytes& text) {
    std::string result;
    for (const std::uint8_t byte : text) {
        constexpr std::uint8_t kFirstPrintable = 0x20;
        constexpr std::uint8_t kDelete = 0x7F;
        const bool isControl = byte < kFirstPrintable || byte == kDelete;
        result += isControl ? "\\x" + hexadecimal({byte}) : std::string(1, static_cast<char>(byte));
    }
    return result;
}

Bytes conceptsOf(const Bytes& frame) {
    return slice(frame, kRequestHeaderSize + sizeCount(frame.data()), frame.size() - kCrcSize);
}

} // namespace

Bytes withCrc(Bytes bytes) {
    const std::uint16_t crc = crcOf(bytes);
    bytes.push_back(static_cast<std::uint8_t>(crc & 0xFF));
    bytes.push_back(static_cast<std::uint8_t>(crc >> 8));
    return bytes;
}

std::size_t sizeCount(const std::uint8_t* header) {
    return header[kSizeCountOffset];
}

std::size_t requestFrameSize(const std::uint8_t* header) {
    return kRequestHeaderSize + sizeCount(header) + header[kConceptLengthOffset] + kCrcSize;
}

std::string objectionToRequest(const Bytes& frame) {
    const Bytes expected = withCrc(slice(frame, 0, frame.size() - kCrcSize));
    if (frame != expected) {
        return mismatch("CRC is", slice(frame, frame.size() - kCrcSize, frame.size()),
                        slice(expected, frame.size() - kCrcSize, frame.size()));
    }
    const auto length =
        static_cast<std::uint8_t>((frame.size() - kCrcSize - kConstantsOffset) & 0xFF);
    if (frame[kLengthOffset] != length) {
        return mismatch("length byte is", {frame[kLengthOffset]}, {length});
    }
    const Bytes constants = slice(frame, kConstantsOffset, kConceptLengthOffset);
    if (constants != kConstants) {
        return mismatch("bytes 3 to 6 are", constants, kConstants);
    }
    if (frame[kSizeTagOffset] != kSizeTag) {
        return mismatch("byte 8 is", {frame[kSizeTagOffset]}, {kSizeTag});
    }
    if (sizeCount(frame.data()) > 0 && frame[kRequestHeaderSize] == 0) {
        return "the first size byte is 0";
    }
    return objectionToConcepts(conceptsOf(frame));
}

std::size_t announcedSize(const Bytes& frame) {
    std::size_t size = 0;
    for (std::size_t i = 0; i < sizeCount(frame.data()); ++i) {
        size = (size << 8) + frame[kRequestHeaderSize + i];
    }
    return size;
}

std::string conceptText(const Bytes& frame) {
    const Bytes concepts = conceptsOf(frame);
    std::string text;
    for (std::size_t i = 0; i < concepts.size(); i += 2U + concepts[i + 1]) {
        text += ", concept " + std::to_string(concepts[i] - kSizeTag) + " = \"" +
                printable(slice(concepts, i + 2, i + 2 + concepts[i + 1])) + "\"";
    }
    return text;
}

} // namespace simulator
