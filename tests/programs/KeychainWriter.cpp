// Writes numbered values into one item of a keychain until it is killed, and says on standard output which number is
// safely in. Argument: the keychain's folder.

#include "linux/SqliteKeychain.hpp"

#include <unistd.h>

#include <cstdio>
#include <string>

namespace {

class Silent final : public kivo::platform::Diagnostics {
public:
    void report(std::string_view, std::string_view) override {}
};

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        return 2;
    }
    const auto keychain = kivo::platform::makeSqliteKeychain(argv[1], std::make_shared<Silent>());
    kivo::platform::KeychainAttributes item;
    item.kSecAttrService = "com.example.host";
    item.kSecAttrAccount = "counter";
    std::string stored;
    item.kSecReturnData = true;
    const bool isThere = keychain->SecItemCopyMatching(item, &stored) == kivo::platform::errSecSuccess;
    for (int number = isThere ? std::stoi(stored) + 1 : 1;; ++number) {
        auto change = item;
        // Long enough for many pages, so that a torn write would show.
        change.kSecValueData = std::to_string(number) + std::string(20'000, static_cast<char>('a' + number % 26));
        const auto status = number == 1 ? keychain->SecItemAdd(change) : keychain->SecItemUpdate(item, change);
        if (status != kivo::platform::errSecSuccess) {
            return 3;
        }
        const auto line = std::to_string(number) + "\n";
        if (write(STDOUT_FILENO, line.data(), line.size()) < 0) {
            return 4;
        }
    }
}
