#include "StandardOutput.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <utility>

namespace kivo::device::app {

StandardOutput::StandardOutput(std::function<void(const QString&)> listener)
    : listener_{std::move(listener)} {
    std::array<int, 2> ends{};
    // The writing end never blocks: a line that finds the pipe full is lost, and the program goes on.
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

void StandardOutput::read() {
    std::array<char, 4096> part{};
    for (auto count = ::read(pipe_, part.data(), part.size()); count > 0;
         count = ::read(pipe_, part.data(), part.size())) {
        [[maybe_unused]] const auto written = write(original_, part.data(), static_cast<std::size_t>(count));
        rest_.append(part.data(), count);
    }
    for (auto end = rest_.indexOf('\n'); end >= 0; end = rest_.indexOf('\n')) {
        listener_(QString::fromUtf8(rest_.left(end)));
        rest_.remove(0, end + 1);
    }
}

} // namespace kivo::device::app
