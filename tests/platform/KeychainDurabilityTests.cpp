#include "NetworkManager/KeychainWrapper.hpp"
#include "platform/openssl/SealedValue.hpp"
#include "support/KeychainFixture.hpp"
#include "support/Program.hpp"

#include <gmock/gmock.h>
#include <sys/resource.h>

#include <algorithm>
#include <csignal>
#include <iterator>
#include <random>
#include <set>
#include <sstream>
#include <vector>

namespace kivo::platform {
namespace {

namespace fs = std::filesystem;

using namespace test;
using testing::AnyOf;
using testing::Contains;
using testing::Each;
using testing::HasSubstr;
using testing::IsEmpty;

class KeychainDurabilityTest : public KeychainFixture {
protected:
    /// The values of the item that can be opened from any file of the folder, wherever they stand in it.
    std::set<std::string> whatOpens() const {
        std::set<std::string> values;
        SealingKey key;
        const auto bytes = contentOf(folder / "keychain.key");
        std::ranges::copy(bytes.substr(0, SealingKey::size), key.room().begin());
        for (const auto& entry : fs::directory_iterator{folder}) {
            const auto content = contentOf(entry.path());
            for (std::size_t at = content.find('\1'); at != std::string::npos; at = content.find('\1', at + 1)) {
                // A version, a nonce and a tag around a text of five bytes.
                if (auto opened = unseal(key, "4:genp16:com.example.host3:one0:", content.substr(at, 29 + 5))) {
                    values.insert(std::move(*opened));
                }
            }
        }
        return values;
    }
};

Ended runWriter(const fs::path& folder, int lastStep) {
    return run("exec " KIVO_TEST_PROGRAMS "/KeychainWriter '" + folder.string() + "' " + std::to_string(lastStep));
}

std::ptrdiff_t changesTold(const Ended& writer) {
    std::istringstream words{writer.output};
    return std::count(std::istream_iterator<std::string>{words}, {}, "told");
}

TEST_F(KeychainDurabilityTest, AWriterKilledAtAnyStepLeavesTheOldOrTheNewValue) {
    const std::string values[] = {"-25300", "first", std::string(20'000, 's'), "third", "", "fifth", "-25300"};
    const auto whole = runWriter(parent.path(), 0);
    ASSERT_EQ(whole.status, 0);
    constexpr std::ptrdiff_t changes = std::size(values) - 1;
    ASSERT_EQ(changesTold(whole), changes);
    const auto steps = static_cast<int>(std::ranges::count(whole.output, '\n') - changes);
    ASSERT_GT(steps, 40);
    for (int step = 1; step <= steps; ++step) {
        SCOPED_TRACE("killed before step " + std::to_string(step));
        fs::remove_all(parent.path() / "kivo");
        const auto killed = runWriter(parent.path(), step);
        ASSERT_TRUE(WIFSIGNALED(killed.status));
        const auto told = static_cast<std::size_t>(changesTold(killed));
        // A killed deletion is made up for, as a host does that resets again.
        const auto stored = read("one");
        ASSERT_THAT(stored, AnyOf(values[told], values[std::min<std::size_t>(told + 1, changes)]));
        EXPECT_EQ(read("two"), told >= changes - 1 || stored == "fifth" ? "fifth" : "-25300") << "both or neither";
        if (!fs::exists(folder / "keychain.key")) {
            continue;
        }
        std::set<std::string> expected{stored};
        for (const auto& other : {values[0], values[2], values[4]}) {
            expected.erase(other);
        }
        EXPECT_EQ(whatOpens(), expected);
        for (const auto& entry : fs::directory_iterator{folder}) {
            EXPECT_THAT(entry.path().filename(), AnyOf("keychain.db", "keychain.db-journal", "keychain.key"));
        }
    }
    EXPECT_THAT(diagnostics->texts(), IsEmpty());
}

TEST_F(KeychainDurabilityTest, WhatIsToldIsOnTheDiskAfterTwoWaitsAtMost) {
    const std::string log = "keychain.db-wal";
    constexpr int later = 4;
    std::set<std::string> unsynced;
    int told = 0;
    int waits = 0;
    std::istringstream lines{runWriter(parent.path(), 0).output};
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words{line};
        std::string act;
        std::string name;
        words >> act >> name;
        if (name == "keychain.db-shm") {
            continue; // shared memory, which is made anew after a power cut
        }
        if (act == "change") {
            EXPECT_THAT(unsynced, testing::Not(Contains("com.example.host"))) << "a file without its name";
            EXPECT_TRUE(name != "keychain.db" || !unsynced.contains(log)) << "the file changes before its log is in";
            unsynced.insert(name);
        } else if (act == "empty") {
            EXPECT_THAT(unsynced, IsEmpty()) << "the log goes before the file is in";
        } else if (act == "make") {
            unsynced.insert(name == "kivo" ? parent.path().filename().string() : "kivo");
        } else if (act == "name") {
            EXPECT_THAT(unsynced, testing::Not(Contains(".draft"))) << name << " is named before its content is in";
            unsynced.insert("com.example.host");
        } else if (act == "sync") {
            unsynced.erase(name);
            ++waits;
        } else if (act == "told") {
            ++told;
            EXPECT_EQ(unsynced, told == later ? std::set<std::string>{log} : std::set<std::string>{})
                << "change " << told;
            EXPECT_TRUE(told == 1 || waits == (told == later ? 0 : 2)) << waits << " waits for change " << told;
            waits = 0;
        }
    }
    EXPECT_EQ(told, 6);
}

TEST_F(KeychainDurabilityTest, WhatIsReplacedOrDeletedIsInNoFile) {
    const auto keychain = open();
    std::minstd_rand random{20261126};
    std::uniform_int_distribution<std::size_t> accounts{0, 5};
    std::uniform_int_distribution<std::size_t> sizes{0, 9000};
    const auto sealedIn = [&](const std::string& account) {
        return execute(("SELECT value FROM items WHERE account = '" + account + "'").c_str());
    };
    std::vector<std::string> gone;
    for (int round = 0; round < 60; ++round) {
        const auto account = std::to_string(accounts(random));
        const bool isThere = keychain->SecItemCopyMatching(item(account), nullptr) == errSecSuccess;
        if (isThere) {
            gone.push_back(sealedIn(account));
        }
        if (isThere && round % 3 == 0) {
            ASSERT_EQ(keychain->SecItemDelete(item(account)), errSecSuccess);
        } else {
            const auto text = std::string(round % 2 == 0 ? sizes(random) : sizes(random) % 200, 'v');
            ASSERT_EQ(isThere ? keychain->SecItemUpdate(item(account), value(text + std::to_string(round)))
                              : keychain->SecItemAdd(item(account, text)),
                      errSecSuccess);
        }
        std::string all;
        for (const auto& entry : fs::directory_iterator{folder}) {
            all += contentOf(entry.path());
        }
        for (const auto& sealed : gone) {
            for (std::size_t at = 0; at + 16 <= sealed.size(); at += 16) {
                ASSERT_EQ(all.find(sealed.substr(at, 16)), std::string::npos) << "round " << round << ", byte " << at;
            }
        }
    }
}

TEST_F(KeychainDurabilityTest, AFullDiskLosesNothingAndForgetsNothingUnheard) {
    auto keychain = open();
    ASSERT_EQ(keychain->SecItemAdd(item("one", "value")), errSecSuccess);
    std::signal(SIGXFSZ, SIG_IGN);
    auto full = std::make_unique<LowLimit>(RLIMIT_FSIZE, 100);
    EXPECT_EQ(keychain->SecItemUpdate(item("one"), value(std::string(50'000, 'n'))), errSecDiskFull);
    EXPECT_EQ(keychain->SecItemAdd(item("two", "value")), errSecDiskFull);
    EXPECT_EQ(keychain->SecItemDelete(item("one")), errSecDiskFull);
    EXPECT_EQ(keychain->SecItemStoreAll({{item("one", "new"), item("two", std::string(50'000, 'n'))}}), errSecDiskFull);
    EXPECT_EQ(read(*keychain, "one"), "value");
    // After a restart, which has no room for the log's index either.
    keychain.reset();
    keychain = open();
    EXPECT_EQ(read(*keychain, "one"), "value");
    EXPECT_EQ(keychain->SecItemDelete(item("one")), errSecDiskFull);
    EXPECT_EQ(keychain->SecItemDelete(item("none")), errSecItemNotFound);
    full.reset();
    EXPECT_THAT(diagnostics->texts(), Each(HasSubstr("free some space")));
    EXPECT_EQ(keychain->SecItemAdd(item("two", "later")), errSecSuccess);
    EXPECT_EQ(read("one") + " " + read("two"), "value later");
}

/// Damage to the files, seen through the store that the SDK uses.
class KeychainDamageTest : public KeychainDurabilityTest {
protected:
    void SetUp() override {
        KeychainWrapper store{open(), "com.example.host"};
        ASSERT_TRUE(store.set("value", "one"));
        ASSERT_TRUE(store.set(std::string(60, 'v'), "two"));
        sound = contentOf(file);
        key = contentOf(folder / "keychain.key");
    }

    void put(const fs::path& path, const std::string& content) const {
        parent.write(path, content);
        chmod(path.c_str(), 0600);
    }

    /// What the store gives for the first item after these took the place of its files. Storing must go on.
    std::optional<std::string> valueFrom(const std::string& database, const std::optional<std::string>& keyFile) {
        for (const auto& entry : fs::directory_iterator{folder}) {
            fs::remove(entry.path());
        }
        diagnostics->clear();
        put(file, database);
        if (keyFile) {
            put(folder / "keychain.key", *keyFile);
        }
        KeychainWrapper store{open(), "com.example.host"};
        auto found = store.data("one");
        isWrecked = !filesPutAside().empty() && contentOf(folder / "keychain.key") != key;
        EXPECT_TRUE(store.set("anew", "one"));
        EXPECT_EQ(store.data("one"), "anew");
        return found;
    }

    std::string sound;
    std::string key;
    bool isWrecked = false;
};

TEST_F(KeychainDamageTest, AWreckIsPutAsideWithoutItsKeyAndADatabaseWithoutItsKey) {
    auto overwritten = sound;
    overwritten.replace(4096, 6000, 6000, '\xEE');
    auto strange = sound;
    strange.replace(strange.find("class TEXT"), 5, "glass");
    auto halfNewer = sound;
    halfNewer[63] = 2;

    const struct {
        const char* how;
        std::string database;
        std::optional<std::string> keyFile;
        const char* said = "is damaged; it is kept as";
        const char* aside = "keychain.db.corrupt";
    } rows[] = {
        {"no database", "this is not a database, whatever it says", key},
        {"cut off", sound.substr(0, 5000), key},
        {"overwritten in the middle", overwritten, key},
        {"another table", strange, key},
        {"half of a newer version", halfNewer, key},
        {"no key", sound, std::nullopt, "has no usable key file", "keychain.db.without-key"},
        {"a short key", sound, "short", "has no usable key file", "keychain.db.without-key"},
        {"another key", sound, std::string(32, 'k'), "does not open with its key", nullptr},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.how);
        EXPECT_EQ(valueFrom(row.database, row.keyFile), std::nullopt);
        EXPECT_EQ(isWrecked, row.database != sound);
        EXPECT_THAT(diagnostics->texts(), Contains(HasSubstr(row.said)));
        EXPECT_EQ(filesPutAside(), row.aside ? std::set<std::string>{row.aside} : std::set<std::string>{});
    }
}

TEST_F(KeychainDamageTest, AFlippedBitNeverSticksAndNeverChangesAValue) {
    ASSERT_EQ(valueFrom(sound, key), "value");
    // Every bit of the header; beyond, one bit of every byte that is not empty room.
    constexpr std::size_t header = 108;
    for (std::size_t at = 0; at < sound.size(); ++at) {
        for (int bit = 0; bit < 8; ++bit) {
            if (at >= header && (sound[at] == 0 || sound[at] == sound[at - 1] || bit != static_cast<int>(at % 8))) {
                continue;
            }
            SCOPED_TRACE("byte " + std::to_string(at) + ", bit " + std::to_string(bit));
            auto flipped = sound;
            flipped[at] = static_cast<char>(flipped[at] ^ (1 << bit));
            const auto found = valueFrom(flipped, key);
            ASSERT_TRUE(found == "value" || !found) << *found;
            ASSERT_FALSE(HasFailure()) << testing::PrintToString(diagnostics->texts());
        }
    }
}

} // namespace
} // namespace kivo::platform
