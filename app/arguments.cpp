#include "app/arguments.h"

#include "app/command_line_load.h"
#include "app/log.h"
#include "app/run_mode.h"
#include "configuration/pad_number.h"
#include "db/database_file.h"

namespace {

constexpr std::size_t kHelpCount = 2; // counts include the program's path
constexpr std::size_t kAllCount = 4;
constexpr int kFirstPad = 1;
constexpr int kLastPad = 14;

int printResult(int code) {
    printOutcome("\nResult code : %d", code);
    return code;
}

void printUsage() {
    // The range reads 0 to 14 although 0 is refused; the text is known like this.
    printOutcome("\nTo use the program, type: VEXACharger arg1 arg2 [arg3]");
    printOutcome("\nwhere:");
    printOutcome("\n\targ1            : path to the database file (format .db)");
    printOutcome("\n\targ2            : name of the COM port (for example: COM6), or 'PCSC' ");
    printOutcome("\n\targ3 (optional) : PAD number of the terminal (in [0-14], 2 by default)");
    printOutcome("\nType: 'VEXACharger -?' for help\n");
}

int refuse(const char* message, int code) {
    printOutcome("\n%s\n", message);
    printUsage();
    return printResult(code);
}

int helpOrRefuse(const std::string& argument) {
    if (argument != "-?") {
        VEXALog(kLogError, "Two arguments are passed. Second argument : %s, not -?",
                argument.c_str());
        printOutcome("\nInvalid arguments");
        (void)printResult(kWrongArguments);
    }
    printUsage();
    return kWrongArguments;
}

int load(const std::string& database, const std::string& port, const std::string& pad) {
    printOutcome("\n\nParameters: ");
    printOutcome("\n\tDatabase file : %s", database.c_str());
    printOutcome("\n\tPort name : %s", port.c_str());
    printOutcome("\n\tPAD number : %s\n", pad.c_str());
    const int code = cmdExec(database, port, pad);
    printOutcome("\n");
    return printResult(code);
}

} // namespace

int analyzeArgs(std::vector<std::string> arguments) {
    const FunctionTrace trace("analyzeArgs");
    const std::size_t count = arguments.size();
    if (count < kHelpCount || count > kAllCount) {
        VEXALog(kLogError, "Invalid number of arguments");
        return refuse("Invalid number of arguments", kWrongArguments);
    }
    if (count == kHelpCount) {
        return helpOrRefuse(arguments[1]);
    }
    if (!canBeRead(arguments[1])) {
        return refuse("Database file does not exist", kDatabaseNotFound);
    }
    const std::string pad = count == kAllCount ? arguments[3] : "2";
    const int padNumber = leadingNumber(pad.c_str());
    if (padNumber < kFirstPad || padNumber > kLastPad) {
        VEXALog(kLogError, "Invalid PAD number, it must be between 1 and 14");
        return refuse("Invalid PAD number, it must be between 1 and 14", kWrongPad);
    }
    return load(arguments[1], arguments[2], pad);
}

void putInstructions() {
    const FunctionTrace trace("putInstructions");
    printUsage();
}
