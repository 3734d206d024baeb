#pragma once

#include <kivo/Export.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kivo::platform {

/// A keychain's answer: 0 for success, otherwise a number of the list below.
using OSStatus = std::int32_t;

inline constexpr OSStatus errSecSuccess = 0;
inline constexpr OSStatus errSecDiskFull = -34;
inline constexpr OSStatus errSecIO = -36;
inline constexpr OSStatus errSecParam = -50;
inline constexpr OSStatus errSecNotAvailable = -25291;
inline constexpr OSStatus errSecReadOnly = -25292;
inline constexpr OSStatus errSecDuplicateItem = -25299;
inline constexpr OSStatus errSecItemNotFound = -25300;
inline constexpr OSStatus errSecDecode = -26275;

inline constexpr std::string_view kSecClassGenericPassword = "genp";
inline constexpr std::string_view kSecMatchLimitOne = "m_LimitOne";

inline constexpr std::string_view kSecAttrAccessibleWhenUnlocked = "ak";
inline constexpr std::string_view kSecAttrAccessibleAfterFirstUnlock = "ck";
inline constexpr std::string_view kSecAttrAccessibleAlways = "dk";
inline constexpr std::string_view kSecAttrAccessibleWhenUnlockedThisDeviceOnly = "aku";
inline constexpr std::string_view kSecAttrAccessibleAfterFirstUnlockThisDeviceOnly = "cku";
inline constexpr std::string_view kSecAttrAccessibleAlwaysThisDeviceOnly = "dku";
inline constexpr std::string_view kSecAttrAccessibleWhenPasscodeSetThisDeviceOnly = "akpu";

/// The attributes of an item, or of a query. An absent attribute is not stored, or not compared.
struct KeychainAttributes {
    std::string kSecClass{kSecClassGenericPassword};
    std::optional<std::string> kSecAttrService;
    std::optional<std::string> kSecAttrAccessible;
    std::optional<std::string> kSecAttrAccessGroup;
    std::optional<std::string> kSecAttrGeneric;
    std::optional<std::string> kSecAttrAccount;
    std::optional<std::string> kSecValueData;
    std::optional<std::string> kSecMatchLimit;
    bool kSecReturnData = false;
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
};

/// Overwrites a secret text, and empties it.
KIVO_EXPORT void wipe(std::string& secret);

} // namespace kivo::platform
