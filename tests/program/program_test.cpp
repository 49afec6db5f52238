#include "tests/program/program_test.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>

#include <sys/stat.h>
#include <unistd.h>

const char* const kUsage = "\nTo use the program, type: VEXACharger arg1 arg2 [arg3]"
                           "\nwhere:"
                           "\n\targ1            : path to the database file (format .db)"
                           "\n\targ2            : name of the COM port (for example: COM6), or "
                           "'PCSC' "
                           "\n\targ3 (optional) : PAD number of the terminal (in [0-14], 2 by "
                           "default)"
                           "\nType: 'VEXACharger -?' for help\n";

QByteArray loadHead(const QByteArray& database, const QByteArray& port, const QByteArray& pad) {
    return "\n\nParameters: \n\tDatabase file : " + database + "\n\tPort name : " + port +
           "\n\tPAD number : " + pad +
           "\n\nWelcome to VEXA Loader ! \n\nList of devices has been obtained";
}

QByteArray resultLines(int code) {
    const QByteArray number = QByteArray::number(code);
    return "\nResult code : " + number + "\nReturned value : " + number;
}

ProgramTest::ProgramTest() {
    const mode_t everyone = 0777;
    (void)chmod(m_folder.path().toUtf8().constData(), everyone);
    for (const char* folder : {"bin", "home"}) {
        (void)QDir().mkdir(path(folder));
        (void)chmod(path(folder).toUtf8().constData(), everyone);
    }
    if (link(VEXA_EXECUTABLE, executable().toUtf8().constData()) != 0) {
        EXPECT_TRUE(QFile::copy(VEXA_EXECUTABLE, executable()));
    }
}

void ProgramTest::configure(const QByteArray& content) {
    ASSERT_TRUE(QDir().mkpath(path("bin/config")));
    ASSERT_TRUE(writeFile(configFile(), content));
}

void ProgramTest::switchLogOn() {
    configure(defaultConfig()
                  .replace("&LogOption=0", "&LogOption=1")
                  .replace("&LogPath=.", "&LogPath=" + path("log").toUtf8()));
}

QStringList ProgramTest::environment() const {
    QStringList variables = {"HOME=" + path("home"), "LANG=C", "PATH=/usr/bin:/bin:/usr/sbin:/sbin",
                             "TMPDIR=" + path("")};
    for (const char* name :
         {"ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS", "LLVM_PROFILE_FILE"}) {
        if (qEnvironmentVariableIsSet(name)) {
            variables << QString(name) + "=" + qEnvironmentVariable(name);
        }
    }
    return variables + m_environment;
}

Outcome ProgramTest::runAndComplain(const QStringList& command) {
    constexpr int kPatienceMs = 100000;
    QProcess process;
    process.setWorkingDirectory(path(""));
    process.setEnvironment(environment());
    process.start(command.first(), command.mid(1));
    process.closeWriteChannel();
    Outcome outcome;
    if (process.waitForFinished(kPatienceMs) && process.exitStatus() == QProcess::NormalExit) {
        outcome.status = process.exitCode();
    }
    outcome.out = process.readAllStandardOutput();
    outcome.err = process.readAllStandardError();
    return outcome;
}

Outcome ProgramTest::run(const QStringList& command) {
    Outcome outcome = runAndComplain(command);
    EXPECT_EQ(outcome.err, "") << "on standard error";
    return outcome;
}

Outcome ProgramTest::charger(const QStringList& arguments) {
    return run(QStringList(executable()) + arguments);
}

QStringList ProgramTest::commandWithTerminal(const QStringList& arguments,
                                             const QStringList& terminalOptions) const {
    return QStringList({VEXA_TERMINAL, "--store", path("store"), "--frames", path("frames"),
                        "--trace", path("trace")}) +
           terminalOptions + QStringList({"--", executable()}) + arguments;
}

QStringList ProgramTest::shellWithTerminal(const QString& script,
                                           const QStringList& terminalOptions) const {
    QStringList command = commandWithTerminal({}, terminalOptions);
    command.removeLast();
    return command + QStringList({"sh", "-c", script});
}

Outcome ProgramTest::chargerWithTerminal(const QStringList& arguments,
                                         const QStringList& terminalOptions) {
    return run(commandWithTerminal(arguments, terminalOptions));
}

QStringList ProgramTest::asOrdinaryUser(const QStringList& command) {
    return geteuid() != 0
               ? command
               : QStringList({"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"}) +
                     command;
}

QStringList ProgramTest::withMountsOfItsOwn() {
    for (const char* options : {"-rm", "-m"}) {
        if (QProcess::execute("sh", {"-c", QString("unshare %1 true 2>/dev/null").arg(options)}) ==
            0) {
            return {"unshare", options};
        }
    }
    return {};
}

void ProgramTest::makeTestDatabase(qint64 size) {
    QStringList statements = twoConcepts();
    statements.prepend("PRAGMA page_size=512");
    ASSERT_TRUE(makeDatabase(path("test.db"), statements, size));
}

QByteArray ProgramTest::stored(int pad, int terminal) const {
    return readFile(path("store") + QString::asprintf("/ttyACM%d/pad-%02d.db", terminal, pad));
}

bool ProgramTest::storedNothing() const {
    return QDir(path("store/ttyACM0")).entryList(QDir::Files).isEmpty();
}

QStringList ProgramTest::frames() const {
    constexpr int kShown = 40;
    QStringList lines;
    for (const QByteArray& line : readFile(path("frames")).split('\n')) {
        lines << QString::fromLatin1(line.left(kShown));
    }
    lines.removeLast();
    return lines;
}
