#include "NetworkManager/KeychainWrapper.hpp"

#include <kivo/platform/Keychain.hpp>

#include <gmock/gmock.h>

namespace kivo {
namespace {

using namespace kivo::platform;
using ::testing::_;
using ::testing::AllOf;
using ::testing::Field;
using ::testing::Return;
using Attributes = KeychainAttributes;

struct MockKeychain : Keychain {
    MOCK_METHOD(OSStatus, SecItemAdd, (const Attributes&), (override));
    MOCK_METHOD(OSStatus, SecItemCopyMatching, (const Attributes&, std::string*), (override));
    MOCK_METHOD(OSStatus, SecItemUpdate, (const Attributes&, const Attributes&), (override));
    MOCK_METHOD(OSStatus, SecItemDelete, (const Attributes&), (override));
};

TEST(SecureStore, WritesTheAttributesThatIdentifyAnItem) {
    const auto keychain = std::make_shared<MockKeychain>();
    const auto isItem = [](const char* service, std::optional<std::string> group, std::string_view accessible) {
        return AllOf(Field(&Attributes::kSecClass, "genp"), Field(&Attributes::kSecAttrService, service),
                     Field(&Attributes::kSecAttrAccount, "key"), Field(&Attributes::kSecAttrGeneric, "key"),
                     Field(&Attributes::kSecAttrAccessGroup, group),
                     Field(&Attributes::kSecAttrAccessible, std::string{accessible}));
    };
    EXPECT_CALL(*keychain, SecItemAdd(isItem("com.example.host", std::nullopt, kSecAttrAccessibleWhenUnlocked)))
        .WillOnce(Return(errSecSuccess));
    EXPECT_CALL(*keychain, SecItemAdd(isItem("other", "group", kSecAttrAccessibleAfterFirstUnlockThisDeviceOnly)))
        .WillOnce(Return(errSecSuccess));
    EXPECT_CALL(*keychain, SecItemCopyMatching(AllOf(Field(&Attributes::kSecAttrAccessible, std::nullopt),
                                                     Field(&Attributes::kSecMatchLimit, kSecMatchLimitOne),
                                                     Field(&Attributes::kSecReturnData, true)),
                                               _))
        .WillOnce(Return(errSecItemNotFound));
    KeychainWrapper store{keychain, "com.example.host"};
    EXPECT_TRUE(store.set("value", "key"));
    EXPECT_FALSE(store.data("key"));
    KeychainWrapper grouped{keychain, "other", "group"};
    EXPECT_TRUE(grouped.set("value", "key", KeychainItemAccessibility::afterFirstUnlockThisDeviceOnly));
}

} // namespace
} // namespace kivo
