#pragma once

#include <cstdio>
#include <functional>
#include <string>

namespace program {

/// Runs the body of `main`, and returns the status for the system to see.
///
/// - The standard descriptors are open, so that no file of the program takes the place of one that was closed.
/// - SIGINT, SIGTERM and SIGHUP end the program, unless its parent ignores them, after the temporary files are removed.
/// - An exception, and standard output that could not be written, become one sentence and the status 1.
///
/// Call before the program has other threads.
int run(const std::string& name, const std::function<int()>& body);

/// Prints the program's name and a sentence on standard error.
void complain(const std::string& sentence);

/// Writes out what is left in a stream. Returns the reason why some of the stream's text is lost, as a sentence, or an
/// empty text.
std::string finish(std::FILE* stream);

/// Ends the program from any thread, without destructors. The temporary files are removed before.
[[noreturn]] void endAtOnce(int status);

} // namespace program
