#pragma once

#include <string>
#include <string_view>

namespace kivo::simulator {

/// The body of a request or an answer for people to read: indented JSON without the values that are secret or personal,
/// such as codes, keys, tokens, scans and images. Of a masked text its length is told; long texts are cut. Of a body
/// that is no JSON object, or has more than 4096 values or 32 levels, only the length is told. An empty body stays
/// empty. Callable from any thread.
std::string withoutSecrets(std::string_view body);

/// The same for the value of a header: only those that describe the message stay as they are.
std::string headerWithoutSecrets(std::string_view name, std::string_view value);

} // namespace kivo::simulator
