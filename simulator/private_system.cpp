#include "simulator/private_system.h"

#include "simulator/descriptor.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace simulator {

namespace {

constexpr char kUsersFolder[] = "/run/user";
constexpr mode_t kFolderMode = 0755;

bool write(const char* file, const std::string& text) {
    const Descriptor descriptor(open(file, O_WRONLY | O_CLOEXEC));
    return ::write(descriptor.get(), text.data(), text.size()) == static_cast<ssize_t>(text.size());
}

bool failed(const char* what, std::string& error) {
    error = std::string(what) + ": " + std::strerror(errno);
    return false;
}

/// Leaves a changed root for the one above it. Only for a process with mounts of its own.
bool goToTopRoot() {
    // The working folder stays above a root that lies below it, and may then climb.
    constexpr int kDeepest = 256;
    bool done = chdir("/") == 0 && chroot("/proc") == 0;
    for (int i = 0; done && i < kDeepest; ++i) {
        done = chdir("..") == 0;
    }
    return done && chroot(".") == 0;
}

/// From now on no mount of ours is seen by others. In a changed root, which need not be the root of
/// a mount, this has to be said at the top.
bool makeMountsPrivate() {
    if (mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0) {
        return true;
    }
    const Descriptor root(open("/", O_PATH | O_DIRECTORY | O_CLOEXEC));
    const Descriptor folder(open(".", O_PATH | O_DIRECTORY | O_CLOEXEC));
    const bool isPrivate =
        goToTopRoot() && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
    return fchdir(root.get()) == 0 && chroot(".") == 0 && fchdir(folder.get()) == 0 && isPrivate;
}

} // namespace

pid_t PrivateSystem::fork(std::string& error) {
    constexpr int kOwn = CLONE_NEWNS | CLONE_NEWPID | SIGCHLD;
    m_user = std::to_string(geteuid());
    m_group = std::to_string(getegid());
    long child = syscall(SYS_clone, kOwn, nullptr, nullptr, nullptr, nullptr);
    if (child < 0) {
        m_hasUserNamespace = true;
        child = syscall(SYS_clone, kOwn | CLONE_NEWUSER, nullptr, nullptr, nullptr, nullptr);
    }
    if (child < 0) {
        (void)failed("neither root nor allowed to use user namespaces", error);
    }
    return static_cast<pid_t>(child);
}

bool PrivateSystem::enter(const char* hiddenFolder, std::string& error) const {
    (void)prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (m_hasUserNamespace && (!write("/proc/self/setgroups", "deny") ||
                               !write("/proc/self/uid_map", "0 " + m_user + " 1") ||
                               !write("/proc/self/gid_map", "0 " + m_group + " 1"))) {
        return failed("cannot become root of a user namespace", error);
    }
    if (!makeMountsPrivate()) {
        return failed("cannot make the mounts private", error);
    }
    const int usersFolder = open(kUsersFolder, O_PATH | O_CLOEXEC);
    if (mount("tmpfs", "/run", "tmpfs", MS_NOSUID | MS_NODEV, "mode=755") != 0) {
        return failed("cannot mount an empty /run", error);
    }
    if (usersFolder >= 0) {
        // A window needs what the desktop keeps there for the user.
        const std::string users = "/proc/self/fd/" + std::to_string(usersFolder);
        (void)mkdir(kUsersFolder, kFolderMode);
        (void)mount(users.c_str(), kUsersFolder, nullptr, MS_BIND | MS_REC, nullptr);
        (void)close(usersFolder);
    }
    // Programs find themselves by the common /proc as well, where an own one is forbidden.
    (void)mount("proc", "/proc", "proc", MS_NOSUID | MS_NODEV | MS_NOEXEC, nullptr);
    if (access(hiddenFolder, F_OK) == 0 &&
        mount("tmpfs", hiddenFolder, "tmpfs", MS_NOSUID | MS_NODEV, "mode=755") != 0) {
        return failed("cannot hide the system's readers", error);
    }
    return true;
}

} // namespace simulator
