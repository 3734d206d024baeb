#include "passport/CardRoom.hpp"

#include <fcntl.h>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <csignal>
#include <ctime>
#include <string>
#include <string_view>
#include <utility>

extern char** environ; // NOLINT(readability-redundant-declaration)

namespace kivo::simulator::chip {
namespace {

constexpr auto daemonProgram = "/usr/sbin/pcscd";
constexpr auto folderOfDaemon = "/run/pcscd";

// What the caller asks of the room's keeper, a byte each; the keeper answers with a byte, and with a descriptor where
// there is one.
constexpr char forSocket = 's';
constexpr char forDaemon = 'd';
constexpr char done = 'y';
constexpr char failed = 'n';

union DescriptorSpace {
    std::array<char, CMSG_SPACE(sizeof(int))> bytes;
    cmsghdr alignment;
};

/// Sends a byte, and a descriptor that is not negative.
bool tell(int line, char byte, int descriptor = -1) {
    iovec content{.iov_base = &byte, .iov_len = 1};
    DescriptorSpace space{};
    msghdr message{};
    message.msg_iov = &content;
    message.msg_iovlen = 1;
    if (descriptor >= 0) {
        message.msg_control = space.bytes.data();
        message.msg_controllen = space.bytes.size();
        auto* const head = CMSG_FIRSTHDR(&message);
        head->cmsg_level = SOL_SOCKET;
        head->cmsg_type = SCM_RIGHTS;
        head->cmsg_len = CMSG_LEN(sizeof descriptor);
        __builtin_memcpy(CMSG_DATA(head), &descriptor, sizeof descriptor);
    }
    return sendmsg(line, &message, MSG_NOSIGNAL) == 1;
}

struct Heard {
    char byte = failed;
    int descriptor = -1;
    bool isClosed = false;
};

Heard hear(int line) {
    Heard heard;
    iovec content{.iov_base = &heard.byte, .iov_len = 1};
    DescriptorSpace space{};
    msghdr message{};
    message.msg_iov = &content;
    message.msg_iovlen = 1;
    message.msg_control = space.bytes.data();
    message.msg_controllen = space.bytes.size();
    ssize_t size = 0;
    do {
        size = recvmsg(line, &message, MSG_CMSG_CLOEXEC);
    } while (size < 0 && errno == EINTR);
    heard.isClosed = size <= 0;
    const auto* const head = heard.isClosed ? nullptr : CMSG_FIRSTHDR(&message);
    if (head != nullptr && head->cmsg_level == SOL_SOCKET && head->cmsg_type == SCM_RIGHTS) {
        __builtin_memcpy(&heard.descriptor, CMSG_DATA(head), sizeof heard.descriptor);
    }
    return heard;
}

/// The process that keeps a room. Forked from a process with threads, so nothing here takes memory or a lock.
class Keeper {
public:
    /// The texts are made before the fork.
    Keeper(const std::filesystem::path& folder, int line)
        : folder_{folder.string()}
        , readers_{(folder / "readers").string()}
        , users_{"0 " + std::to_string(geteuid()) + " 1"}
        , groups_{"0 " + std::to_string(getegid()) + " 1"}
        , line_{line} {}

    [[noreturn]] void run() {
        keepNothingOfTheCaller();
        const bool isOpen = openRoom();
        tell(line_, isOpen ? done : failed);
        while (isOpen) {
            const auto heard = hear(line_);
            if (heard.isClosed) {
                break;
            }
            if (heard.byte == forDaemon) {
                endDaemon();
                tell(line_, startDaemon() ? done : failed);
            } else {
                const int made = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
                tell(line_, made < 0 ? failed : done, made);
                ::close(made);
            }
        }
        endDaemon();
        _exit(0);
    }

private:
    /// Descriptors of the caller that stayed open here would keep its sockets and pipes from ending.
    void keepNothingOfTheCaller() {
        constexpr int place = 3;
        const int nothing = ::open("/dev/null", O_RDWR | O_CLOEXEC);
        line_ = line_ == place ? place : dup3(line_, place, O_CLOEXEC);
        for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
            dup2(nothing, standard);
        }
        close_range(place + 1, UINT_MAX, 0);
        sigset_t none;
        sigemptyset(&none);
        sigprocmask(SIG_SETMASK, &none, nullptr);
    }

