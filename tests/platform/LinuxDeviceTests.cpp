#include "platform/linux/LinuxDevice.hpp"

#include "support/Program.hpp"
#include "support/RecordedDiagnostics.hpp"
#include "support/TemporaryFolder.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <set>

namespace kivo::platform {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;

constexpr auto uuidPattern = "[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}";

class LinuxDeviceTest : public testing::Test {
protected:
    void write(const fs::path& path, const std::string& text) const { temporary.write(path, text); }

    std::optional<std::string> identifier() const { return identifierIn(folder / "data"); }

    std::optional<std::string> identifierIn(const fs::path& data) const {
        return makeLinuxDevice(data, diagnostics)->identifierForVendor();
    }

    const test::TemporaryFolder temporary;
    const fs::path& folder = temporary.path();
    std::shared_ptr<test::RecordedDiagnostics> diagnostics = std::make_shared<test::RecordedDiagnostics>();
};

TEST_F(LinuxDeviceTest, KeepsOneRandomIdentifierPerDataFolder) {
    const auto first = identifierIn(folder / "a/b");
    ASSERT_TRUE(first);
    EXPECT_THAT(*first, MatchesRegex(uuidPattern));
    EXPECT_NE(identifierIn(folder / "c"), first);
    EXPECT_EQ(std::distance(fs::directory_iterator{folder / "a/b"}, {}), 1) << "no draft stays behind";
    write(folder / "data/device-id", "01234567-89ab-cdef-0123-456789abcdef");
    EXPECT_EQ(identifier(), "01234567-89AB-CDEF-0123-456789ABCDEF");
    EXPECT_THAT(diagnostics->texts(), IsEmpty());
}

TEST_F(LinuxDeviceTest, PutsADamagedIdentifierAside) {
    for (const std::string damaged : {"", "01234567-89ab", "01234567-89ab-cdef-0123-456789abcdeg\n",
                                      "01234567-89ab-cdef-0123-456789abcdef and more"}) {
        diagnostics->clear();
        write(folder / "data/device-id", damaged);
        const auto fresh = identifier();
        ASSERT_TRUE(fresh) << damaged;
        EXPECT_THAT(*fresh, MatchesRegex(uuidPattern));
        EXPECT_EQ(identifier(), fresh);
        EXPECT_EQ(test::contentOf(folder / "data/device-id.damaged"), damaged);
        EXPECT_THAT(diagnostics->texts(), ElementsAre(HasSubstr("was damaged; it is kept as")));
    }
}

TEST_F(LinuxDeviceTest, GivesManyProcessesTheSameIdentifier) {
    for (const bool damaged : {false, true}) {
        if (damaged) {
            write(folder / "data/device-id", "damaged");
        }
        std::vector<pid_t> children;
        for (int i = 0; i < 8; ++i) {
            children.push_back(fork());
            ASSERT_GE(children.back(), 0);
            if (children.back() == 0) {
                write(folder / ("seen" + std::to_string(i)), identifier().value_or("none"));
                _exit(0);
            }
        }
        std::set<std::string> seen;
        for (std::size_t i = 0; i < children.size(); ++i) {
            waitpid(children[i], nullptr, 0);
            seen.insert(test::contentOf(folder / ("seen" + std::to_string(i))));
        }
        EXPECT_THAT(seen, ElementsAre(MatchesRegex(uuidPattern)));
    }
}

TEST_F(LinuxDeviceTest, HasNoIdentifierInAFolderThatCannotBeWritten) {
    write(folder / "file", "");
    fs::create_directory(folder / "locked");
    chmod((folder / "locked").c_str(), 0505);
    const test::Unprivileged user{folder / "locked"};
    const std::vector<fs::path> places{folder / "file", folder / "file/below", folder / "locked", {}};
    for (const auto& place : places) {
        diagnostics->clear();
        const auto device = makeLinuxDevice(place, diagnostics);
        EXPECT_EQ(device->identifierForVendor(), std::nullopt) << place;
        EXPECT_EQ(device->identifierForVendor(), std::nullopt) << place;
        EXPECT_EQ(diagnostics->texts().size(), 1U) << place;
        EXPECT_THAT(diagnostics->texts().front(), HasSubstr("device: The")) << place;
    }
}

TEST_F(LinuxDeviceTest, NamesInterfacesByTheirKind) {
    const auto interface = [&](const std::string& name, const std::string& type, std::initializer_list<const char*> has,
                               const std::string& uevent = "") {
        write(folder / name / "type", type + "\n");
        write(folder / name / "uevent", uevent + "INTERFACE=" + name + "\n");
        for (const auto* entry : has) {
            fs::create_directory(folder / name / entry);
        }
    };
    interface("lo", "772", {});
    interface("wlp3s0", "1", {"device", "wireless"});
    interface("wlan1", "1", {"device", "phy80211"}, "DEVTYPE=wlan\n");
    interface("wwp0s20", "1", {"device"}, "DEVTYPE=wwan\n");
    interface("can0", "280", {"device"});
    interface("docker0", "1", {}, "DEVTYPE=bridge\n");
    for (const auto* name : {"eth0", "enp1s0", "eth1", "eth2"}) {
        interface(name, "1", {"device"});
    }
    InterfaceNames names{folder};
    const std::vector<std::pair<std::string, std::string>> expected{
        {"lo", "lo"},         {"eth0", "en2"},     {"wlp3s0", "en0"}, {"wwp0s20", "pdp_ip0"},
        {"wwan0", "pdp_ip1"}, {"ppp0", "pdp_ip2"}, {"wlan1", "en0"},  {"docker0", "docker0"},
        {"enp1s0", "en3"},    {"can0", "can0"},    {"eth1", "en4"},   {"eth2", "eth2"},
        {"ppp1", "pdp_ip3"},  {"ppp2", "ppp2"},    {"eth0", "en2"},   {"gone0", "gone0"},
    };
    for (const auto& [name, phoneName] : expected) {
        EXPECT_EQ(names.phoneName(name), phoneName);
    }
}

TEST_F(LinuxDeviceTest, DescribesTheMachine) {
    for (const auto& [release, version] :
         std::initializer_list<std::pair<const char*, const char*>>{{"NAME=\"X\"\nVERSION_ID=\"12.5\"\nID=x\n", "12.5"},
                                                                    {"VERSION_ID='39'", "39"},
                                                                    {"VERSION_ID=3.19.1\n", "3.19.1"},
                                                                    {"OLD_VERSION_ID=1\n\nNAME=rolling\n", ""},
                                                                    {"", ""}}) {
        EXPECT_EQ(versionOfRelease(release), version);
    }
    const auto device = makeLinuxDevice(folder, diagnostics);
    utsname system{};
    ASSERT_EQ(uname(&system), 0);
    EXPECT_EQ(device->machine(), system.machine);
    const auto addresses = device->interfaceAddresses();
    EXPECT_TRUE(std::ranges::any_of(addresses, [](const auto& address) {
        return address.interfaceName == "lo" && address.numericHost == "127.0.0.1";
    }));
}

} // namespace
} // namespace kivo::platform
