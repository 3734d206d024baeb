#include "sending/DocumentMessage.hpp"

#include <kivo/platform/Services.hpp>

#include <nlohmann/json.hpp>

#include <array>
#include <cstddef>
#include <utility>

namespace kivo::reader {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t longestSessionName = 256;

std::string base64(ByteView bytes) {
    return platform::services().trust->base64({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

const char* wordFor(platform::readid::DocumentType type) {
    using enum platform::readid::DocumentType;
    switch (type) {
    case identityCardTD1:
        return "identityCardTD1";
    case identityCardTD2:
        return "identityCardTD2";
    case passport:
        break;
    }
    return "passport";
}

const char* wordFor(Proof proof) {
    switch (proof) {
    case Proof::proven:
        return "proven";
    case Proof::refuted:
        return "refuted";
    case Proof::notTried:
        break;
    }
    return "not-tried";
}

constexpr std::array fileNames{
    std::pair{DocumentFile::cardAccess, "CardAccess"},
    std::pair{DocumentFile::cardSecurity, "CardSecurity"},
    std::pair{DocumentFile::com, "COM"},
    std::pair{DocumentFile::sod, "SOD"},
    std::pair{DocumentFile::dg1, "DG1"},
    std::pair{DocumentFile::dg2, "DG2"},
    std::pair{DocumentFile::dg7, "DG7"},
    std::pair{DocumentFile::dg11, "DG11"},
    std::pair{DocumentFile::dg12, "DG12"},
    std::pair{DocumentFile::dg14, "DG14"},
    std::pair{DocumentFile::dg15, "DG15"},
};

Json jsonOf(const Verdict& verdict) {
    return {{"data-is-unchanged", wordFor(verdict.dataIsUnchanged)},
            {"signature-holds", wordFor(verdict.signatureHolds)},
            {"signer-is-trusted", wordFor(verdict.signerIsTrusted)},
            {"signer-is-not-revoked", wordFor(verdict.signerIsNotRevoked)},
            {"dates-hold", wordFor(verdict.datesHold)},
            {"chip-is-genuine", wordFor(verdict.chipIsGenuine)}};
}

Json jsonOf(const ChipDocument& chip) {
    auto files = Json::object();
    for (const auto& [file, name] : fileNames) {
        if (const auto found = chip.files.find(file); found != chip.files.end()) {
            files[name] = base64(found->second);
        }
    }
    return {{"access", chip.access == ChipDocument::Access::pace ? "pace" : "bac"},
            {"files", std::move(files)},
            {"verdict", jsonOf(chip.verdict)}};
}

} // namespace

std::string documentMessage(const ReadDocument& document) {
    Json message{{"document-type", wordFor(document.type)}};
    if (!document.lines.empty()) {
        message["page"]["lines"] = document.lines;
    }
    if (document.chip) {
        message["chip"] = jsonOf(*document.chip);
    }
    return message.dump();
}

std::string sealedBody(ByteView message) {
    return Json{{"sealed-cms", base64(message)}}.dump();
}

std::optional<std::string> sessionIn(std::string_view answer) {
    const auto json = Json::parse(answer, nullptr, /*allow_exceptions=*/false);
    const auto found = json.is_object() ? json.find("sessionId") : json.end();
    if (found == json.end() || !found->is_string()) {
        return std::nullopt;
    }
    auto name = found->get<std::string>();
    return name.empty() || name.size() > longestSessionName ? std::nullopt : std::optional{std::move(name)};
}

} // namespace kivo::reader
