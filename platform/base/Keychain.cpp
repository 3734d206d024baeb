#include <kivo/platform/Keychain.hpp>

namespace kivo::platform {

OSStatus Keychain::SecItemStoreAll(std::span<const KeychainAttributes> items, KeychainDurability /*durability*/) {
    for (const auto& item : items) {
        auto status = SecItemAdd(item);
        if (status == errSecDuplicateItem) {
            KeychainAttributes query;
            query.kSecClass = item.kSecClass;
            query.kSecAttrService = item.kSecAttrService;
            query.kSecAttrAccessGroup = item.kSecAttrAccessGroup;
            query.kSecAttrAccount = item.kSecAttrAccount;
            KeychainAttributes change;
            change.kSecValueData = item.kSecValueData;
            status = SecItemUpdate(query, change);
            if (change.kSecValueData) {
                wipe(*change.kSecValueData);
            }
        }
        if (status != errSecSuccess) {
            return status;
        }
    }
    return errSecSuccess;
}

} // namespace kivo::platform
