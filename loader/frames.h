// The frames of the loading protocol as pure functions of bytes. The code that sends them stands
// apart, in usb_connector. docs/protocol.md works an example of each.
#pragma once

#include <QByteArray>

#include <cstdint>
#include <string>

/// Most bytes of the database file in one data frame.
constexpr int kLargestBlock = 30720;

/// First byte of the initialisation and request frames.
std::uint8_t requestAddressOf(int pad);

/// First byte of the terminal's answers to them.
std::uint8_t replyAddressOf(int pad);

/// The frame that wakes the terminal, 9 bytes.
QByteArray initFrame(std::uint8_t requestAddress);

/// The answer that a terminal gives to it, 9 bytes.
QByteArray initAnswer(std::uint8_t replyAddress);

/// The answer by which a terminal accepts a request, 7 bytes.
/// \param crcAddress the address byte that the answer's CRC is taken over
QByteArray requestAnswer(std::uint8_t replyAddress, std::uint8_t crcAddress);

/// The size of a file, most significant byte first, in as many bytes as it needs: none for 0.
QByteArray sizeBytes(std::int32_t size);

/// One entry of a request's concept block. A value longer than 255 bytes loses the high bits of
/// its length.
QByteArray conceptEntry(int concept, const std::string& value);

/// The frame that announces a load, CRC included. The two length bytes wrap at 256.
QByteArray requestFrame(std::uint8_t requestAddress, const QByteArray& fileSize,
                        const QByteArray& conceptBlock);

/// The frame that carries one block of the database file.
QByteArray dataFrame(const QByteArray& block);

/// The frame that ends a load, 3 bytes.
QByteArray endingFrame();

/// The answer by which a terminal acknowledges it, 3 bytes.
QByteArray endingAnswer();
