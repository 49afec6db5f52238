// Stands in for the PC/SC library: readers as a test describes them, and every call written down.
#pragma once

#include <PCSC/winscard.h>

#include <functional>
#include <string>
#include <vector>

namespace scripted_pcsc {

using Bytes = std::vector<unsigned char>;

/// What a reader answers to a question about an attribute.
struct Attribute {
    LONG result = SCARD_S_SUCCESS;
    std::string bytes;
    DWORD announced = 0; ///< the length that is announced when it is not 0
};

struct Reader {
    std::string name;
    LONG connection = SCARD_S_SUCCESS;
    Attribute vendor = {SCARD_S_SUCCESS, "Halvorin"};
    Attribute serial = {SCARD_S_SUCCESS, "VT-0001"};
};

/// One control exchange.
struct Control {
    SCARDHANDLE card = 0;
    DWORD code = 0;
    Bytes sent;
    DWORD capacity = 0;
    bool inPlace = false; ///< the answer goes where the command lies
};

/// How a control exchange ends.
struct Answer {
    LONG result = SCARD_S_SUCCESS;
    Bytes bytes;
    DWORD announced = 0; ///< the count that is announced when it is not 0
};

extern std::vector<Reader> readers;
extern LONG establishing;             ///< result of asking for a context
extern LONG listing;                  ///< result of listing the readers
extern std::vector<Control> controls; ///< the control exchanges so far
extern std::vector<Answer> answers;   ///< those to come; when they run out, exchanges fail
extern bool terminatesList;           ///< false: the list of names lacks both terminators
/// All other calls, for instance "connect Reader share 3 protocol 1", in order.
extern std::vector<std::string> calls;

void reset();

} // namespace scripted_pcsc
