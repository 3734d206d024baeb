#include "linux/SqliteKeychain.hpp"

#include "support/RecordedDiagnostics.hpp"
#include "support/TemporaryFolder.hpp"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sqlite3.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <functional>
#include <mutex>
#include <random>
#include <set>
#include <thread>

namespace kivo::platform {
namespace {

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

KeychainAttributes item(std::string account, std::optional<std::string> value = {},
                        std::optional<std::string> group = {}) {
    KeychainAttributes attributes;
    attributes.kSecAttrService = "com.example.host";
    attributes.kSecAttrAccount = std::move(account);
    attributes.kSecAttrAccessGroup = std::move(group);
    attributes.kSecValueData = std::move(value);
    attributes.kSecReturnData = true;
    return attributes;
}

KeychainAttributes value(std::string text) {
    KeychainAttributes change;
    change.kSecValueData = std::move(text);
    return change;
}

class SqliteKeychainTest : public testing::Test {
protected:
    std::shared_ptr<Keychain> open() const { return makeSqliteKeychain(folder, diagnostics); }

    /// The stored text, or the status.
    std::string read(const std::string& account, std::optional<std::string> group = {}) const {
        return read(*open(), account, std::move(group));
    }

    static std::string read(Keychain& keychain, const std::string& account, std::optional<std::string> group = {}) {
        std::string result;
        const auto status = keychain.SecItemCopyMatching(item(account, {}, std::move(group)), &result);
        return status == errSecSuccess ? result : std::to_string(status);
    }

