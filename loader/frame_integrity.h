// The check value that guards frames, and the packing of integers into them. Pure functions, free
// of threads and failures.
#pragma once

#include <QByteArray>

/// Takes one byte into a CRC-16/KERMIT (catalogue of parametrised CRC algorithms: polynomial
/// 0x1021 reflected, initial value 0, no final XOR; check value of "123456789": 0x2189).
/// \param c only its 8 bits count, whatever its sign
unsigned short update_crc_kermit(unsigned short crc, char c);

/// The CRC-16/KERMIT of a block as it goes on the wire: low byte first, unlike all other integers.
/// \param length in bytes; 0 or less gives the CRC of nothing, 00 00
QByteArray calcCheckSum(char const* data, int length);

// Append an integer, most significant byte first.
QByteArray& operator<<(QByteArray& a, unsigned char v);
QByteArray& operator<<(QByteArray& a, unsigned short v);
QByteArray& operator<<(QByteArray& a, unsigned int v);
