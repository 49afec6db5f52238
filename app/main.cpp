// Start-up order and choice of mode.

#include "app/arguments.h"
#include "app/display.h"
#include "app/run_mode.h"
#include "app/toolkit_messages.h"
#include "app/window_mode.h"
#include "configuration/config.h"
#include "configuration/config_reader.h"

#include <QApplication>
#include <QLocale>
#include <QTextCodec>

#include <csignal>
#include <string>
#include <vector>

namespace {

/// The arguments of the application object, which uses them for as long as it lives. The words of
/// the command line are not among them: the toolkit would take out those that it knows.
struct ApplicationArguments {
    ApplicationArguments(const char* program, bool inCmdMode) : words{program} {
        if (inCmdMode) {
            words.insert(words.end(), {"-platform", kCommandLinePlatform});
        }
        for (std::string& word : words) {
            values.push_back(word.data());
        }
        count = static_cast<int>(values.size());
        values.push_back(nullptr);
    }

    std::vector<std::string> words;
    std::vector<char*> values;
    int count = 0;
};

int runCommandLine(const std::vector<std::string>& arguments) {
    const int result = analyzeArgs(arguments);
    printOutcome("\nReturned value : %d", result);
    return result;
}

} // namespace

int main(int argc, char* argv[]) {
    // A reader of our output that goes away must not end a load half-way.
    (void)std::signal(SIGPIPE, SIG_IGN);
    quietToolkit();
    // File names are UTF-8, whatever the locale says: operators work over ssh and from scripts.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));

    const bool inCmdMode = argc != 1;
    if (!inCmdMode) {
        prepareDisplay();
    }
    ApplicationArguments applicationArguments(argc > 0 ? argv[0] : "VEXACharger", inCmdMode);
    const QApplication application(applicationArguments.count, applicationArguments.values.data());
    if (!inCmdMode) {
        adaptToDisplay();
    }
    const QString localeName = QLocale::system().name();
    g_inCmdMode = inCmdMode;
    g_configParams = VEXAConfig{};
    config_from_file(&g_configParams);
    printConfig(&g_configParams);
    if (inCmdMode) {
        return runCommandLine({argv, argv + argc});
    }
    return runWindow(localeName);
}
