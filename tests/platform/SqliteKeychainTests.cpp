#include "platform/openssl/SealedValue.hpp"
#include "support/KeychainFixture.hpp"
#include "support/Program.hpp"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <functional>
#include <random>
#include <span>
#include <string_view>
#include <vector>

namespace kivo::platform {
namespace {

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using namespace test;

using SqliteKeychainTest = KeychainFixture;

TEST_F(SqliteKeychainTest, SealsEveryValueAnew) {
    EXPECT_EQ(read("one"), "-25300");
    EXPECT_FALSE(fs::exists(folder)) << "reading makes nothing";
    const std::string secret(64, 's');
    ASSERT_EQ(open()->SecItemAdd(item("one", secret)), errSecSuccess);
    const auto first = execute("SELECT value FROM items");
    ASSERT_EQ(open()->SecItemUpdate(item("one"), value("other")), errSecSuccess);
    ASSERT_EQ(open()->SecItemUpdate(item("one"), value(secret)), errSecSuccess);
    const auto second = execute("SELECT value FROM items");
    ASSERT_EQ(first.size(), 1 + 12 + secret.size() + 16) << "a version, a nonce, the text, a tag";
    ASSERT_EQ(second.size(), first.size());
    EXPECT_NE(first.substr(1, 12), second.substr(1, 12)) << "equal nonces give the key away";
    EXPECT_NE(first.substr(13, secret.size()), second.substr(13, secret.size()));
    EXPECT_EQ(first.find("sss"), std::string::npos);
}

TEST_F(SqliteKeychainTest, ASwappedOrAlteredValueDoesNotOpen) {
    ASSERT_EQ(open()->SecItemAdd(item("one", "first")), errSecSuccess);
    ASSERT_EQ(open()->SecItemAdd(item("two", "second")), errSecSuccess);
    execute("UPDATE items SET value = (SELECT value FROM items WHERE account = 'two') WHERE account = 'one'");
    EXPECT_EQ(read("one"), std::to_string(errSecDecode));
    EXPECT_EQ(read("two"), "second");
    execute("UPDATE items SET account = 'moved' WHERE account = 'two'");
    EXPECT_EQ(read("moved"), std::to_string(errSecDecode));
    execute("UPDATE items SET value = substr(value, 1, 20)");
    EXPECT_EQ(read("one"), std::to_string(errSecDecode));
    EXPECT_THAT(diagnostics->texts(), testing::Each(HasSubstr("does not open with its key")));
    EXPECT_EQ(open()->SecItemUpdate(item("one"), value("mended")), errSecSuccess);
    EXPECT_EQ(read("one"), "mended");
}

TEST_F(SqliteKeychainTest, AValueReadBeforeFollowsEveryChange) {
    const auto keychain = open();
    const auto other = open();
    ASSERT_EQ(other->SecItemAdd(item("one", "old")), errSecSuccess);
    EXPECT_EQ(read(*keychain, "one"), "old");
    ASSERT_EQ(other->SecItemUpdate(item("one"), value("new")), errSecSuccess);
    EXPECT_EQ(read(*keychain, "one"), "new") << "by another process";
    ASSERT_EQ(keychain->SecItemUpdate(item("one"), value("newer")), errSecSuccess);
    EXPECT_EQ(read(*keychain, "one"), "newer") << "by this one";
    ASSERT_EQ(other->SecItemUpdate(item("one"), value("theirs")), errSecSuccess);
    ASSERT_EQ(keychain->SecItemStoreAll(std::array{item("one", "newer")}), errSecSuccess);
    EXPECT_EQ(read("one"), "newer") << "not taken for the value that is there";
    ASSERT_EQ(keychain->SecItemStoreAll(std::array{item("two", "ours"), item("one", "both")}), errSecSuccess);
    EXPECT_EQ(read(*keychain, "one") + read("one") + read("two"), "bothbothours");
    ASSERT_EQ(other->SecItemUpdate(item("one"), value("theirs")), errSecSuccess);
    ASSERT_EQ(keychain->SecItemUpdate(item("two"), value("other")), errSecSuccess);
    EXPECT_EQ(read(*keychain, "one"), "theirs") << "although this one has changed another item since";
    ASSERT_EQ(keychain->SecItemDelete(item("two")), errSecSuccess);
    EXPECT_EQ(read(*keychain, "two"), std::to_string(errSecItemNotFound)) << "another item";
    ASSERT_EQ(other->SecItemDelete(item("one")), errSecSuccess);
    EXPECT_EQ(read(*keychain, "one"), std::to_string(errSecItemNotFound));
}

TEST_F(SqliteKeychainTest, ADatabaseThatIsReplacedWhileOpenIsTakenUp) {
    const auto keychain = open();
    ASSERT_EQ(keychain->SecItemAdd(item("one", "value")), errSecSuccess);
    fs::remove(file);
    EXPECT_EQ(read(*keychain, "one"), "-25300");
    EXPECT_EQ(keychain->SecItemAdd(item("one", "anew")), errSecSuccess);
    EXPECT_EQ(read("one"), "anew");
}

TEST_F(SqliteKeychainTest, LeavesTheDatabaseOfANewerReleaseAlone) {
    const auto keychain = open();
    ASSERT_EQ(keychain->SecItemAdd(item("one", "value")), errSecSuccess);
    const auto markAs = [this](const std::string& version) {
        execute(("PRAGMA user_version = " + version).c_str());
        execute(("PRAGMA application_id = 0x4B49000" + version).c_str());
    };
    const auto expectRefusals = [&](Keychain& refusing) {
        EXPECT_EQ(read(refusing, "one"), std::to_string(errSecNotAvailable));
        EXPECT_EQ(refusing.SecItemAdd(item("two", "new")), errSecNotAvailable);
        EXPECT_EQ(refusing.SecItemUpdate(item("one"), value("new")), errSecNotAvailable);
        EXPECT_EQ(refusing.SecItemDelete(item("one")), errSecNotAvailable);
        EXPECT_THAT(diagnostics->texts().back(), HasSubstr("newer release"));
        EXPECT_THAT(filesPutAside(), IsEmpty());
    };
    for (const auto& opened : {keychain, open()}) {
        markAs("2");
        expectRefusals(*opened);
        markAs("1");
        EXPECT_EQ(read(*opened, "one") + read(*opened, "two"), "value-25300");
    }
}

TEST_F(SqliteKeychainTest, EachCauseHasItsStatusUntilItHasGone) {
    ASSERT_EQ(open()->SecItemAdd(item("one", "value")), errSecSuccess);
    const Unprivileged user{parent.path() / "kivo"};
    const auto withMode = [](const fs::path& path, mode_t mode) {
        return [=](bool isSpoilt) {
            chmod(path.c_str(), isSpoilt ? mode : modeOf(path) | (fs::is_directory(path) ? 0700 : 0600));
        };
    };
    [[maybe_unused]] const auto withFiles = [limit = std::shared_ptr<LowLimit>{}](bool isSpoilt) mutable {
        limit = isSpoilt ? std::make_shared<LowLimit>(RLIMIT_NOFILE, 0) : nullptr;
    };
    const int locked = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const auto whileLocked = [&](bool isHeld) { EXPECT_EQ(flock(locked, isHeld ? LOCK_EX : LOCK_UN), 0); };
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(file.c_str(), &other), SQLITE_OK);
    const auto whileWritten = [&](bool isHeld) {
        EXPECT_EQ(sqlite3_exec(other, isHeld ? "BEGIN EXCLUSIVE" : "ROLLBACK", nullptr, nullptr, nullptr), SQLITE_OK);
    };
    constexpr auto absent = errSecNotAvailable;

