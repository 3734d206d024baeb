#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <string>
#include <thread>

namespace simulation {

/// Standard output by the line, from any thread, at the reader's pace: a reader that stands still loses lines and does
/// not hold up the service.
class Lines {
public:
    Lines();
    Lines(const Lines&) = delete;
    Lines& operator=(const Lines&) = delete;
    /// Writes what is left. Gives up when the reader takes nothing for two seconds.
    ~Lines();

    /// Puts a line in front of all others and begins to write.
    void begin(std::string line);

    /// Adds a line, with its end. Lines wait until `begin`. With too many lines waiting, the line is dropped and
    /// counted.
    void add(std::string line);

private:
    static constexpr std::size_t mostBytes = std::size_t{4} * 1024 * 1024;

    void work();
    bool write(const std::string& line);

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::string> waiting_;
    std::size_t bytes_ = 0;
    std::size_t lost_ = 0;
    bool hasBegun_ = false;
    bool isOver_ = false;
    std::thread thread_;
};

} // namespace simulation
