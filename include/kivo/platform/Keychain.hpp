#pragma once

#include <kivo/Export.hpp>

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace kivo::platform {

/// A keychain's answer: 0 for success, otherwise a number of the list below.
using OSStatus = std::int32_t;

/// The numbers that a keychain gives.
inline constexpr OSStatus errSecSuccess = 0;
inline constexpr OSStatus errSecDiskFull = -34;
inline constexpr OSStatus errSecIO = -36;
inline constexpr OSStatus errSecParam = -50;
inline constexpr OSStatus errSecNotAvailable = -25291;
inline constexpr OSStatus errSecReadOnly = -25292;
inline constexpr OSStatus errSecDuplicateItem = -25299;
inline constexpr OSStatus errSecItemNotFound = -25300;
inline constexpr OSStatus errSecDecode = -26275;

/// The only class of items, and the only limit of a query.
inline constexpr std::string_view kSecClassGenericPassword = "genp";
inline constexpr std::string_view kSecMatchLimitOne = "m_LimitOne";

/// When an item can be read. The Linux keychain stores the word and reads items at any time.
inline constexpr std::string_view kSecAttrAccessibleWhenUnlocked = "ak";
inline constexpr std::string_view kSecAttrAccessibleAfterFirstUnlock = "ck";
inline constexpr std::string_view kSecAttrAccessibleAlways = "dk";
inline constexpr std::string_view kSecAttrAccessibleWhenUnlockedThisDeviceOnly = "aku";
inline constexpr std::string_view kSecAttrAccessibleAfterFirstUnlockThisDeviceOnly = "cku";
inline constexpr std::string_view kSecAttrAccessibleAlwaysThisDeviceOnly = "dku";
inline constexpr std::string_view kSecAttrAccessibleWhenPasscodeSetThisDeviceOnly = "akpu";

/// The attributes of an item, or of a query. An absent attribute is not stored, or not compared.
struct KeychainAttributes {
    /// The class, and the attributes by their names.
    std::string kSecClass{kSecClassGenericPassword};
    std::optional<std::string> kSecAttrService;
    std::optional<std::string> kSecAttrAccessible;
    std::optional<std::string> kSecAttrAccessGroup;
    std::optional<std::string> kSecAttrGeneric;
    std::optional<std::string> kSecAttrAccount;
    std::optional<std::string> kSecValueData;
    std::optional<std::string> kSecMatchLimit;
    bool kSecReturnData = false;

    bool operator==(const KeychainAttributes&) const = default;
};

/// When a change is on the disk.
enum class KeychainDurability {
    /// Before the call returns.
    atOnce,
    /// Together with the next change that is durable at once, and never after a later change. A killed process loses
    /// nothing. A power cut may bring the former values back, all of them, and until the next durable change they may
    /// stay in the keychain's files.
    withNextChange,
};

/// The platform's store for small secrets. Calls may come from any thread; the store puts them in order.
///
/// A call may wait for calls of other threads and processes, with the Linux keychain for five seconds in all. Then the
/// status is `errSecNotAvailable`. The status is the same in a forked child of a process that had used the Linux
/// keychain.
///
/// An item is identified by class, service, account and access group (absent counts as empty). Every change is
/// durable and whole when the call returns: after a crash at any moment an item has its old or its new value.
class KIVO_EXPORT Keychain {
public:
    virtual ~Keychain() = default;

    /// Adds an item; `errSecDuplicateItem` when an item of the same identity exists.
    virtual OSStatus SecItemAdd(const KeychainAttributes& attributes) = 0;

    /// Finds one item. Fills `result` with its value when `kSecReturnData` is set; `errSecItemNotFound` without a
    /// match.
    virtual OSStatus SecItemCopyMatching(const KeychainAttributes& query, std::string* result) = 0;

    /// Changes value and accessibility, as far as given, of every matching item.
    virtual OSStatus SecItemUpdate(const KeychainAttributes& query, const KeychainAttributes& change) = 0;

    /// Deletes every matching item beyond recovery; `errSecItemNotFound` without a match.
    virtual OSStatus SecItemDelete(const KeychainAttributes& query) = 0;

    /// Stores the values of several items together, each as a new item or in place of the value of the item with the
    /// same identity. After a crash at any moment all items have their old or all have their new values. Without items
    /// the call waits until the earlier changes are on the disk.
    ///
    /// The default, for a keychain that knows only single items, adds or updates the items one after another, each
    /// durable at once, and ends at the first failure.
    virtual OSStatus SecItemStoreAll(std::span<const KeychainAttributes> items,
                                     KeychainDurability durability = KeychainDurability::atOnce);
};

/// Overwrites a secret text, and empties it.
KIVO_EXPORT void wipe(std::string& secret);

} // namespace kivo::platform
