#include "NetworkManager/KeychainWrapper.hpp"

#include <kivo/platform/Keychain.hpp>

#include <gtest/gtest.h>

namespace kivo {
namespace {

using namespace kivo::platform;

/// Keeps the attributes that it was given last.
struct SeenKeychain final : Keychain {
    OSStatus SecItemAdd(const KeychainAttributes& attributes) override {
        item = attributes;
        return errSecSuccess;
    }

    OSStatus SecItemCopyMatching(const KeychainAttributes& attributes, std::string* /*result*/) override {
        query = attributes;
        return errSecItemNotFound;
    }

    OSStatus SecItemUpdate(const KeychainAttributes& /*query*/, const KeychainAttributes& /*change*/) override {
        return errSecItemNotFound;
    }

    OSStatus SecItemDelete(const KeychainAttributes& /*query*/) override { return errSecItemNotFound; }

    KeychainAttributes item;
    KeychainAttributes query;
};

TEST(SecureStore, WritesTheAttributesThatIdentifyAnItem) {
    const auto keychain = std::make_shared<SeenKeychain>();
    KeychainWrapper store{keychain, "com.example.host"};
    const auto& item = keychain->item;
    const auto& query = keychain->query;
    store.set("value", "key");
    EXPECT_EQ(item.kSecClass, "genp");
    EXPECT_EQ(item.kSecAttrService, "com.example.host");
    EXPECT_EQ(item.kSecAttrAccount, "key");
    EXPECT_EQ(item.kSecAttrGeneric, "key");
    EXPECT_EQ(item.kSecAttrAccessible, kSecAttrAccessibleWhenUnlocked);
    EXPECT_EQ(item.kSecAttrAccessGroup, std::nullopt);

    store.data("key");
    EXPECT_EQ(query.kSecAttrAccessible, std::nullopt);
    EXPECT_EQ(query.kSecMatchLimit, kSecMatchLimitOne);
    EXPECT_TRUE(query.kSecReturnData);

    KeychainWrapper grouped{keychain, "other", "group"};
    grouped.set("value", "key", KeychainItemAccessibility::afterFirstUnlockThisDeviceOnly);
    EXPECT_EQ(item.kSecAttrAccessGroup, "group");
    EXPECT_EQ(item.kSecAttrAccessible, kSecAttrAccessibleAfterFirstUnlockThisDeviceOnly);
}

} // namespace
} // namespace kivo
