#include "Lines.hpp"

#include "program/Program.hpp"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <string_view>
#include <utility>

namespace simulation {

Lines::Lines()
    : thread_{[this] { work(); }} {}

Lines::~Lines() {
    {
        const std::scoped_lock lock{mutex_};
        isOver_ = true;
    }
    changed_.notify_all();
    thread_.join();
    if (lost_ > 0) {
        program::complain(std::to_string(lost_) + " lines are lost, because nobody read standard output");
    }
}

void Lines::begin(std::string line) {
    {
        const std::scoped_lock lock{mutex_};
        bytes_ += line.size();
        waiting_.push_front(std::move(line));
        hasBegun_ = true;
    }
    changed_.notify_all();
}

void Lines::add(std::string line) {
    {
        const std::scoped_lock lock{mutex_};
        if (bytes_ + line.size() > mostBytes) {
            ++lost_;
            return;
        }
        bytes_ += line.size();
        waiting_.push_back(std::move(line));
    }
    changed_.notify_all();
}

void Lines::work() {
    std::unique_lock lock{mutex_};
    while (true) {
        changed_.wait(lock, [this] { return isOver_ || (hasBegun_ && !waiting_.empty()); });
        if (!hasBegun_ || waiting_.empty()) {
            return;
        }
        const auto line = std::move(waiting_.front());
        waiting_.pop_front();
        bytes_ -= line.size();
        lock.unlock();
        const bool isWritten = write(line);
        lock.lock();
        if (!isWritten) {
            lost_ += waiting_.size() + 1;
            waiting_.clear();
            bytes_ = 0;
        }
    }
}

/// Whether the whole line was written.
bool Lines::write(const std::string& line) {
    constexpr int pause = 100;
    constexpr int mostPauses = 20;
    std::string_view rest = line;
    for (int pauses = 0; !rest.empty();) {
        pollfd output{.fd = STDOUT_FILENO, .events = POLLOUT, .revents = 0};
        const int isReady = poll(&output, 1, pause);
        if (isReady <= 0) {
            const std::scoped_lock lock{mutex_};
            if (isOver_ && ++pauses > mostPauses) {
                return false;
            }
            continue;
        }
        // A pipe with room for this many bytes does not block.
        const auto written = ::write(STDOUT_FILENO, rest.data(), std::min<std::size_t>(rest.size(), PIPE_BUF));
        if (written < 0 && errno != EINTR) {
            return false;
        }
        rest.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
        pauses = 0;
    }
    return true;
}

} // namespace simulation
