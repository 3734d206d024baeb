#pragma once

#include "sending/DocumentMessage.hpp"

#include <kivo/platform/ReadID.hpp>

#include <expected>
#include <functional>
#include <memory>
#include <string>

namespace kivo::reader {

/// The fault of a flow's address or keys, in a sentence for the log; empty for a flow with which documents can be sent.
std::string sendingFault(const platform::readid::NFCWithAccessControlFlow& flow);

/// One document on its way to the document proxy. Main thread.
class Sending {
public:
    /// The reading's name at the proxy, or why there is none.
    using Outcome = std::expected<std::string, platform::readid::FailureReason>;

    /// Sends the document as the flow says: to pinned servers where the host lists pins, sealed where the flow names
    /// keys. `completion` is called once, on the main queue, unless the object goes first.
    static std::unique_ptr<Sending> start(const platform::readid::NFCWithAccessControlFlow& flow,
                                          const ReadDocument& document, std::function<void(Outcome)> completion);

    virtual ~Sending() = default;
};

} // namespace kivo::reader
