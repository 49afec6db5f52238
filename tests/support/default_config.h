// The configuration file as the program makes it, for the vendor ID that it was built for.
#pragma once

#include "tests/support/files.h"

/// A text of the tests' data, which is written for the usual vendor ID.
inline QByteArray withVendorId(QByteArray text) {
    return text.replace("f055", VEXA_VENDOR_ID);
}

inline QByteArray defaultConfig() {
    return withVendorId(readFile(VEXA_TEST_DATA "/VEXA_init.ini"));
}
