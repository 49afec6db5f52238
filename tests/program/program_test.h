// What the whole-program tests share: the unchanged executable in a folder of its own, run against
// simulated terminals.
#pragma once

#include "tests/support/default_config.h"
#include "tests/support/files.h"
#include "tests/support/sample_database.h"

#include <QByteArray>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

/// What a run came to.
struct Outcome {
    int status = -1; ///< exit status; -1 when the program was killed or did not end
    QByteArray out;
    QByteArray err;
};

class ProgramTest : public testing::Test {
protected:
    ProgramTest();

    /// A path in the folder of the test, which every user may write.
    QString path(const QString& name) const { return m_folder.path() + "/" + name; }

    /// The configuration file beside the executable.
    QString configFile() const { return path("bin/config/VEXA_init.ini"); }

    /// Has the program start with this configuration file.
    void configure(const QByteArray& content);

    /// Has the program log into the folder "log".
    void switchLogOn();

    /// The environment of all runs: nothing of the tester's desktop reaches the program.
    QStringList environment() const;

    /// Runs a command line to its end, in that environment and the folder of the test.
    Outcome run(const QStringList& command);

    /// The same for one that may say something on standard error.
    Outcome runAndComplain(const QStringList& command);

    /// Runs the program alone.
    Outcome charger(const QStringList& arguments);

    /// Runs the program against one simulated terminal, or what the options say.
    Outcome chargerWithTerminal(const QStringList& arguments,
                                const QStringList& terminalOptions = {});

    /// The command line of chargerWithTerminal.
    QStringList commandWithTerminal(const QStringList& arguments,
                                    const QStringList& terminalOptions = {}) const;

    /// The command line of a shell that finds simulated terminals plugged in.
    QStringList shellWithTerminal(const QString& script,
                                  const QStringList& terminalOptions = {}) const;

    /// A piece of a shell script that waits until the terminal says something.
    static QString waitForTrace(const QString& text) {
        return "until grep -q '" + text + "' trace; do sleep 0.01; done; ";
    }

    /// A command line as a word of a shell script.
    static QString quoted(const QStringList& command) { return "'" + command.join("' '") + "'"; }

    /// The same command line as an ordinary user, for whom the rights of files count.
    static QStringList asOrdinaryUser(const QStringList& command);

    /// The head of a command line that may mount file systems of its own, unseen by others; empty
    /// where neither user namespaces nor root's rights are at hand.
    static QStringList withMountsOfItsOwn();

    /// A database of two concepts, of just this size, named "test.db".
    void makeTestDatabase(qint64 size);

    /// What the terminal has stored for a PAD.
    QByteArray stored(int pad = 2, int terminal = 0) const;
    bool storedNothing() const;

    /// The frames and answers as the terminal wrote them down, cut at 40 characters.
    QStringList frames() const;

    /// What the terminal has said so far, a line each.
    QStringList trace() const { return QString::fromUtf8(readFile(path("trace"))).split('\n'); }

    /// The executable of this test.
    QString executable() const { return path("bin/VEXACharger"); }

    /// Further environment of the runs, as NAME=value.
    QStringList m_environment;

private:
    QTemporaryDir m_folder;
};

/// The output of a load up to where the terminal is addressed.
QByteArray loadHead(const QByteArray& database, const QByteArray& port = "/dev/ttyACM0",
                    const QByteArray& pad = "2");

/// What a load prints once its port is opened, and what follows as it goes well.
inline const QByteArray kStarted = "\nLoading has been started";
inline const QByteArray kInitSucceeded = "\nCommunication initialization process succeeded";
inline const QByteArray kAllSent = "\nAll data frames have been sent. Sending ending frame ... ";

/// The last two lines of a run.
QByteArray resultLines(int code);

/// The usage text.
extern const char* const kUsage;

constexpr qint64 kSampleSize = 245760; ///< 8 full blocks; the terminal has 4.7 s for its last word
