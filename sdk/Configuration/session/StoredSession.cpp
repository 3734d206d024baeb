#include "Configuration/session/StoredSession.hpp"

#include "Configuration/logging/Log.hpp"
#include "Models/SessionKeys.hpp"
#include "NetworkManager/KeychainWrapper.hpp"
#include "platform/base/Process.hpp"
#include "platform/json/Cursor.hpp"

#include <kivo/platform/Keychain.hpp>
#include <kivo/platform/Text.hpp>

#include <algorithm>
#include <mutex>
#include <tuple>
#include <utility>

namespace kivo {
namespace {

bool saidWhere(bool isStored) {
    if (!isStored) {
        log::error("set(_:forKey:withAccessibility:)", [] {
            return "The item \"" + std::string{StoredItems::joinAnswer} +
                   "\" could not be stored; see the keychain's diagnostics.";
        });
    }
    return isStored;
}

/// What the secure store holds in the place of the join answer.
enum class StoredBytes { none, text, other };

StoredBytes storedBytes() {
    auto answer = KeychainWrapper::standard().data(std::string{StoredItems::joinAnswer});
    if (!answer) {
        return StoredBytes::none;
    }
    const bool isText = text::isUtf8(*answer);
    platform::wipe(*answer);
    return isText ? StoredBytes::text : StoredBytes::other;
}

std::optional<std::string> faceMapSetting(std::string_view key) {
    if (storedBytes() != StoredBytes::text) {
        return std::nullopt;
    }
    const auto session = storedSession();
    if (!session) {
        return "";
    }
    log::debug("Config", [&] { return session->encode(); });
    return settingIn(session->idpFaceMap, key);
}

/// The session decoded last, the stored bytes that the session was decoded from, and the order of the joins.
struct LastSession {
    std::mutex mutex;
    std::optional<std::string> answer;
    /// Null also before the answer is decoded.
    std::shared_ptr<const ActivationResponse> session;
    bool isDecoded = false;
    /// The last join that began, and the last one whose answer was stored.
    JoinNumber begun = 0;
    JoinNumber stored = 0;
    /// Taken before `mutex`.
    std::mutex joinAnswers;

    static LastSession& ofProcess() {
        return platform::Process::current().part<LastSession>([] { return new LastSession; });
    }

    void replace(std::optional<std::string> newAnswer) {
        if (answer) {
            platform::wipe(*answer);
        }
        answer = std::move(newAnswer);
        isDecoded = false;
        session.reset();
    }

    void decode() {
        isDecoded = true;
        if (auto decoded = ActivationResponse::decode(answer.value_or(""))) {
            session = std::make_shared<const ActivationResponse>(std::move(*decoded));
        }
    }
};

} // namespace

std::shared_ptr<const ActivationResponse> storedSession() {
    auto answer = KeychainWrapper::standard().data(std::string{StoredItems::joinAnswer});
    auto& last = LastSession::ofProcess();
    const std::scoped_lock lock{last.mutex};
    if (answer != last.answer) {
        last.replace(std::move(answer));
    } else if (answer) {
        platform::wipe(*answer);
    }
    if (!last.isDecoded) {
        last.decode();
    }
    return last.session;
}

bool emptyStoredJoinAnswer() {
    return saidWhere(KeychainWrapper::standard().setAll({{StoredItems::joinAnswer, ""}},
                                                        platform::KeychainDurability::withNextChange));
}

void settleStoredJoinAnswer() {
    std::ignore = KeychainWrapper::standard().setAll({});
}

JoinNumber nextJoinNumber() {
    auto& last = LastSession::ofProcess();
    const std::scoped_lock lock{last.mutex};
    return ++last.begun;
}

std::unique_lock<std::mutex> lockJoinAnswers() {
    return std::unique_lock{LastSession::ofProcess().joinAnswers};
}

bool isOvertaken(JoinNumber join) {
    auto& last = LastSession::ofProcess();
    const std::scoped_lock lock{last.mutex};
    return join < last.stored;
}

bool storeJoinAnswer(std::string_view answer, std::optional<std::string_view> activationCode, JoinNumber join) {
    const auto refusal = json::refusalOf(answer);
    if (refusal && refusal->isBeyondLimits()) {
        log::error("getJoin(codeValue:completion:)", "The join answer is too large or too deep to be read.");
        return false;
    }
    auto& store = KeychainWrapper::standard();
    KeychainWrapper::Values values;
    values.reserve(2);
    values.emplace_back(StoredItems::joinAnswer, answer);
    if (activationCode) {
        values.emplace_back(StoredItems::activationCode, *activationCode);
    }
    // The code is never read again, so a store that has room for the answer alone will do.
    if (!store.setAll(std::move(values)) &&
        !(activationCode && store.setAll({{StoredItems::joinAnswer, std::string{answer}}}))) {
        return saidWhere(false);
    }
    auto& last = LastSession::ofProcess();
    const std::scoped_lock lock{last.mutex};
    last.replace(std::string{answer});
    last.stored = std::max(last.stored, join);
    return true;
}

bool removeStoredJoinAnswer() {
    if (storedBytes() == StoredBytes::other) {
        return false;
    }
    {
        auto& last = LastSession::ofProcess();
        const std::scoped_lock lock{last.mutex};
        last.replace(std::nullopt);
    }
    // Removes even when no answer was read, because a locked or damaged store seems to hold no answer.
    using enum KeychainWrapper::Removal;
    const auto removal = KeychainWrapper::standard().remove(std::string{StoredItems::joinAnswer});
    if (removal == failed) {
        log::error("reset()", "The session could not be deleted and is still stored; see the keychain's diagnostics.");
    }
    return removal == done;
}

std::string Config::facemapBaseURL() {
    return faceMapSetting(KivoResponseKeys::facemapEndpoint).value_or("");
}

std::string Config::ocrIDScanBaseURL() {
    return faceMapSetting(KivoResponseKeys::idScanEndpoint).value_or("");
}

std::optional<std::string> Config::DeviceKeyIdentifier() {
    return faceMapSetting(KivoResponseKeys::faceMapDeviceKey);
}

} // namespace kivo
