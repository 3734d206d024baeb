#include "NetworkManager/KeychainWrapper.hpp"

#include "support/KeychainFixture.hpp"

namespace kivo {
namespace {

using SecureStore = test::KeychainFixture;

TEST_F(SecureStore, WritesTheAttributesThatIdentifyAnItem) {
    KeychainWrapper store{open(), "com.example.host"};
    KeychainWrapper grouped{open(), "other", "group"};
    EXPECT_TRUE(store.set("value", "key"));
    EXPECT_TRUE(grouped.set("another", "key", KeychainItemAccessibility::afterFirstUnlockThisDeviceOnly));
    EXPECT_EQ(execute("SELECT group_concat(class || ' ' || service || ' ' || account || ' ' || generic || ' ' || "
                      "access_group || ' ' || accessible, ', ') FROM items"),
              "genp com.example.host key key  ak, genp other key key group cku");
    EXPECT_EQ(store.data("key"), "value");
    EXPECT_EQ(grouped.data("key"), "another");
}

} // namespace
} // namespace kivo