    void execute(const char* sql) const {
        sqlite3* database = nullptr;
        ASSERT_EQ(sqlite3_open((folder / "keychain.db").c_str(), &database), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(database, sql, nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(database);
        sqlite3_close(database);
    }

    std::set<std::string> filesPutAside() const {
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator{folder}) {
            const auto name = entry.path().filename().string();
            if (name.find("-20") != std::string::npos) {
                names.insert(name.substr(0, name.find("-20")));
            }
        }
        return names;
    }

    static mode_t modeOf(const fs::path& path) {
        struct stat file{};
        return stat(path.c_str(), &file) == 0 ? file.st_mode & 0777 : 0;
    }

    const test::TemporaryFolder parent;
    const fs::path folder = parent.path() / "kivo" / "com.example.host";
    const std::shared_ptr<test::RecordedDiagnostics> diagnostics = std::make_shared<test::RecordedDiagnostics>();
};

TEST_F(SqliteKeychainTest, KeepsItemsApartByIdentityAndForTheNextProcess) {
    EXPECT_EQ(read("one"), "-25300");
    EXPECT_FALSE(fs::exists(folder)) << "reading makes nothing";
    {
        const auto keychain = open();
        EXPECT_EQ(keychain->SecItemAdd(item("one", "first")), errSecSuccess);
        EXPECT_EQ(keychain->SecItemAdd(item("one", "again")), errSecDuplicateItem);
        EXPECT_EQ(keychain->SecItemAdd(item("one", "in a group", "group")), errSecSuccess);
        EXPECT_EQ(keychain->SecItemAdd(item("two", std::string{"\0\xFF", 2})), errSecSuccess);
    }
    const auto keychain = open();
    EXPECT_EQ(read(*keychain, "one"), "first");
    EXPECT_EQ(read(*keychain, "one", "group"), "in a group");
    EXPECT_EQ(read(*keychain, "two"), (std::string{"\0\xFF", 2}));
    EXPECT_EQ(keychain->SecItemUpdate(item("one"), value("both")), errSecSuccess);
    EXPECT_EQ(read(*keychain, "one", "group"), "both") << "an absent attribute matches every item";
    EXPECT_EQ(keychain->SecItemUpdate(item("three"), value("")), errSecItemNotFound);
    EXPECT_EQ(keychain->SecItemDelete(item("one")), errSecSuccess);
    EXPECT_EQ(keychain->SecItemDelete(item("one")), errSecItemNotFound);
    EXPECT_EQ(read(*keychain, "one", "group"), "-25300");
    EXPECT_THAT(diagnostics->texts(), IsEmpty());
}

TEST_F(SqliteKeychainTest, MatchesAndChangesTheAccessibility) {
    const auto keychain = open();
    auto unlocked = item("one", "value");
    unlocked.kSecAttrAccessible = "ak";
    ASSERT_EQ(keychain->SecItemAdd(unlocked), errSecSuccess);
    auto query = item("one");
    query.kSecAttrAccessible = "ck";
    EXPECT_EQ(keychain->SecItemUpdate(query, value("new")), errSecItemNotFound);
    KeychainAttributes change;
    change.kSecAttrAccessible = "ck";
    EXPECT_EQ(keychain->SecItemUpdate(item("one"), change), errSecSuccess);
    std::string found;
    EXPECT_EQ(keychain->SecItemCopyMatching(query, &found), errSecSuccess);
    EXPECT_EQ(found, "value");
}

TEST_F(SqliteKeychainTest, OnlyTheOwnerCanReadItsFiles) {
    umask(0);
    ASSERT_EQ(open()->SecItemAdd(item("one", "value")), errSecSuccess);
    EXPECT_EQ(modeOf(folder), 0700U);
    for (const auto& entry : fs::directory_iterator{folder}) {
        EXPECT_EQ(modeOf(entry.path()), 0600U) << entry.path();
        chmod(entry.path().c_str(), 0644); // as a backup may bring it back
    }
    const auto keychain = open();
    EXPECT_EQ(keychain->SecItemUpdate(item("one"), value("new")), errSecSuccess);
    for (const auto& entry : fs::directory_iterator{folder}) {
        EXPECT_EQ(modeOf(entry.path()), 0600U) << entry.path();
    }
}

TEST_F(SqliteKeychainTest, ShowsNoValueInItsFiles) {
    const auto keychain = open();
    ASSERT_EQ(keychain->SecItemAdd(item("one", "a very recognisable secret")), errSecSuccess);
    for (const auto& entry : fs::directory_iterator{folder}) {
        std::ifstream file{entry.path(), std::ios::binary};
        const std::string content{std::istreambuf_iterator<char>{file}, {}};
        EXPECT_THAT(content, testing::Not(HasSubstr("recognisable"))) << entry.path();
    }
}

TEST_F(SqliteKeychainTest, ACopyWithoutItsKeyOpensNothing) {
    ASSERT_EQ(open()->SecItemAdd(item("one", "value")), errSecSuccess);
    fs::remove(folder / "keychain.key");
    EXPECT_EQ(read("one"), std::to_string(errSecDecode));
    EXPECT_THAT(diagnostics->texts(), ElementsAre(HasSubstr("has no usable key file")));

    parent.write(folder / "keychain.key", std::string(32, 'k'));
    EXPECT_EQ(read("one"), std::to_string(errSecDecode)) << "under another key";
    fs::remove(folder / "keychain.key");

    const auto keychain = open();
    EXPECT_EQ(keychain->SecItemAdd(item("one", "anew")), errSecSuccess);
    EXPECT_EQ(read(*keychain, "one"), "anew");
    EXPECT_THAT(filesPutAside(), ElementsAre("keychain.db.without-key"));
}

TEST_F(SqliteKeychainTest, ADamagedKeyFileIsPutAsideByTheNextWrite) {
    ASSERT_EQ(open()->SecItemAdd(item("one", "value")), errSecSuccess);
    parent.write(folder / "keychain.key", "short");
    EXPECT_EQ(read("one"), std::to_string(errSecDecode));
    EXPECT_EQ(open()->SecItemAdd(item("two", "anew")), errSecSuccess);
    EXPECT_EQ(read("two"), "anew");
    EXPECT_THAT(filesPutAside(), ElementsAre("keychain.db.without-key", "keychain.key.damaged"));
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

TEST_F(SqliteKeychainTest, PutsADamagedDatabaseAside) {
    const struct {
        const char* how;
        std::function<void(const fs::path&)> damage;
    } rows[] = {
        {"no database", [&](const fs::path& file) { parent.write(file, "this is not a database, whatever it says"); }},
        {"cut off", [](const fs::path& file) { fs::resize_file(file, 5000); }},
        {"overwritten in the middle",
         [](const fs::path& file) {
             std::fstream stream{file, std::ios::in | std::ios::out | std::ios::binary};
             stream.seekp(4096);
             stream << std::string(6000, '\xEE');
         }},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.how);
        fs::remove_all(folder);
        {
            const auto keychain = open();
            ASSERT_EQ(keychain->SecItemAdd(item("one", std::string(9000, 'v'))), errSecSuccess);
        }
        row.damage(folder / "keychain.db");
        EXPECT_EQ(read("one"), "-25300");
        EXPECT_THAT(filesPutAside(), testing::Contains("keychain.db.corrupt"));
        EXPECT_THAT(diagnostics->texts().back(), HasSubstr("is damaged; it is kept as"));
        EXPECT_EQ(open()->SecItemAdd(item("one", "anew")), errSecSuccess);
        EXPECT_EQ(read("one"), "anew");
    }
}

TEST_F(SqliteKeychainTest, ADatabaseThatIsReplacedWhileOpenIsTakenUp) {
    const auto keychain = open();
    ASSERT_EQ(keychain->SecItemAdd(item("one", "value")), errSecSuccess);
    for (const auto* name : {"keychain.db", "keychain.db-wal", "keychain.db-shm"}) {
        fs::remove(folder / name);
    }
    EXPECT_EQ(read(*keychain, "one"), "-25300");
    EXPECT_EQ(keychain->SecItemAdd(item("one", "anew")), errSecSuccess);
    EXPECT_EQ(read("one"), "anew");
}

TEST_F(SqliteKeychainTest, LeavesTheDatabaseOfANewerReleaseAlone) {
    ASSERT_EQ(open()->SecItemAdd(item("one", "value")), errSecSuccess);
    execute("PRAGMA user_version = 2");
    EXPECT_EQ(read("one"), std::to_string(errSecNotAvailable));
    EXPECT_EQ(open()->SecItemUpdate(item("one"), value("new")), errSecNotAvailable);
    EXPECT_THAT(diagnostics->texts().back(), HasSubstr("newer release"));
    execute("PRAGMA user_version = 1");
    EXPECT_EQ(read("one"), "value");
}

TEST_F(SqliteKeychainTest, AFolderWithoutWritePermissionKeepsItsValuesReadable) {
    ASSERT_EQ(open()->SecItemAdd(item("one", "value")), errSecSuccess);
    if (geteuid() == 0) {
        // Permissions do not bind the superuser.
        chmod(parent.path().c_str(), 0755);
        chmod((parent.path() / "kivo").c_str(), 0755);
        for (const auto& entry : fs::directory_iterator{folder}) {
            ASSERT_EQ(chown(entry.path().c_str(), 65534, 65534), 0);
        }
        ASSERT_EQ(chown(folder.c_str(), 65534, 65534), 0);
        ASSERT_EQ(seteuid(65534), 0);
    }
    chmod(folder.c_str(), 0500);
    EXPECT_EQ(read("one"), "value");
    EXPECT_THAT(diagnostics->texts(), IsEmpty());
    const auto keychain = open();
    EXPECT_EQ(keychain->SecItemUpdate(item("one"), value("new")), errSecReadOnly);
    EXPECT_THAT(diagnostics->texts(), ElementsAre(HasSubstr("give this user write permission")));
    EXPECT_EQ(makeSqliteKeychain(folder / "below", diagnostics)->SecItemAdd(item("one", "value")), errSecReadOnly);
    EXPECT_EQ(read("one"), "value");
    chmod(folder.c_str(), 0700);
    EXPECT_EQ(keychain->SecItemUpdate(item("one"), value("new")), errSecSuccess) << "without a restart";
    if (getuid() == 0) {
        ASSERT_EQ(seteuid(0), 0);
    }
}

TEST_F(SqliteKeychainTest, AFullDiskLosesNothing) {
    const auto keychain = open();
    ASSERT_EQ(keychain->SecItemAdd(item("one", "value")), errSecSuccess);
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit former{};
    getrlimit(RLIMIT_FSIZE, &former);
    const rlimit full{.rlim_cur = fs::file_size(folder / "keychain.db-wal"), .rlim_max = former.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &full), 0);
    EXPECT_EQ(keychain->SecItemUpdate(item("one"), value(std::string(50'000, 'n'))), errSecDiskFull);
    EXPECT_EQ(keychain->SecItemAdd(item("two", "value")), errSecDiskFull);
    EXPECT_EQ(read(*keychain, "one"), "value");
    setrlimit(RLIMIT_FSIZE, &former);
    EXPECT_THAT(diagnostics->texts(), testing::Each(HasSubstr("free some space")));
    EXPECT_EQ(keychain->SecItemAdd(item("two", "later")), errSecSuccess);
    EXPECT_EQ(read("one") + " " + read("two"), "value later");
}

TEST_F(SqliteKeychainTest, AFileInTheFoldersPlaceIsReported) {
    parent.write("kivo", "in the way");
    EXPECT_EQ(read("one"), "-25300");
    EXPECT_EQ(open()->SecItemAdd(item("one", "value")), errSecIO);
    EXPECT_THAT(diagnostics->texts(), ElementsAre(HasSubstr("Not a directory")));
}

TEST_F(SqliteKeychainTest, ConcurrencyOfThreadsAndKeychainsOnOneFolder) {
    const auto shared = open();
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([this, shared, t] {
            const auto keychain = t % 2 == 0 ? shared : open();
            for (int i = 0; i < 25; ++i) {
                const auto account = "item " + std::to_string(t) + "/" + std::to_string(i);
                EXPECT_EQ(keychain->SecItemAdd(item(account, account)), errSecSuccess);
                EXPECT_EQ(keychain->SecItemUpdate(item(account), value("new " + account)), errSecSuccess);
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    for (int t = 0; t < 4; ++t) {
        for (int i = 0; i < 25; ++i) {
            const auto account = "item " + std::to_string(t) + "/" + std::to_string(i);
            EXPECT_EQ(read(*shared, account), "new " + account);
        }
    }
    EXPECT_THAT(diagnostics->texts(), IsEmpty());
}

/// A `KeychainWriter` process.
class Writer {
public:
    explicit Writer(const fs::path& folder) {
        int ends[2];
        EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
        std::string program = KIVO_TEST_PROGRAMS "/KeychainWriter";
        std::string argument = folder.string();
        char* const arguments[] = {program.data(), argument.data(), nullptr};
        EXPECT_EQ(posix_spawn(&child_, program.c_str(), &actions, nullptr, arguments, environ), 0);
        posix_spawn_file_actions_destroy(&actions);
        close(ends[1]);
        output_ = fdopen(ends[0], "r");
    }

    ~Writer() { std::fclose(output_); }

    /// Waits for the first number, lets the writer go on for that long, and kills it. Returns the last number it told.
    int killAfter(std::chrono::microseconds time) {
        int number = -1;
        EXPECT_EQ(std::fscanf(output_, "%d", &number), 1);
        std::this_thread::sleep_for(time);
        kill(child_, SIGKILL);
        int status = 0;
        waitpid(child_, &status, 0);
        EXPECT_TRUE(WIFSIGNALED(status)) << "the writer ended by itself";
        while (std::fscanf(output_, "%d", &number) == 1) {
        }
        return number;
    }

private:
    pid_t child_ = -1;
    std::FILE* output_ = nullptr;
};

TEST_F(SqliteKeychainTest, AKilledWriterLeavesTheOldOrTheNewValue) {
    constexpr int kills = 200;
    std::minstd_rand random{20261124};
    std::uniform_int_distribution<> microseconds{0, 6000};
    int previous = 0;
    for (int round = 0; round < kills; ++round) {
        const int told = Writer{folder}.killAfter(std::chrono::microseconds{microseconds(random)});
        const auto stored = read("counter");
        const int number = std::stoi(stored);
        ASSERT_GE(number, told) << "what was answered with success is gone";
        ASSERT_LE(number, told + 1);
        ASSERT_GT(number, previous);
        ASSERT_EQ(stored, std::to_string(number) + std::string(20'000, static_cast<char>('a' + number % 26)));
        previous = number;
    }
    EXPECT_THAT(diagnostics->texts(), IsEmpty());
}

} // namespace
} // namespace kivo::platform
