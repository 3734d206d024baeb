#include "StandardOutput.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <system_error>
#include <utility>

namespace kivo::device::app {

StandardOutput::StandardOutput(std::function<void(const QString&)> listener)
    : listener_{std::move(listener)} {
    std::array<int, 2> ends{};
    // The writing end never blocks. When the pipe is full, the program goes on and the line is lost.
    if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
        return;
    }
    std::fflush(stdout);
    original_ = dup(STDOUT_FILENO);
    pipe_ = ends[0];
    dup2(ends[1], STDOUT_FILENO);
    close(ends[1]);
    notifier_ = std::make_unique<QSocketNotifier>(pipe_, QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(), [this] { read(); });
}

StandardOutput::~StandardOutput() {
    if (original_ < 0) {
        return;
    }
    std::fflush(stdout);
    read();
    dup2(original_, STDOUT_FILENO);
    notifier_.reset();
    close(original_);
    close(pipe_);
}

std::string StandardOutput::finish() {
    std::fflush(stdout);
    read();
    return error_ == 0 ? "" : "standard output could not be written (" + std::generic_category().message(error_) + ")";
}

void StandardOutput::passOn(const char* bytes, std::size_t count) {
    while (count > 0) {
        const auto written = write(original_, bytes, count);
        if (written < 0 && errno != EINTR) {
            error_ = errno;
            return;
        }
        const auto done = static_cast<std::size_t>(std::max<ssize_t>(written, 0));
        bytes += done;
        count -= done;
    }
}

void StandardOutput::read() {
    std::array<char, 4096> part{};
    for (auto count = ::read(pipe_, part.data(), part.size()); count > 0;
         count = ::read(pipe_, part.data(), part.size())) {
        passOn(part.data(), static_cast<std::size_t>(count));
        rest_.append(part.data(), count);
    }
    for (auto end = rest_.indexOf('\n'); end >= 0; end = rest_.indexOf('\n')) {
        listener_(QString::fromUtf8(rest_.left(end)));
        rest_.remove(0, end + 1);
    }
}

} // namespace kivo::device::app
