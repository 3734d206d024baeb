// Stores, replaces and deletes an item of a keychain, and tells on standard output each change that is safely in and
// each step towards it that the system sees. Arguments: the keychain's folder, and the number of the step before which
// the program kills itself (0: none).

#include "platform/base/DiagnosticsRelay.hpp"
#include "platform/sqlite/SqliteKeychain.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

int lastStep = 0;
int stepsSoFar = 0;

void tell(const std::string& line) {
    syscall(SYS_write, STDOUT_FILENO, line.data(), line.size());
}

void step(const char* what, const std::filesystem::path& path) {
    tell(std::string{what} + " " + path.filename().string() + "\n");
    if (++stepsSoFar == lastStep) {
        kill(getpid(), SIGKILL);
    }
}

void step(const char* what, int descriptor) {
    step(what, std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(descriptor)));
}

} // namespace

// In place of the C library's functions, for SQLite and the keychain alike.
#define SEEN extern "C" __attribute__((visibility("default")))
#define CALL(number, ...) static_cast<int>(syscall(number, __VA_ARGS__))

SEEN int mkdirat(int folder, const char* name, mode_t mode) noexcept {
    step("make", name);
    return CALL(SYS_mkdirat, folder, name, mode);
}

SEEN int fchmod(int file, mode_t mode) noexcept {
    step("mode", file);
    return CALL(SYS_fchmod, file, mode);
}

SEEN ssize_t write(int file, const void* bytes, std::size_t size) {
    step("change", file);
    return syscall(SYS_write, file, bytes, size);
}

SEEN ssize_t pwrite64(int file, const void* bytes, std::size_t size, off64_t offset) {
    step("change", file);
    return syscall(SYS_pwrite64, file, bytes, size, offset);
}

SEEN int ftruncate64(int file, off64_t size) noexcept {
    const auto name = std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(file)).string();
    step(size == 0 && name.ends_with("-wal") ? "empty" : "change", file);
    return CALL(SYS_ftruncate, file, size);
}

SEEN int fsync(int file) {
    step("sync", file);
    return CALL(SYS_fsync, file);
}

SEEN int fdatasync(int file) {
    step("sync", file);
    return CALL(SYS_fdatasync, file);
}

SEEN int renameat(int from, const char* name, int to, const char* newName) noexcept {
    step("name", newName);
    return CALL(SYS_renameat, from, name, to, newName);
}

SEEN int unlink(const char* path) noexcept {
    step("remove", path);
    return CALL(SYS_unlinkat, AT_FDCWD, path, 0);
}

int main(int argc, char** argv) {
    if (argc != 3) {
        return 2;
    }
    using namespace kivo::platform;
    lastStep = std::atoi(argv[2]);
    const DataFolder folder{std::string{argv[1]}, "kivo/com.example.host"};
    const auto keychain = makeSqliteKeychain(folder, standardErrorDiagnostics());
    KeychainAttributes item;
    item.kSecAttrService = "com.example.host";
    item.kSecAttrAccount = "one";
    auto change = item;
    const auto done = [](OSStatus status) {
        if (status != errSecSuccess) {
            std::exit(3);
        }
        tell("told\n");
    };
    change.kSecValueData = "first";
    done(keychain->SecItemAdd(change));
    // Long enough for many pages, so that a torn write would show.
    change.kSecValueData = std::string(20'000, 's');
    done(keychain->SecItemUpdate(item, change));
    change.kSecValueData = "third";
    done(keychain->SecItemUpdate(item, change));
    change.kSecValueData = "";
    done(keychain->SecItemStoreAll({{change}}, KeychainDurability::withNextChange));
    auto other = item;
    other.kSecAttrAccount = "two";
    other.kSecValueData = change.kSecValueData = "fifth";
    done(keychain->SecItemStoreAll({{change, other}}));
    done(keychain->SecItemDelete(item));
    return 0;
}
