#include "platform/linux/DeviceIdentifier.hpp"
#include "support/KeychainFixture.hpp"
#include "support/Program.hpp"

#include <kivo/platform/LinuxServices.hpp>

#include <gmock/gmock.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>

namespace kivo::platform {
namespace {

namespace fs = std::filesystem;

using namespace test;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

void hear(std::shared_ptr<Diagnostics> diagnostics) {
    Services services;
    services.diagnostics = std::move(diagnostics);
    install(std::move(services));
}

/// Who may say what in the files of the data folder, for the keychain and the device identifier alike.
using KeychainFilesTest = KeychainFixture;

TEST_F(KeychainFilesTest, OnlyTheOwnerCanReadThemWhateverTheUmask) {
    const std::function<void()> makers[] = {
        [this] { EXPECT_TRUE(readOrCreateDeviceIdentifier(where).identifier); },
        [this] { EXPECT_EQ(open()->SecItemAdd(item("one", "value")), errSecSuccess); },
    };
    const auto expectPrivate = [this](const std::string& when) {
        for (const auto& entry : fs::recursive_directory_iterator{parent.path()}) {
            EXPECT_EQ(modeOf(entry.path()), entry.is_directory() ? 0700U : 0600U) << entry.path() << " " << when;
        }
    };
    for (const mode_t mask : {0U, 0777U}) {
        for (const auto& make : makers) {
            fs::remove_all(parent.path() / "kivo");
            const auto former = umask(mask);
            make();
            umask(former);
            expectPrivate("under the umask " + std::to_string(mask));
        }
    }
    EXPECT_TRUE(readOrCreateDeviceIdentifier(where).identifier);
    for (const auto& entry : fs::recursive_directory_iterator{parent.path()}) {
        chmod(entry.path().c_str(), entry.is_directory() ? 0755 : 0644);
    }
    EXPECT_EQ(open()->SecItemUpdate(item("one"), value("new")), errSecSuccess);
    EXPECT_TRUE(readOrCreateDeviceIdentifier(where).identifier);
    expectPrivate("after a backup has brought them back");
}

TEST_F(KeychainFilesTest, WhatOthersHaveASayInIsRefused) {
    ASSERT_EQ(open()->SecItemAdd(item("one", "value")), errSecSuccess);
    const auto identifier = readOrCreateDeviceIdentifier(where).identifier;
    const auto elsewhere = parent.path() / "elsewhere";
    using Act = std::function<void(const fs::path&)>;
    const Act restore = [&](const auto& path) {
        fs::remove(path);
        fs::rename(elsewhere, path);
    };

    const struct {
        const char* why;
        Act spoil;
        Act restore;
    } rows[] = {
        {"belongs to the user", [](const auto& path) { EXPECT_EQ(lchown(path.c_str(), 65534, 0), 0); },
         [](const auto& path) { EXPECT_EQ(lchown(path.c_str(), 0, 0), 0); }},
        {"is a symbolic link",
         [&](const auto& path) {
             fs::rename(path, elsewhere);
             fs::create_symlink(elsewhere, path);
         },
         restore},
        {"; remove it",
         [&](const auto& path) {
             fs::rename(path, elsewhere);
             EXPECT_EQ(mkfifo(path.c_str(), 0600), 0);
         },
         restore},
        {"has a second name", [&](const auto& path) { fs::create_hard_link(path, elsewhere); },
         [&](const auto&) { fs::remove(elsewhere); }},
        {"can be written by other users",
         [](const auto& path) { chmod(path.c_str(), fs::is_directory(path) ? 0720 : 0602); },
         [](const auto& path) { chmod(path.c_str(), fs::is_directory(path) ? 0700 : 0600); }},
    };

    for (const auto& path : {parent.path() / "kivo", folder, file, folder / "keychain.key", folder / "keychain.db-wal",
                             folder / "device-id"}) {
        for (const auto& row : rows) {
            const bool isFolder = fs::is_directory(path);
            if ((isFolder && std::string_view{row.why} == "has a second name") ||
                (geteuid() != 0 && std::string_view{row.why} == "belongs to the user")) {
                continue;
            }
            SCOPED_TRACE(path.string() + " " + row.why);
            diagnostics->clear();
            if (!fs::exists(path)) {
                parent.write(path, ""); // a killed process leaves its log
                chmod(path.c_str(), 0600);
            }
            row.spoil(path);
            const auto mode = modeOf(path);
            const auto target = modeOf(elsewhere);
            const auto refused = std::to_string(errSecNotAvailable);
            const bool isForDevice = path.filename() == "device-id";
            if (!isForDevice) {
                EXPECT_EQ(read("one"), refused);
                EXPECT_EQ(open()->SecItemUpdate(item("one"), value("new")), errSecNotAvailable);
                EXPECT_THAT(diagnostics->texts(), Each(testing::AllOf(HasSubstr(path.string()), HasSubstr(row.why))));
                EXPECT_FALSE(diagnostics->texts().empty());
            }
            if (isFolder || isForDevice) {
                EXPECT_THAT(readOrCreateDeviceIdentifier(where).problem, HasSubstr(row.why));
            }
            EXPECT_EQ(modeOf(path), mode) << "what is refused is left alone";
            EXPECT_EQ(modeOf(elsewhere), target);
            row.restore(path);
            ASSERT_EQ(read("one"), "value");
            ASSERT_EQ(readOrCreateDeviceIdentifier(where).identifier, identifier);
        }
    }
    EXPECT_THAT(filesPutAside(), IsEmpty());
}

TEST_F(KeychainFilesTest, AHomeBehindALinkWillDoAndAFileIsReported) {
    fs::create_directory(parent.path() / "disk");
    fs::create_directory_symlink(parent.path() / "disk", parent.path() / "home");
    const auto keychain = makeSqliteKeychain({parent.path() / "home/data", "kivo/host"}, diagnostics);
    EXPECT_EQ(keychain->SecItemAdd(item("one", "value")), errSecSuccess);
    EXPECT_EQ(read(*keychain, "one"), "value");
    EXPECT_EQ(modeOf(parent.path() / "disk/data"), 0700U);
    EXPECT_THAT(diagnostics->texts(), IsEmpty());
    parent.write("file", "in the way");
    const auto stopped = makeSqliteKeychain({parent.path() / "file", "kivo"}, diagnostics);
    EXPECT_EQ(stopped->SecItemAdd(item("one", "value")), errSecIO);
    EXPECT_THAT(diagnostics->texts(), ElementsAre(HasSubstr("Not a directory")));
}

TEST_F(KeychainFilesTest, WithoutAHomeNothingIsKept) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only the superuser can become a user without a home";
    }
    EXPECT_EQ(statusInChild([&] {
                  unsetenv("HOME");
                  unsetenv("XDG_DATA_HOME");
                  setenv("TMPDIR", parent.path().c_str(), 1);
                  chmod(parent.path().c_str(), 0777);
                  if (setuid(54321) != 0) {
                      return 2;
                  }
                  hear(diagnostics);
                  const auto all = linuxServices();
                  const bool isRefused = all.keychain->SecItemAdd(item("one", "value")) == errSecNotAvailable &&
                                         read(*all.keychain, "one") == std::to_string(errSecNotAvailable) &&
                                         !all.device->identifierForVendor();
                  const bool isSaid = diagnostics->texts().size() == 2 &&
                                      diagnostics->texts()[0].contains("set HOME") &&
                                      diagnostics->texts()[1].contains("set HOME");
                  return isRefused && isSaid && fs::is_empty(parent.path()) ? 0 : 1;
              }),
              0);
}

TEST_F(KeychainFilesTest, DiagnosticsThatAreInstalledLateHearOfThem) {
    parent.write("kivo", "in the way");
    LinuxOptions options;
    options.dataFolder = folder;
    install(linuxServices(options));
    const auto keychain = services().keychain;
    hear(diagnostics);
    EXPECT_EQ(read(*keychain, "one"), std::to_string(errSecIO));
    EXPECT_EQ(services().device->identifierForVendor(), std::nullopt);
    EXPECT_THAT(diagnostics->texts(), ElementsAre(HasSubstr("keychain: "), HasSubstr("device: ")));
}

} // namespace
} // namespace kivo::platform
