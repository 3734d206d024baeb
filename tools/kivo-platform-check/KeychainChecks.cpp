#include "Trial.hpp"

#include <atomic>
#include <fstream>
#include <iterator>
#include <thread>

namespace kivo::check {
namespace {

using platform::Keychain;
using platform::KeychainAttributes;

KeychainAttributes item(std::string account, std::optional<std::string> value = {},
                        std::optional<std::string> group = {}) {
    KeychainAttributes attributes;
    attributes.kSecAttrService = "dev.kivo.check";
    attributes.kSecAttrAccount = std::move(account);
    attributes.kSecAttrAccessGroup = std::move(group);
    attributes.kSecValueData = std::move(value);
    attributes.kSecReturnData = true;
    return attributes;
}

KeychainAttributes newValue(std::string text) {
    KeychainAttributes change;
    change.kSecValueData = std::move(text);
    return change;
}

/// The value, or the status.
std::string read(Keychain& keychain, const KeychainAttributes& query) {
    std::string result;
    const auto status = keychain.SecItemCopyMatching(query, &result);
    return status == platform::errSecSuccess ? result : std::to_string(status);
}

const std::string missing = std::to_string(platform::errSecItemNotFound);

void answersWithItsNumbers(Trial& trial) {
    const auto services = trial.services();
    auto& keychain = required(services.keychain);
    trial.expectEqual("copying a missing item", keychain.SecItemCopyMatching(item("one"), nullptr), -25300);
    trial.expectEqual("updating a missing item", keychain.SecItemUpdate(item("one"), newValue("x")), -25300);
    trial.expectEqual("deleting a missing item", keychain.SecItemDelete(item("one")), -25300);
    trial.expectEqual("adding", keychain.SecItemAdd(item("one", "first")), 0);
    trial.expectEqual("adding again", keychain.SecItemAdd(item("one", "second")), -25299);
    trial.expectEqual("the value after both", read(keychain, item("one")), "first");
    trial.expectEqual("updating", keychain.SecItemUpdate(item("one"), newValue("third")), 0);
    trial.expectEqual("the value after the update", read(keychain, item("one")), "third");
    trial.expectEqual("deleting", keychain.SecItemDelete(item("one")), 0);
    trial.expectEqual("the value after the deletion", read(keychain, item("one")), missing);
}

void keepsItemsApart(Trial& trial) {
    const auto services = trial.services();
    auto& keychain = required(services.keychain);
    auto elsewhere = item("one", "other service");
    elsewhere.kSecAttrService = "dev.kivo.other";
    for (const auto& each : {item("one", "one"), item("two", "two"), item("one", "in a group", "group"), elsewhere}) {
        trial.expectEqual("adding " + *each.kSecValueData, keychain.SecItemAdd(each), 0);
    }
    auto query = elsewhere;
    query.kSecValueData.reset();
    trial.expectEqual("account two", read(keychain, item("two")), "two");
    trial.expectEqual("account one in the group", read(keychain, item("one", {}, "group")), "in a group");
    trial.expectEqual("account one of the other service", read(keychain, query), "other service");
    keychain.SecItemDelete(item("two"));
    trial.expectEqual("account one when two is gone", read(keychain, item("one", {}, "group")), "in a group");
}

void matchesAbsentAttributes(Trial& trial) {
    const auto services = trial.services();
    auto& keychain = required(services.keychain);
    keychain.SecItemAdd(item("one", "plain"));
    keychain.SecItemAdd(item("one", "in a group", "group"));
    trial.expectEqual("updating all", keychain.SecItemUpdate(item("one"), newValue("both")), 0);
    trial.expectEqual("the item in the group", read(keychain, item("one", {}, "group")), "both");
    trial.expectEqual("deleting all", keychain.SecItemDelete(item("one")), 0);
    trial.expectEqual("the item in the group", read(keychain, item("one", {}, "group")), missing);
}

void matchesAccessibility(Trial& trial) {
    const auto services = trial.services();
    auto& keychain = required(services.keychain);
    auto added = item("one", "value");
    added.kSecAttrAccessible = platform::kSecAttrAccessibleWhenUnlocked;
    keychain.SecItemAdd(added);
    auto query = item("one");
    query.kSecAttrAccessible = platform::kSecAttrAccessibleAfterFirstUnlock;
    trial.expectEqual("updating by another accessibility", keychain.SecItemUpdate(query, newValue("new")), -25300);
    KeychainAttributes change;
    change.kSecAttrAccessible = query.kSecAttrAccessible;
    trial.expectEqual("changing the accessibility", keychain.SecItemUpdate(item("one"), change), 0);
    trial.expectEqual("the value by the new accessibility", read(keychain, query), "value");
}

void givesValuesOnlyWhenAsked(Trial& trial) {
    const auto services = trial.services();
    auto& keychain = required(services.keychain);
    keychain.SecItemAdd(item("one", "value"));
    auto query = item("one");
    query.kSecReturnData = false;
    std::string result = "untouched";
    trial.expectEqual("finding", keychain.SecItemCopyMatching(query, &result), 0);
    trial.expectEqual("the result without kSecReturnData", result, "untouched");
    trial.expectEqual("finding without a result", keychain.SecItemCopyMatching(item("one"), nullptr), 0);
}

void keepsEveryByte(Trial& trial) {
    const auto services = trial.services();
    auto& keychain = required(services.keychain);
    for (const auto& value :
         {std::string{}, std::string{"\0\xFF\r\n", 4}, std::string(20'000, 's'), std::string{"'; DROP TABLE items"}}) {
        const auto account = "account with " + std::to_string(value.size()) + std::string{" bytes' \0\xC3\xA9", 11};
        trial.expectEqual("adding", keychain.SecItemAdd(item(account, value)), 0);
        trial.expectEqual("the value", read(keychain, item(account)), value);
    }
}

void storesSeveral(Trial& trial) {
    const auto services = trial.services();
    auto& keychain = required(services.keychain);
    keychain.SecItemAdd(item("one", "old"));
    keychain.SecItemAdd(item("other", "kept"));
    using enum platform::KeychainDurability;
    trial.expectEqual("emptying one", keychain.SecItemStoreAll({{item("one", "")}}, withNextChange), 0);
    trial.expectEqual("one, emptied", read(keychain, item("one")), "");
    trial.expectEqual("storing two", keychain.SecItemStoreAll({{item("one", "new"), item("two", "also")}}), 0);
    trial.expectEqual("storing nothing", keychain.SecItemStoreAll({}), 0);
    const auto later = trial.services();
    trial.expectEqual("one, by new services", read(required(later.keychain), item("one")), "new");
    trial.expectEqual("two, by new services", read(required(later.keychain), item("two")), "also");
    trial.expectEqual("the other item", read(keychain, item("other")), "kept");
}

void isDurable(Trial& trial) {
    required(trial.services().keychain).SecItemAdd(item("one", "first"));
    required(trial.services().keychain).SecItemAdd(item("two", "second"));
    required(trial.services().keychain).SecItemUpdate(item("one"), newValue("changed"));
    trial.expectEqual("the changed value, by new services", read(required(trial.services().keychain), item("one")),
                      "changed");
    trial.expectEqual("the other value", read(required(trial.services().keychain), item("two")), "second");
    required(trial.services().keychain).SecItemDelete(item("one"));
    trial.expectEqual("the deleted value", read(required(trial.services().keychain), item("one")), missing);
    const auto other = trial.under.make({.mainBundle = trial.bundleFolder(), .dataFolder = trial.folder / "elsewhere"});
    trial.expectEqual("a value in another place", read(required(other.keychain), item("two")), missing);
}

void sharesWithOthers(Trial& trial) {
    const auto one = trial.services();
    const auto other = trial.services();
    auto& first = required(one.keychain);
    auto& second = required(other.keychain);
    first.SecItemAdd(item("one", "by the first"));
    trial.expectEqual("seen by the second", read(second, item("one")), "by the first");
    trial.expectEqual("adding by the second", second.SecItemAdd(item("one", "again")), -25299);
    second.SecItemUpdate(item("one"), newValue("by the second"));
    trial.expectEqual("seen by the first", read(first, item("one")), "by the second");
    second.SecItemDelete(item("one"));
    trial.expectEqual("deleted for the first", read(first, item("one")), missing);
}

void servesManyThreads(Trial& trial) {
    const auto shared = trial.services();
    auto& keychain = required(shared.keychain);
    std::atomic<int> refused = 0;
    const auto account = [](int thread, int number) { return std::to_string(thread) + "/" + std::to_string(number); };
    {
        std::vector<std::jthread> threads;
        threads.reserve(4);
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back([&, t, own = t % 2 == 0 ? shared : trial.services()] {
                for (int i = 0; i < 3; ++i) {
                    const auto name = account(t, i);
                    refused += own.keychain->SecItemAdd(item(name, name)) == 0 ? 0 : 1;
                    refused += own.keychain->SecItemUpdate(item(name), newValue("new " + name)) == 0 ? 0 : 1;
                }
            });
        }
    }
    trial.expectEqual("changes that were refused", refused.load(), 0);
    for (int t = 0; t < 4; ++t) {
        for (int i = 0; i < 3; ++i) {
            trial.expectEqual("a value", read(keychain, item(account(t, i))), "new " + account(t, i));
        }
    }
}

void hidesValues(Trial& trial) {
    namespace fs = std::filesystem;
    const std::string secret = "a secret that stands in no file";
    required(trial.services().keychain).SecItemAdd(item("one", secret));
    if (!fs::exists(trial.dataFolder())) {
        trial.giveUp("the keychain keeps nothing in the data folder");
    }
    for (const auto& entry : fs::recursive_directory_iterator{trial.dataFolder()}) {
        std::ifstream file{entry.path(), std::ios::binary};
        const std::string bytes{std::istreambuf_iterator<char>{file}, {}};
        trial.expect(bytes.find(secret) == std::string::npos,
                     "no value in the open in " + entry.path().filename().string());
    }
}

} // namespace

Checks keychainChecks() {
    const auto* const seam = "Keychain";
    return {
        {seam, "adds, finds, changes and deletes, and answers with its numbers", answersWithItsNumbers},
        {seam, "keeps items apart by service, account and access group", keepsItemsApart},
        {seam, "takes an absent attribute for every item", matchesAbsentAttributes},
        {seam, "matches and changes the accessibility", matchesAccessibility},
        {seam, "gives a value only when it is asked for", givesValuesOnlyWhenAsked},
        {seam, "keeps every byte of a value", keepsEveryByte},
        {seam, "stores the values of several items", storesSeveral},
        {seam, "keeps every change for later services on the same data, and for no others", isDurable},
        {seam, "shows each change to other services on the same data", sharesWithOthers},
        {seam, "serves many threads and services at once", servesManyThreads},
        {seam, "leaves no value in the open in its files", hidesValues},
    };
}

} // namespace kivo::check
