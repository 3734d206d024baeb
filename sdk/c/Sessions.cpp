#include "c/Sessions.hpp"

#include "Models/InterfaceVersion.hpp"
#include "platform/base/Process.hpp"
#include "platform/c/Arguments.hpp"

#include <kivo/KivoSDK.hpp>
#include <kivo/SdkVersions.hpp>
#include <kivo/platform/Services.hpp>

#include <algorithm>
#include <iterator>
#include <vector>

struct kivo_session {
    kivo::SessionRules rules;
    /// Null until the host opens the version.
    std::shared_ptr<kivo::KivoAPI> api;
    bool hasDisplay = false;
};

namespace kivo::c {
namespace {

/// One for each interface version, in the order of `SdkVersions::all`.
std::vector<kivo_session>& handles() {
    return platform::Process::current().part<std::vector<kivo_session>>(
        [] { return new std::vector<kivo_session>(SdkVersions::all().size()); });
}

std::string_view orNewest(std::string_view version) {
    return version.empty() ? SdkVersions::all().back() : version;
}

kivo_session& opened(const kivo_session* handle) {
    auto& all = handles();
    const auto found = std::ranges::find_if(
        all, [&](const kivo_session& each) { return &each == notNull(handle, "session") && each.api; });
    if (found == all.end()) {
        throw Misuse{"session is not a handle of kivo_session_open"};
    }
    return *found;
}

} // namespace

bool isVersion(std::string_view version) {
    return std::ranges::find(SdkVersions::all(), SdkVersions::getPreciseVersion(orNewest(version))) !=
           SdkVersions::all().end();
}

kivo_session* openedSession(std::string_view key, std::string_view version) {
    const auto versions = SdkVersions::all();
    const auto wanted = orNewest(version);
    auto api = KivoSDK::load(key, wanted);
    if (!api) {
        return nullptr;
    }
    const auto found = std::ranges::find(versions, SdkVersions::getPreciseVersion(wanted));
    const auto place = static_cast<std::size_t>(std::distance(versions.begin(), found));
    auto& handle = handles()[place];
    if (!handle.api) {
        handle.rules = interfaceVersions.at(place).session;
        api->setAnswerQueue(platform::services().mainQueue);
        handle.api = std::move(api);
    }
    return &handle;
}

const std::shared_ptr<KivoAPI>& sessionOf(const kivo_session* handle) {
    return opened(handle).api;
}

void setHasDisplay(const kivo_session* handle, bool hasDisplay) {
    opened(handle).hasDisplay = hasDisplay;
}

void requireScreen(const kivo_session* handle, AcquisitionObject object) {
    const auto& session = opened(handle);
    if (!session.rules.presents(object)) {
        throw Misuse{"the session's interface version has no screen for the object"};
    }
    if (!session.hasDisplay) {
        throw Misuse{"the session has no display; call kivo_session_set_display first"};
    }
}

} // namespace kivo::c
