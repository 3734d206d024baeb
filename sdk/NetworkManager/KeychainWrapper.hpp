#pragma once

#include <kivo/platform/Keychain.hpp>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kivo {

/// When an item may be read; each value stands for the platform's constant of the same name.
enum class KeychainItemAccessibility {
    afterFirstUnlock,
    afterFirstUnlockThisDeviceOnly,
    always,
    whenPasscodeSetThisDeviceOnly,
    alwaysThisDeviceOnly,
    whenUnlocked,
    whenUnlockedThisDeviceOnly,
};

/// Small secrets under text keys, kept as generic passwords of one service. Any thread; the platform orders the
/// calls.
class KeychainWrapper {
public:
    using Accessibility = std::optional<KeychainItemAccessibility>;

    /// The application's own store: its service is the main bundle's identifier.
    static KeychainWrapper& standard();

    KeychainWrapper(std::shared_ptr<platform::Keychain> keychain, std::string serviceName,
                    std::optional<std::string> accessGroup = {});

    const std::string& serviceName() const { return serviceName_; }

    /// The value, or absent on any failure.
    std::optional<std::string> data(const std::string& forKey, Accessibility withAccessibility = {}) const;

    /// Stores a value, replaces a former value, and wipes the copy in memory. False on any failure.
    bool set(std::string value, const std::string& forKey, Accessibility withAccessibility = {});

    using Values = std::vector<std::pair<std::string_view, std::string>>;

    /// Stores the values under their keys, all or none of them, and wipes the copies in memory. False on any failure.
    bool setAll(Values values, platform::KeychainDurability durability = platform::KeychainDurability::atOnce);

    /// Replaces the value of an existing item. False on any failure.
    bool update(std::string value, const std::string& forKey, Accessibility withAccessibility = {});

    enum class Removal { done, nothingThere, failed };

    /// Deletes an item.
    Removal remove(const std::string& forKey);

    /// The attributes that identify an item.
    platform::KeychainAttributes keychainQuery(const std::string& forKey, Accessibility withAccessibility = {}) const;

private:
    const std::shared_ptr<platform::Keychain> keychain_;
    const std::string serviceName_;
    const std::optional<std::string> accessGroup_;
};

} // namespace kivo
