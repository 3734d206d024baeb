#include "support/Program.hpp"

#include <kivo/simulator/IdentityService.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kivo::test {
namespace {

using simulator::CertificateAuthority;
using simulator::KeyType;
using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::Not;

class KivoPins : public ::testing::Test, protected ShellInAFolder {
protected:
    Ended run(const std::string& arguments) const { return ShellInAFolder::run("kivo-pins " + arguments); }

    static std::string list(const std::string& entries) {
        return R"(<?xml version="1.0"?><plist version="1.0"><array>)" + entries + "</array></plist>";
    }

    const CertificateAuthority authority;
};

TEST_F(KivoPins, PrintsThePinsOfCertificatesKeysAndServers) {
    for (const auto type : {KeyType::rsa2048, KeyType::ec256}) {
        const auto issued = authority.issue({.keyType = type});
        folder.write("chain.pem", issued.chain);
        folder.write("key.pem", issued.privateKey);
        const auto chain = run("chain.pem");
        EXPECT_TRUE(chain.hasExitedWith(0));
        EXPECT_THAT(chain.output, HasSubstr("leaf  CN = localhost\n"));
        EXPECT_THAT(chain.output, ContainsRegex("in (364|365) days"));
        EXPECT_THAT(chain.output, HasSubstr(" " + issued.pins.leaf + "\n"));
        EXPECT_THAT(chain.output, HasSubstr(" " + issued.pins.intermediate + "\n"));
        const auto key = run("key.pem").output;
        EXPECT_THAT(key, HasSubstr(" " + issued.pins.leaf + "\n"));
        EXPECT_EQ(key.contains("Not the standard pin"), type != KeyType::rsa2048);
        EXPECT_THAT(run("--only intermediate chain.pem").output, Not(HasSubstr(issued.pins.leaf)));
    }
    const simulator::IdentityService service;
    const auto live = run("localhost:" + std::to_string(service.port()));
    EXPECT_TRUE(live.hasExitedWith(0));
    EXPECT_THAT(live.output, HasSubstr(service.pins().leaf));
    EXPECT_THAT(live.output, HasSubstr(service.pins().intermediate));
    EXPECT_EQ(service.connections(), 0U);
}

TEST_F(KivoPins, KeepsAListAndLooksIntoIt) {
    const auto first = authority.issue({});
    const auto second = authority.issue({.keyType = KeyType::ec256});
    folder.write("first.pem", first.chain);
    folder.write("second.pem", second.privateKey);
    EXPECT_THAT(run("--write pins.plist --only leaf first.pem").output, HasSubstr("added 1 pin, 1 pin in all"));
    EXPECT_TRUE(run("--check pins.plist first.pem").hasExitedWith(0));
    EXPECT_TRUE(run("--check pins.plist second.pem").hasExitedWith(1));
    EXPECT_THAT(run("--write pins.plist second.pem").output, HasSubstr("added 1 pin, 2 pins in all"));
    EXPECT_THAT(run("--write pins.plist second.pem").output, HasSubstr("added 0 pins, 2 pins in all"));
    EXPECT_TRUE(run("--check pins.plist second.pem").hasExitedWith(0));
    EXPECT_TRUE(run("--check pins.plist first.pem").hasExitedWith(0));
    EXPECT_TRUE(run("--check pins.plist").hasExitedWith(0));
}

TEST_F(KivoPins, LosesNothingThatSeveralWriteAtOnceThroughALink) {
    const auto list =
        folder.write("shared/pins.plist", this->list("<string>" + authority.issue({}).pins.leaf + "</string>"));
    std::filesystem::create_symlink("shared/pins.plist", folder.path() / "pins.plist");
    std::filesystem::permissions(list, std::filesystem::perms{0640});
    const bool mayGiveAway = chown(list.c_str(), 1, 1) == 0;
    constexpr int writers = 6;
    for (int i = 0; i < writers; ++i) {
        folder.write("key" + std::to_string(i), authority.issue({.keyType = KeyType::ec256}).privateKey);
    }
    const auto ended = run("key0; for key in key*; do kivo-pins --write pins.plist $key & done; wait; ls -A shared");
    EXPECT_THAT(ended.output, HasSubstr("in all\npins.plist\n"));
    EXPECT_THAT(run("--check pins.plist").output, HasSubstr(": 7 pins"));
    EXPECT_TRUE(std::filesystem::is_symlink(folder.path() / "pins.plist"));
    struct stat status{};
    ASSERT_EQ(stat(list.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0640U);
    EXPECT_EQ(status.st_uid, mayGiveAway ? 1U : geteuid());
}

TEST_F(KivoPins, SaysWhatIsWrong) {
    const auto issued = authority.issue({});
    folder.write("leaf.pem", issued.chain);
    folder.write("cut.pem", issued.chain.substr(0, issued.chain.size() - 200));
    folder.write("key.pem", issued.privateKey);
    folder.write("large", std::string(std::size_t{5} << 20U, 'x'));
    ShellInAFolder::run("openssl pkcs8 -topk8 -in key.pem -outform DER -passout pass:x -out locked.der");
    folder.write("junk", "junk");
    folder.write("empty.plist", list(""));
    folder.write("faulty.plist", list("<string>a b</string><integer>1</integer>"));

    const struct {
        const char* arguments;
        int status;
        const char* complaint;
    } rows[] = {
        {"", 2, "name a file or a server"},
        {"--bogus", 2, "unknown option \"--bogus\""},
        {"--write", 2, "--write needs a value: --write FILE.plist"},
        {"--only root leaf.pem", 2, "--only takes leaf or intermediate, not \"root\""},
        {"- <leaf.pem", 0, "standard input\n  leaf  CN = localhost\n"},
        {"- <&-", 2, "standard input cannot be read (Bad file descriptor)"},
        {"- </dev/zero", 2, "standard input is larger than 4 MiB"},
        {"large", 2, "large is larger than 4 MiB"},
        {". leaf.pem", 2, ". cannot be read (Is a directory)"},
        {"cut.pem", 0, "left out of cut.pem: part 2 of 2 is cut off"},
        {"locked.der", 2, "locked.der is encrypted"},
        {"::1", 2, "in brackets"},
        {"http://localhost", 2, "only https:// has certificates"},
        {"junk", 2, "junk holds neither a certificate nor a key"},
        {"none/leaf.pem", 2, "there is no file \"none/leaf.pem\""},
        {"localhost:1", 2, "Could not connect to localhost port 1"},
        {"--check none.plist", 2, "none.plist does not exist"},
        {"--check junk", 2, "junk is not a well-formed"},
        {"--check empty.plist", 1, "it is empty"},
        {"--check faulty.plist", 1, "entry 1 has white space in it"},
        {"--check faulty.plist", 1, "entry 2 is not text"},
        {"--write faulty.plist leaf.pem", 2, "not a list of pins; move it away"},
        {"--write none/pins.plist leaf.pem", 2, "none/pins.plist cannot be written (No such file"},
    };

    for (const auto& row : rows) {
        const auto ended = run(row.arguments);
        EXPECT_TRUE(ended.hasExitedWith(row.status)) << row.arguments;
        EXPECT_THAT(ended.output, HasSubstr(row.complaint)) << row.arguments;
    }
}

} // namespace
} // namespace kivo::test
