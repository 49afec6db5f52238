// The yardstick of the benchmark: the same frames as a load sends, by nothing but read and write.
//
// bare-loop DATABASE PORT
//   Loads the file into PAD 2 of the terminal. No check, no log, no progress, no concepts.

#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kBlock = 30720;

bool writeAll(int line, const std::uint8_t* bytes, std::size_t size) {
    while (size > 0) {
        const ssize_t written = write(line, bytes, size);
        if (written <= 0) {
            return false;
        }
        bytes += written;
        size -= static_cast<std::size_t>(written);
    }
    return true;
}

/// Sends a frame and reads an answer of a known length.
bool exchange(int line, const std::uint8_t* frame, std::size_t size, std::size_t answerSize,
              std::uint8_t firstByte) {
    std::uint8_t answer[16];
    if (!writeAll(line, frame, size)) {
        return false;
    }
    for (std::size_t got = 0; got < answerSize;) {
        const ssize_t received = read(line, answer + got, answerSize - got);
        if (received <= 0) {
            return false;
        }
        got += static_cast<std::size_t>(received);
    }
    return answer[0] == firstByte;
}

Bytes requestFrame(std::uint32_t size) {
    Bytes frame = {0x2F, 0x40, 11, 0x05, 0x01, 0x01, 0x60, 0x00, 0x80, 4};
    for (int shift = 24; shift >= 0; shift -= 8) {
        frame.push_back(static_cast<std::uint8_t>(size >> shift));
    }
    while (frame[9] > 0 && frame[10] == 0) {
        frame.erase(frame.begin() + 10);
        --frame[9];
        --frame[2];
    }
    std::uint16_t crc = 0;
    for (const std::uint8_t byte : frame) {
        crc = static_cast<std::uint16_t>(crc ^ byte);
        for (int bit = 0; bit < 8; ++bit) {
            crc = static_cast<std::uint16_t>((crc & 1) != 0 ? (crc >> 1) ^ 0x8408 : crc >> 1);
        }
    }
    frame.push_back(static_cast<std::uint8_t>(crc & 0xFF));
    frame.push_back(static_cast<std::uint8_t>(crc >> 8));
    return frame;
}

bool load(int file, int line) {
    struct stat status {};
    termios settings{};
    if (fstat(file, &status) != 0 || tcgetattr(line, &settings) != 0) {
        return false;
    }
    cfmakeraw(&settings);
    const std::uint8_t init[] = {0x2F, 0xC0, 0x04, 0x00, 0x78, 0x01, 0x2C, 0xB8, 0xE4};
    const Bytes request = requestFrame(static_cast<std::uint32_t>(status.st_size));
    if (tcsetattr(line, TCSAFLUSH, &settings) != 0 || !exchange(line, init, sizeof init, 9, 0xF2) ||
        !exchange(line, request.data(), request.size(), 7, 0xF2)) {
        return false;
    }
    static std::uint8_t frame[3 + kBlock] = {0x01};
    for (;;) {
        const ssize_t size = read(file, frame + 3, kBlock);
        if (size <= 0) {
            break;
        }
        frame[1] = static_cast<std::uint8_t>(size >> 8);
        frame[2] = static_cast<std::uint8_t>(size & 0xFF);
        if (!exchange(line, frame, 3 + static_cast<std::size_t>(size), 1, 0x05)) {
            return false;
        }
    }
    const std::uint8_t end[] = {0x02, 0x00, 0x00};
    return exchange(line, end, sizeof end, 3, 0x05);
}

} // namespace

int main(int argc, char* argv[]) {
    const int file = argc == 3 ? open(argv[1], O_RDONLY) : -1;
    const int line = file < 0 ? -1 : open(argv[2], O_RDWR | O_NOCTTY);
    if (line < 0 || !load(file, line)) {
        (void)std::fputs("bare-loop: the load failed\n", stderr);
        return 1;
    }
    return 0;
}