    const struct {
        const char* cause;
        std::function<void(bool isSpoilt)> set;
        OSStatus read, added, removed;
        const char* said;
    } rows[] = {
        {"a key without permission", withMode(folder / "keychain.key", 0), absent, absent, errSecItemNotFound,
         "read permission"},
        {"a database without permission", withMode(file, 0), errSecReadOnly, errSecReadOnly, errSecReadOnly,
         "cannot be written (Permission denied)"},
        {"a folder without permission", withMode(folder, 0), errSecReadOnly, errSecReadOnly, errSecReadOnly,
         "cannot be written (Permission denied)"},
        {"a folder to read", withMode(folder, 0500), errSecSuccess, errSecReadOnly, errSecItemNotFound,
         "give this user write permission"},
        {"a folder that another process holds", whileLocked, absent, absent, absent, "held by another process"},
        {"a database that another process changes", whileWritten, errSecSuccess, absent, absent,
         "held by another process"},
#ifndef __SANITIZE_ADDRESS__ // the sanitizer itself needs descriptors
        {"no files", withFiles, absent, absent, absent, "(Too many open files); "},
#endif
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.cause);
        diagnostics->clear();
        row.set(true);
        const auto start = std::chrono::steady_clock::now();
        const auto keychain = makeSqliteKeychain(where, diagnostics, std::chrono::milliseconds{30});
        const auto read = keychain->SecItemCopyMatching(item("one"), nullptr);
        const auto toldOfReading = diagnostics->texts().size();
        const auto added = keychain->SecItemAdd(item("two", "value"));
        const auto removed = keychain->SecItemDelete(item("none"));
        row.set(false);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds{4});
        EXPECT_EQ(read, row.read);
        EXPECT_EQ(toldOfReading == 0, read == errSecSuccess);
        EXPECT_EQ(added, row.added);
        EXPECT_EQ(removed, row.removed);
        const auto told = diagnostics->texts();
        EXPECT_THAT(told, testing::Each(HasSubstr(row.said)));
        EXPECT_EQ(std::ranges::adjacent_find(told), told.end()) << "told again";
        EXPECT_EQ(this->read(*keychain, "one"), "value");
        EXPECT_EQ(keychain->SecItemUpdate(item("one"), value("value")), errSecSuccess) << "without a restart";
    }
    sqlite3_close(other);
    close(locked);
}

