#include "NetworkManager/KeychainWrapper.hpp"

#include "support/MemoryKeychain.hpp"

#include <gtest/gtest.h>

namespace kivo {
namespace {

using namespace kivo::platform;

class SecureStore : public ::testing::Test {
protected:
    std::shared_ptr<test::MemoryKeychain> keychain = std::make_shared<test::MemoryKeychain>();
    KeychainWrapper store{keychain, "com.example.host"};
};

TEST_F(SecureStore, ASecondSetReplacesTheValue) {
    EXPECT_EQ(store.data("key"), std::nullopt);
    EXPECT_TRUE(store.set("one", "key"));
    EXPECT_TRUE(store.set("two", "key"));
    EXPECT_EQ(store.data("key"), "two");
    EXPECT_EQ(keychain->items.size(), 1U);
    EXPECT_TRUE(store.remove("key"));
    EXPECT_FALSE(store.remove("key"));
    EXPECT_FALSE(store.update("three", "key"));
}

TEST_F(SecureStore, WritesTheAttributesThatIdentifyAnItem) {
    store.set("value", "key");
    const auto& item = keychain->items.at(0);
    EXPECT_EQ(item.kSecClass, "genp");
    EXPECT_EQ(item.kSecAttrService, "com.example.host");
    EXPECT_EQ(item.kSecAttrAccount, "key");
    EXPECT_EQ(item.kSecAttrGeneric, "key");
    EXPECT_EQ(item.kSecAttrAccessible, kSecAttrAccessibleWhenUnlocked);
    EXPECT_EQ(item.kSecAttrAccessGroup, std::nullopt);

    store.data("key");
    EXPECT_EQ(keychain->lastQuery.kSecAttrAccessible, std::nullopt);
    EXPECT_EQ(keychain->lastQuery.kSecMatchLimit, kSecMatchLimitOne);
    EXPECT_TRUE(keychain->lastQuery.kSecReturnData);

    KeychainWrapper grouped{keychain, "other", "group"};
    grouped.set("value", "key", KeychainItemAccessibility::afterFirstUnlockThisDeviceOnly);
    EXPECT_EQ(keychain->items.at(1).kSecAttrAccessGroup, "group");
    EXPECT_EQ(keychain->items.at(1).kSecAttrAccessible, kSecAttrAccessibleAfterFirstUnlockThisDeviceOnly);
    grouped.set("value", "key", KeychainItemAccessibility::always);
    EXPECT_EQ(keychain->items.at(1).kSecAttrAccessible, kSecAttrAccessibleAlways);
}

TEST_F(SecureStore, SaysWhenAValueWasNotStored) {
    keychain->failure = errSecDiskFull;
    EXPECT_FALSE(store.set("value", "key"));
}

} // namespace
} // namespace kivo
