#pragma once

#include <kivo/platform/Keychain.hpp>

#include <algorithm>
#include <vector>

namespace kivo::test {

/// A keychain in memory that keeps the attributes it was given, for a look at them.
class MemoryKeychain final : public platform::Keychain {
public:
    std::vector<platform::KeychainAttributes> items;
    platform::KeychainAttributes lastQuery;
    platform::OSStatus failure = platform::errSecSuccess;

    platform::OSStatus SecItemAdd(const platform::KeychainAttributes& attributes) override {
        if (failure != platform::errSecSuccess) {
            return failure;
        }
        if (find(attributes) != items.end()) {
            return platform::errSecDuplicateItem;
        }
        items.push_back(attributes);
        return platform::errSecSuccess;
    }

    platform::OSStatus SecItemCopyMatching(const platform::KeychainAttributes& query, std::string* result) override {
        lastQuery = query;
        const auto item = find(query);
        if (item == items.end()) {
            return platform::errSecItemNotFound;
        }
        *result = item->kSecValueData.value_or("");
        return platform::errSecSuccess;
    }

    platform::OSStatus SecItemUpdate(const platform::KeychainAttributes& query,
                                     const platform::KeychainAttributes& change) override {
        const auto item = find(query);
        if (item == items.end()) {
            return platform::errSecItemNotFound;
        }
        item->kSecValueData = change.kSecValueData;
        if (change.kSecAttrAccessible) {
            item->kSecAttrAccessible = change.kSecAttrAccessible;
        }
        return platform::errSecSuccess;
    }

    platform::OSStatus SecItemDelete(const platform::KeychainAttributes& query) override {
        const auto item = find(query);
        if (item == items.end()) {
            return platform::errSecItemNotFound;
        }
        items.erase(item);
        return platform::errSecSuccess;
    }

private:
    std::vector<platform::KeychainAttributes>::iterator find(const platform::KeychainAttributes& query) {
        return std::ranges::find_if(items, [&](const auto& item) {
            return item.kSecAttrService == query.kSecAttrService && item.kSecAttrAccount == query.kSecAttrAccount;
        });
    }
};

} // namespace kivo::test
