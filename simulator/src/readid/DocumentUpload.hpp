#pragma once

#include <kivo/platform/ReadID.hpp>

#include <expected>
#include <functional>
#include <string>

namespace kivo::simulator {

/// What the simulated vendor has read of a document.
enum class ReadParts { page, chip, pageAndChip };

/// The name of the reading session that the document proxy gave out, or why there is none.
using UploadOutcome = std::expected<std::string, platform::readid::FailureReason>;

/// Sends a specimen of the first allowed kind to the flow's document proxy, encrypted with the flow's key. `completion`
/// runs once, on the main queue.
void uploadDocument(const platform::readid::NFCWithAccessControlFlow& flow, ReadParts parts,
                    std::function<void(UploadOutcome)> completion);

} // namespace kivo::simulator
