#pragma once

#include <expected>
#include <optional>
#include <string>

namespace pins {

/// A source as messages name it.
std::string nameOf(const std::string& source);

/// The bytes of a file, a pipe, or of standard input for "-"; nothing when there is no such file. Waits for the writer
/// of a pipe. The error is a sentence.
std::expected<std::optional<std::string>, std::string> bytesOf(const std::string& source);

/// The host, with a port where one is named, of an address such as "https://host/path" or "host:port". The error is a
/// sentence.
std::expected<std::string, std::string> serverIn(const std::string& source);

} // namespace pins
