#pragma once

#include <cstdio>
#include <functional>
#include <string>
#include <string_view>

namespace program {

/// Runs the body of `main`, and returns the status for the system to see.
///
/// - The standard descriptors are open: in place of a closed descriptor, a file that the program opens would become its
///   standard output.
/// - SIGINT, SIGTERM and SIGHUP end the program, unless its parent ignores them, after the temporary files are removed.
/// - An exception, and standard output that could not be written, become one sentence and the status 1.
///
/// Call before the program has other threads.
int run(const std::string& name, const std::function<int()>& body);

/// While the object lives, the first of these signals does not end the program but what `wait` waits for: a service has
/// things to do at its end. A second signal ends the program at once. At most one object at a time.
class EndingSignal {
public:
    EndingSignal();
    EndingSignal(const EndingSignal&) = delete;
    EndingSignal& operator=(const EndingSignal&) = delete;
    ~EndingSignal();

    /// Returns as soon as a signal has come since the object was made.
    static void wait();
};

/// Prints the program's name and a sentence, `printable`, on standard error.
void complain(const std::string& sentence);

/// The text with a question mark in place of each control character: what others send must not steer the terminal.
std::string printable(std::string_view text);

/// Flushes a stream. Returns the reason why some of the stream's text is lost, as a sentence, or an empty text.
std::string finish(std::FILE* stream);

/// Ends the program from any thread, without destructors. The temporary files are removed before.
[[noreturn]] void endAtOnce(int status);

} // namespace program