TEST_F(SqliteKeychainTest, AForkedChildIsRefusedAndHarmsNothing) {
    auto keychain = open();
    ASSERT_EQ(keychain->SecItemAdd(item("one", "value")), errSecSuccess);
    EXPECT_EQ(statusInChild([&] {
                  const bool isRefused = read(*keychain, "one") == std::to_string(errSecNotAvailable);
                  keychain.reset();
                  return isRefused ? 0 : 1;
              }),
              0);
    EXPECT_EQ(keychain->SecItemUpdate(item("one"), value("new")), errSecSuccess);
    EXPECT_EQ(read("one"), "new");
}

/// A diagnostics object that uses what reports to it.
struct Curious final : Diagnostics {
    void report(std::string_view /*component*/, std::string_view /*text*/) override {
        std::string ignored;
        status = keychain->SecItemCopyMatching(item("one"), &ignored);
    }

    std::shared_ptr<Keychain> keychain;
    OSStatus status = errSecSuccess;
};

TEST_F(SqliteKeychainTest, ReportsWithoutHoldingItsLock) {
    parent.write("kivo", "in the way");
    const auto curious = std::make_shared<Curious>();
    curious->keychain = makeSqliteKeychain(where, curious);
    EXPECT_EQ(curious->keychain->SecItemAdd(item("one", "value")), errSecNotAvailable);
    EXPECT_EQ(curious->status, errSecNotAvailable);
    curious->keychain.reset();
}

/// How often a text stands in the memory that this process can write. Takes the text in disguise, each byte changed by
/// `disguise`, so as not to find itself.
constexpr char disguise = 0x5A;

int countInMemory(std::string_view disguised) {
    int found = 0;
    std::ifstream maps{"/proc/self/maps"};
    for (std::string line; std::getline(maps, line);) {
        std::uintptr_t start = 0;
        std::uintptr_t end = 0;
        std::array<char, 5> rights{};
        if (std::sscanf(line.c_str(), "%lx-%lx %4s", &start, &end, rights.data()) != 3 ||
            std::string_view{rights.data()} != "rw-p") {
            continue;
        }
        // A sanitizer's shadow is terabytes that were never touched.
        if (end - start > std::size_t{1} << 28) {
            continue;
        }
        // The copy lies in shared memory, which is not searched: on the heap the copy would hold itself.
        void* const copy =
            mmap(nullptr, end - start, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        const std::span bytes{static_cast<char*>(copy), end - start};
        const iovec local{copy, bytes.size()};
        const iovec remote{reinterpret_cast<void*>(start), bytes.size()};
        if (process_vm_readv(getpid(), &local, 1, &remote, 1, 0) == static_cast<ssize_t>(bytes.size())) {
            for (auto& byte : bytes) {
                byte ^= disguise;
            }
            const std::string_view memory{bytes.data(), bytes.size()};
            for (auto at = memory.find(disguised); at != std::string_view::npos; at = memory.find(disguised, at + 1)) {
                ++found;
            }
        }
        munmap(copy, bytes.size());
    }
    return found;
}

TEST_F(SqliteKeychainTest, LeavesNeitherKeyNorValueInMemory) {
    std::string disguised(200, '\0');
    std::random_device random;
    for (auto& byte : disguised) {
        byte = static_cast<char>(random());
    }
    const auto secret = [&] {
        std::string text;
        text.reserve(disguised.size());
        for (const char byte : disguised) {
            text += static_cast<char>(byte ^ disguise);
        }
        return text;
    };
    {
        const auto keychain = open();
        auto stored = item("one", secret());
        ASSERT_EQ(keychain->SecItemAdd(stored), errSecSuccess);
        ASSERT_EQ(keychain->SecItemUpdate(item("one"), stored), errSecSuccess) << "compares the two";
        std::string result;
        ASSERT_EQ(keychain->SecItemCopyMatching(item("one"), &result), errSecSuccess);
        EXPECT_EQ(countInMemory(disguised), 3) << "here twice, and as the value that was read last";
        ASSERT_EQ(keychain->SecItemDelete(item("one")), errSecSuccess);
        EXPECT_EQ(countInMemory(disguised), 2) << "here, and nowhere else";
        wipe(result);
        wipe(*stored.kSecValueData);
        EXPECT_EQ(result, "");
    }
    EXPECT_EQ(countInMemory(disguised), 0);

    std::array<char, 32> key{};
    const int descriptor = ::open((folder / "keychain.key").c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(::read(descriptor, key.data(), key.size()), 32);
    close(descriptor);
    for (auto& byte : key) {
        byte ^= disguise;
    }
    EXPECT_EQ(countInMemory({key.data(), key.size()}), 0);
}

} // namespace
} // namespace kivo::platform