    bool openRoom() const {
        const bool isSuperuser = geteuid() == 0;
        if (unshare(CLONE_NEWNS | CLONE_NEWNET | (isSuperuser ? 0 : CLONE_NEWUSER)) != 0) {
            return false;
        }
        if (!isSuperuser && !(write("/proc/self/setgroups", "deny") && write("/proc/self/uid_map", users_) &&
                              write("/proc/self/gid_map", groups_))) {
            return false;
        }
        return mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
               mount("none", "/run", "tmpfs", 0, nullptr) == 0 && mkdir(folderOfDaemon, S_IRWXU) == 0 &&
               mount(folder_.c_str(), folderOfDaemon, nullptr, MS_BIND, nullptr) == 0 && raiseLoopback();
    }

    static bool write(const char* file, std::string_view text) {
        const int descriptor = ::open(file, O_WRONLY | O_CLOEXEC);
        const bool isWritten = ::write(descriptor, text.data(), text.size()) == std::ssize(text);
        ::close(descriptor);
        return isWritten;
    }

    static bool raiseLoopback() {
        const int any = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        ifreq request{};
        request.ifr_name[0] = 'l';
        request.ifr_name[1] = 'o';
        request.ifr_flags = IFF_UP;
        const bool isUp = ioctl(any, SIOCSIFFLAGS, &request) == 0;
        ::close(any);
        return isUp;
    }

    bool startDaemon() {
        // What a daemon leaves behind that was killed.
        unlink("/run/pcscd/pcscd.comm");
        unlink("/run/pcscd/pcscd.pid");
        std::array<const char*, 6> words{daemonProgram, "--foreground", "--critical", "-c", readers_.c_str(), nullptr};
        daemon_ = fork();
        if (daemon_ == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            execve(daemonProgram, const_cast<char* const*>(words.data()), environ);
            _exit(1);
        }
        return daemon_ > 0;
    }

    /// A daemon whose reader waits for a silent card does not end by itself.
    void endDaemon() {
        if (daemon_ <= 0) {
            return;
        }
        kill(daemon_, SIGTERM);
        constexpr timespec pause{.tv_sec = 0, .tv_nsec = 10'000'000};
        constexpr int most = 200;
        for (int i = 0; i < most; ++i) {
            if (waitpid(daemon_, nullptr, WNOHANG) != 0) {
                daemon_ = 0;
                return;
            }
            nanosleep(&pause, nullptr);
        }
        kill(daemon_, SIGKILL);
        waitpid(std::exchange(daemon_, 0), nullptr, 0);
    }

    const std::string folder_;
    const std::string readers_;
    const std::string users_;
    const std::string groups_;
    int line_;
    pid_t daemon_ = 0;
};

} // namespace

std::shared_ptr<CardRoom> CardRoom::open(const std::filesystem::path& folder) {
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) {
        return nullptr;
    }
    Socket line{ends[0]};
    const Socket other{ends[1]};
    Keeper keeper{folder, ends[1]};
    const auto process = fork();
    if (process == 0) {
        keeper.run();
    }
    if (process < 0) {
        return nullptr;
    }
    std::shared_ptr<CardRoom> room{new CardRoom{process, std::move(line)}};
    return hear(room->line_.descriptor()).byte == done ? room : nullptr;
}

CardRoom::CardRoom(pid_t keeper, Socket line)
    : keeper_{keeper}
    , line_{std::move(line)} {}

CardRoom::~CardRoom() {
    close();
}

bool CardRoom::startDaemon() {
    const std::scoped_lock lock{mutex_};
    return line_ && tell(line_.descriptor(), forDaemon) && hear(line_.descriptor()).byte == done;
}

Socket CardRoom::newSocket() {
    const std::scoped_lock lock{mutex_};
    return line_ && tell(line_.descriptor(), forSocket) ? Socket{hear(line_.descriptor()).descriptor} : Socket{};
}

void CardRoom::close() {
    const std::scoped_lock lock{mutex_};
    if (line_) {
        line_ = Socket{};
        waitpid(keeper_, nullptr, 0);
    }
}

} // namespace kivo::simulator::chip
