#pragma once

#include <stop_token>

namespace kivo::reader {

/// A reading on the calling thread, for as long as the object lives. Everything that uses OpenSSL on the thread lives
/// shorter.
///
/// OpenSSL takes its data down while a process exits. So the exit stops every reading, and waits for the readings for
/// up to two seconds, except for a reading whose card source has called `exit()` itself.
class ReadingUnderWay {
public:
    /// Comes before the first reading's thread starts, on any thread and any number of times.
    static void prepare();

    /// `stop` ends the reading soon. Does not return in a process that is exiting.
    explicit ReadingUnderWay(std::stop_source stop);
    ReadingUnderWay(const ReadingUnderWay&) = delete;
    ReadingUnderWay& operator=(const ReadingUnderWay&) = delete;
    ~ReadingUnderWay();

private:
    const std::stop_source stop_;
};

} // namespace kivo::reader
