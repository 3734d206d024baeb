#include "platform/c/Arguments.hpp"

#include <kivo/c/services.h>
#include <kivo/platform/Keychain.hpp>
#include <kivo/platform/Services.hpp>

#include <memory>
#include <optional>
#include <string>

namespace {

using namespace kivo;
using platform::KeychainAttributes;
using platform::OSStatus;

constexpr std::size_t mostBytes = std::size_t{16} << 20;

OSStatus statusOf(kivo_keychain_status status) {
    switch (status) {
    case KIVO_KEYCHAIN_OK:
        return platform::errSecSuccess;
    case KIVO_KEYCHAIN_NOT_FOUND:
        return platform::errSecItemNotFound;
    case KIVO_KEYCHAIN_FAILED:
        break;
    }
    return platform::errSecNotAvailable;
}

/// What a host hands over in `get`; absent until then, and for a value that is too large.
void takeValue(void* taker, const void* bytes, size_t length) {
    c::statusOf(__func__, [&] {
        if (length > mostBytes || (bytes == nullptr && length != 0)) {
            throw c::Misuse{"the value of a keychain's item is null or larger than 16 MiB"};
        }
        static_cast<std::optional<std::string>*>(taker)->emplace(static_cast<const char*>(bytes), length);
    });
}

/// The SDK names an item by service and account alone.
class HostKeychain final : public platform::Keychain {
public:
    explicit HostKeychain(const kivo_keychain& keychain)
        : keychain_{keychain} {}

    OSStatus SecItemAdd(const KeychainAttributes& attributes) override { return set(attributes, attributes); }

    OSStatus SecItemCopyMatching(const KeychainAttributes& query, std::string* result) override {
        std::optional<std::string> value;
        const auto status =
            statusOf(keychain_.get(keychain_.user, serviceOf(query), accountOf(query), takeValue, &value));
        if (status != platform::errSecSuccess) {
            return status;
        }
        if (!value) {
            return platform::errSecDecode;
        }
        if (query.kSecReturnData && result != nullptr) {
            std::swap(*result, *value);
        }
        platform::wipe(*value);
        return status;
    }

    OSStatus SecItemUpdate(const KeychainAttributes& query, const KeychainAttributes& change) override {
        const auto status = SecItemCopyMatching(query, nullptr);
        return status == platform::errSecSuccess && change.kSecValueData ? set(query, change) : status;
    }

    OSStatus SecItemDelete(const KeychainAttributes& query) override {
        return statusOf(keychain_.remove(keychain_.user, serviceOf(query), accountOf(query)));
    }

private:
    static kivo_text textOf(const std::optional<std::string>& text) {
        return c::textOf(text ? std::string_view{*text} : std::string_view{});
    }

    static kivo_text serviceOf(const KeychainAttributes& item) { return textOf(item.kSecAttrService); }

    static kivo_text accountOf(const KeychainAttributes& item) { return textOf(item.kSecAttrAccount); }

    OSStatus set(const KeychainAttributes& name, const KeychainAttributes& content) {
        const std::string_view value = content.kSecValueData ? std::string_view{*content.kSecValueData} : "";
        return statusOf(keychain_.set(keychain_.user, serviceOf(name), accountOf(name), value.data(), value.size()));
    }

    kivo_keychain keychain_;
};

} // namespace

extern "C" kivo_status kivo_keychain_install(const kivo_keychain* keychain) {
    return c::statusOf(__func__, [&] {
        const auto given = c::structureOf(keychain, "keychain");
        c::notNull(given.set, "set");
        c::notNull(given.get, "get");
        c::notNull(given.remove, "remove");
        platform::Services services;
        services.keychain = std::make_shared<HostKeychain>(given);
        platform::install(services);
    });
}
