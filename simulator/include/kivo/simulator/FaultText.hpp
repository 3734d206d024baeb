#pragma once

#include <kivo/simulator/Fault.hpp>

#include <expected>
#include <string>
#include <string_view>

namespace kivo::simulator {

/// The fault that a text names: a name of `namedFaults()`, or a fault with a value:
///
/// | text | fault |
/// |---|---|
/// | `delay:2s`, `slow-body:250ms` | a late or slow answer, of at most ten minutes |
/// | `slow-reader:65536`, `huge:2000000` | so many bytes in a second, an answer of so many bytes; at most 1 GiB |
/// | `status:503`, `redirect:https://host/page` | a status from 200 to 599, a redirect |
/// | `refuse:STATUS_AUTH_FAILED`, `answer:TEXT` | a refusal, an answer with this body |
/// | `another-scan` | the demand for another scan |
///
/// The error is the end of a sentence that begins with the text's origin: "takes ...". Callable from any thread.
std::expected<Fault, std::string> faultFromText(std::string_view text);

/// The text of a fault: its name in `namedFaults()`, or its kind and value. The message of a refusal and the body that
/// comes with a status are left out. Callable from any thread.
std::string textOf(const Fault& fault);

/// The endpoints, and the names of faults with their meanings, in lines for the help of a program. Callable from any
/// thread.
std::string faultChoices();

} // namespace kivo::simulator
