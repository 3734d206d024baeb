#pragma once

#include <stop_token>

namespace kivo::reader {

/// A reading on the calling thread, for as long as the object lives. The thread destroys everything that uses OpenSSL
/// before this object.
///
/// OpenSSL frees its data while a process exits. The exit therefore stops every reading and waits up to two seconds
/// for the readings to end, except for a reading whose card source has called `exit()` itself.
class ReadingUnderWay {
public:
    /// Call this function before a reading's thread starts. Any thread, any number of times.
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
