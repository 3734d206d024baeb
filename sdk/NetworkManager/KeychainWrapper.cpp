#include "NetworkManager/KeychainWrapper.hpp"

#include "platform/base/Process.hpp"

#include <kivo/platform/Services.hpp>

#include <utility>

namespace kivo {
namespace {

using namespace kivo::platform;

std::string constantOf(KeychainItemAccessibility accessibility) {
    using enum KeychainItemAccessibility;
    switch (accessibility) {
    case afterFirstUnlock:
        return std::string{kSecAttrAccessibleAfterFirstUnlock};
    case afterFirstUnlockThisDeviceOnly:
        return std::string{kSecAttrAccessibleAfterFirstUnlockThisDeviceOnly};
    case always:
        return std::string{kSecAttrAccessibleAlways};
    case whenPasscodeSetThisDeviceOnly:
        return std::string{kSecAttrAccessibleWhenPasscodeSetThisDeviceOnly};
    case alwaysThisDeviceOnly:
        return std::string{kSecAttrAccessibleAlwaysThisDeviceOnly};
    case whenUnlockedThisDeviceOnly:
        return std::string{kSecAttrAccessibleWhenUnlockedThisDeviceOnly};
    case whenUnlocked:
        break;
    }
    return std::string{kSecAttrAccessibleWhenUnlocked};
}

} // namespace

KeychainWrapper& KeychainWrapper::standard() {
    return platform::Process::current().part<KeychainWrapper>([] {
        return new KeychainWrapper{services().keychain,
                                   services().bundles->main()->bundleIdentifier().value_or("SwiftKeychainWrapper")};
    });
}

KeychainWrapper::KeychainWrapper(std::shared_ptr<Keychain> keychain, std::string serviceName,
                                 std::optional<std::string> accessGroup)
    : keychain_{std::move(keychain)}
    , serviceName_{std::move(serviceName)}
    , accessGroup_{std::move(accessGroup)} {}

KeychainAttributes KeychainWrapper::keychainQuery(const std::string& forKey, Accessibility withAccessibility) const {
    KeychainAttributes query;
    query.kSecAttrService = serviceName_;
    if (withAccessibility) {
        query.kSecAttrAccessible = constantOf(*withAccessibility);
    }
    query.kSecAttrAccessGroup = accessGroup_;
    query.kSecAttrGeneric = forKey;
    query.kSecAttrAccount = forKey;
    return query;
}

std::optional<std::string> KeychainWrapper::data(const std::string& forKey, Accessibility withAccessibility) const {
    auto query = keychainQuery(forKey, withAccessibility);
    query.kSecMatchLimit = kSecMatchLimitOne;
    query.kSecReturnData = true;
    std::optional<std::string> value{std::in_place};
    if (keychain_->SecItemCopyMatching(query, &*value) != errSecSuccess) {
        value.reset();
    }
    return value;
}

bool KeychainWrapper::set(std::string value, const std::string& forKey, Accessibility withAccessibility) {
    auto item = keychainQuery(forKey, withAccessibility);
    item.kSecAttrAccessible = constantOf(withAccessibility.value_or(KeychainItemAccessibility::whenUnlocked));
    item.kSecValueData = std::move(value);
    wipe(value);
    const auto status = keychain_->SecItemAdd(item);
    if (status == errSecDuplicateItem) {
        return update(std::move(*item.kSecValueData), forKey, withAccessibility);
    }
    wipe(*item.kSecValueData);
    return status == errSecSuccess;
}

bool KeychainWrapper::setAll(Values values, KeychainDurability durability) {
    std::vector<KeychainAttributes> items;
    items.reserve(values.size());
    for (auto& [key, value] : values) {
        auto& item = items.emplace_back(keychainQuery(std::string{key}, KeychainItemAccessibility::whenUnlocked));
        item.kSecValueData = std::move(value);
        wipe(value);
    }
    const auto status = keychain_->SecItemStoreAll(items, durability);
    for (auto& item : items) {
        wipe(*item.kSecValueData);
    }
    return status == errSecSuccess;
}

bool KeychainWrapper::update(std::string value, const std::string& forKey, Accessibility withAccessibility) {
    KeychainAttributes change;
    change.kSecValueData = std::move(value);
    if (withAccessibility) {
        change.kSecAttrAccessible = constantOf(*withAccessibility);
    }
    const auto status = keychain_->SecItemUpdate(keychainQuery(forKey, withAccessibility), change);
    wipe(*change.kSecValueData);
    return status == errSecSuccess;
}

KeychainWrapper::Removal KeychainWrapper::remove(const std::string& forKey) {
    switch (keychain_->SecItemDelete(keychainQuery(forKey))) {
    case errSecSuccess:
        return Removal::done;
    case errSecItemNotFound:
        return Removal::nothingThere;
    default:
        return Removal::failed;
    }
}

} // namespace kivo
