#include "simulator/pcsc_daemon.h"

#include "simulator/child_process.h"
#include "simulator/descriptor.h"

#include <PCSC/winscard.h>
#include <algorithm>

#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace simulator {

const char* const kSystemDrivers = "/usr/lib/pcsc/drivers";

namespace {

constexpr char kDaemonFolder[] = "/run/pcscd";
constexpr char kSocket[] = "/run/pcscd/pcscd.comm";
constexpr char kDaemon[] = "/usr/sbin/pcscd"; // not on the path of ordinary users
constexpr char kConfigFolder[] = "/run/vexa-reader";
constexpr char kWordsFile[] = "/run/vexa-reader-words";
constexpr int kPatienceMs = 30000;

bool takesConnections() {
    const Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, kSocket, sizeof kSocket);
    return connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

/// Something happens to the socket's file whenever the daemon comes a step further.
bool waitForSocket(int folderWatch, int childSignal, std::string& error) {
    while (!takesConnections()) {
        pollfd events[] = {{folderWatch, POLLIN, 0}, {childSignal, POLLIN, 0}};
        if (poll(events, 2, kPatienceMs) <= 0) {
            error = "the PC/SC daemon does not come up";
            return false;
        }
        if (events[1].revents != 0) {
            error = "the PC/SC daemon has ended; --daemon-log says more";
            return false;
        }
        alignas(inotify_event) char buffer[sizeof(inotify_event) + NAME_MAX + 1];
        if (read(folderWatch, buffer, sizeof buffer) < 0) {
            error = "cannot watch the PC/SC daemon come up";
            return false;
        }
    }
    return true;
}

/// Takes a reader for ourselves as soon as its card has been found.
bool hold(SCARDCONTEXT context, const char* name) {
    SCARD_READERSTATE state{};
    state.szReader = name;
    while ((state.dwEventState & SCARD_STATE_PRESENT) == 0) {
        if (SCardGetStatusChange(context, kPatienceMs, &state, 1) != SCARD_S_SUCCESS) {
            return false;
        }
        state.dwCurrentState = state.dwEventState;
    }
    SCARDHANDLE card = 0;
    DWORD protocol = 0;
    return SCardConnect(context, name, SCARD_SHARE_EXCLUSIVE, SCARD_PROTOCOL_T0, &card,
                        &protocol) == SCARD_S_SUCCESS;
}

} // namespace

std::string driverFile(const std::string& calledAs) {
    std::error_code error;
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
    return std::filesystem::absolute(error ? calledAs : self.string()).parent_path() /
           "libvexa_terminal_ifd.so";
}

bool PcscDaemon::writeConfig(const std::vector<std::string>& words,
                             const ReaderOptions& options) const {
    std::error_code error;
    (void)std::filesystem::create_directory(kConfigFolder, error);
    (void)std::filesystem::create_directory(kDaemonFolder, error);
    std::ofstream wordFile(kWordsFile);
    for (const std::string& word : words) {
        wordFile << word << '\n';
    }
    std::ofstream config(std::string(kConfigFolder) + "/readers");
    for (std::size_t i = 0; i < options.readers.size(); ++i) {
        config << "FRIENDLYNAME \"" << options.readers[i].name << "\"\n"
               << "DEVICENAME " << kWordsFile << ':' << i << '\n'
               << "LIBPATH " << m_driver << '\n'
               << "CHANNELID " << i << "\n\n";
    }
    config.close();
    wordFile.close();
    return config.good() && wordFile.good();
}

bool PcscDaemon::start(const std::vector<std::string>& words, const ReaderOptions& options,
                       std::string& error) {
    sigset_t childEnds;
    (void)sigemptyset(&childEnds);
    (void)sigaddset(&childEnds, SIGCHLD);
    (void)sigprocmask(SIG_BLOCK, &childEnds, nullptr);
    const Descriptor childSignal(signalfd(-1, &childEnds, SFD_CLOEXEC));
    const Descriptor folderWatch(inotify_init1(IN_CLOEXEC));
    if (!writeConfig(words, options) ||
        inotify_add_watch(folderWatch.get(), kDaemonFolder, IN_CREATE | IN_ATTRIB) < 0) {
        error = "cannot write the configuration of the PC/SC daemon";
        return false;
    }
    // A socket that was handed to us is not meant for this daemon.
    (void)unsetenv("LISTEN_FDS");
    (void)unsetenv("LISTEN_PID");
    m_process = startCommand(
        {access(kDaemon, X_OK) == 0 ? kDaemon : "pcscd", "--foreground", "--config", kConfigFolder},
        options.daemonLog.c_str());
    return waitForSocket(folderWatch.get(), childSignal.get(), error);
}

PcscDaemon::~PcscDaemon() {
    endChild(m_process);
}

namespace {

/// The reader of this name that the daemon lists after so many others of the same name. It adds the
/// number of the reader and that of the slot: " 00 00".
/// \return null when there is none
const char* findReader(const std::vector<char>& names, const std::string& wanted,
                       std::ptrdiff_t position) {
    constexpr std::size_t kSuffixSize = 6;
    for (const char* name = names.data(); *name != '\0'; name += std::strlen(name) + 1) {
        const std::string listed = name;
        const bool isFirstSlot = listed.size() == wanted.size() + kSuffixSize &&
                                 listed.compare(0, wanted.size(), wanted) == 0 &&
                                 listed.compare(listed.size() - 3, 3, " 00") == 0;
        if (isFirstSlot && position-- == 0) {
            return name;
        }
    }
    return nullptr;
}

} // namespace

bool holdReaders(const std::vector<ReaderDescription>& readers, std::string& error) {
    std::vector<char> names;
    DWORD size = 0;
    SCARDCONTEXT context = 0;
    for (auto reader = readers.begin(); reader != readers.end(); ++reader) {
        if (!reader->held) {
            continue;
        }
        if (context == 0) {
            (void)SCardEstablishContext(SCARD_SCOPE_SYSTEM, nullptr, nullptr, &context);
            (void)SCardListReaders(context, nullptr, nullptr, &size);
            names.resize(size + 1);
            (void)SCardListReaders(context, nullptr, names.data(), &size);
        }
        const auto before =
            std::count_if(readers.begin(), reader, [&](const ReaderDescription& other) {
                return other.name == reader->name;
            });
        const char* name = findReader(names, reader->name, before);
        if (name == nullptr || !hold(context, name)) {
            error = "cannot hold " + reader->name;
            return false;
        }
    }
    return true;
}

} // namespace simulator
