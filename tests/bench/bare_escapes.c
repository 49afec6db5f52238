/* The yardstick of a load through a reader: the same escape exchanges, by nothing but PC/SC.
 *
 * bare-escapes DATABASE READER
 *   Loads the file, of at most 30717 bytes, into PAD 2 of the terminal. No check, no log, no
 * progress, no concepts. */

#include <PCSC/winscard.h>
#include <stdio.h>
#include <string.h>

enum { LARGEST = 30717, HEADER = 3 };

static SCARDHANDLE card;

/* Sends a command, with its prefix, and looks at the first byte behind the answer's head. */
static int exchange(const unsigned char* command, size_t size, unsigned char first) {
    unsigned char answer[512] = {0};
    DWORD returned = 0;
    return SCardControl(card, 0x42000000, command, size, answer, sizeof answer, &returned) ==
               SCARD_S_SUCCESS &&
           returned > 2 && answer[2] == first;
}

static size_t request_frame(unsigned char* frame, size_t size) {
    const unsigned char head[] = {0x2F, 0x40, 0x09, 0x05, 0x01, 0x01, 0x60, 0x00, 0x80, 0x02};
    size_t length = sizeof head;
    unsigned int crc = 0;
    memcpy(frame, head, sizeof head);
    frame[length++] = (unsigned char)(size >> 8);
    frame[length++] = (unsigned char)(size & 0xFF);
    for (size_t i = 0; i < length; ++i) {
        crc ^= frame[i];
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc & 1) != 0 ? (crc >> 1) ^ 0x8408 : crc >> 1;
        }
    }
    frame[length++] = (unsigned char)(crc & 0xFF);
    frame[length++] = (unsigned char)(crc >> 8);
    return length;
}

static int load(const char* file) {
    static unsigned char data[1 + HEADER + LARGEST] = {0x11, 0x01};
    const unsigned char init[] = {0x11, 0x2F, 0xC0, 0x04, 0x00, 0x78, 0x01, 0x2C, 0xB8, 0xE4};
    const unsigned char end[] = {0x11, 0x02, 0x00, 0x00};
    unsigned char request[32] = {0x11};
    FILE* stream = fopen(file, "rb");
    size_t size = 0;
    if (stream == NULL) {
        return 0;
    }
    size = fread(data + 1 + HEADER, 1, LARGEST, stream);
    (void)fclose(stream);
    data[2] = (unsigned char)(size >> 8);
    data[3] = (unsigned char)(size & 0xFF);
    return exchange(init, sizeof init, 0xF2) &&
           exchange(request, 1 + request_frame(request + 1, size), 0xF2) &&
           exchange(data, 1 + HEADER + size, 0x05) && exchange(end, sizeof end, 0x05);
}

int main(int argc, char* argv[]) {
    SCARDCONTEXT context = 0;
    DWORD protocol = 0;
    int loaded = 0;
    if (argc == 3 &&
        SCardEstablishContext(SCARD_SCOPE_SYSTEM, NULL, NULL, &context) == SCARD_S_SUCCESS &&
        SCardConnect(context, argv[2], SCARD_SHARE_DIRECT, SCARD_PROTOCOL_T0, &card, &protocol) ==
            SCARD_S_SUCCESS) {
        loaded = load(argv[1]);
        (void)SCardDisconnect(card, SCARD_LEAVE_CARD);
    }
    (void)SCardReleaseContext(context);
    if (!loaded) {
        (void)fputs("bare-escapes: the load failed\n", stderr);
    }
    return loaded ? 0 : 1;
}
