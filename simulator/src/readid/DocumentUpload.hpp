#pragma once

#include <kivo/platform/ReadID.hpp>

#include <expected>
#include <functional>
#include <string>
#include <vector>

namespace kivo::simulator {

/// The parts of a document that the simulated vendor has read.
enum class ReadParts { page, chip, pageAndChip };

/// The name of the reading session that the document proxy gave out, or the reason why there is none.
using UploadOutcome = std::expected<std::string, platform::readid::FailureReason>;

/// Sends a specimen of the first allowed kind to the flow's document proxy, encrypted with the flow's key. `completion`
/// is called once, on the main queue.
void uploadDocument(const platform::readid::NFCWithAccessControlFlow& flow, ReadParts parts,
                    std::function<void(UploadOutcome)> completion);

/// The lines of that specimen's machine readable zone.
std::vector<std::string> specimenZone(const platform::readid::NFCWithAccessControlFlow& flow);

} // namespace kivo::simulator
