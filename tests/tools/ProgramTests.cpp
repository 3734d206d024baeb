#include "support/Program.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <map>
#include <set>
#include <sstream>

namespace kivo::test {
namespace {

using ::testing::HasSubstr;

class Programs : public ::testing::Test, protected ShellInAFolder {};

/// The device is built only where Qt is installed.
bool isBuilt(const std::string& line) {
    return !line.contains("kivo-device") || std::filesystem::exists(KIVO_TEST_PROGRAMS "/kivo-device");
}

TEST_F(Programs, EndWithASentenceAndAStatus) {
    const struct {
        const char* line;
        int status;
        const char* said;
    } rows[] = {
        {"kivo-demo --help", 0, "-h, --help"},
        {"kivo-device -h", 0, "\nexit status:\n  0"},
        {"kivo-demo --help >/dev/full", 1, "could not be written (No space left on device)"},
        {"kivo-demo --json >/dev/full", 1, "could not be written (No space left on device)"},
        {"kivo-demo --json >&-", 1, "standard output is closed"},
        {"kivo-pins --help >&-", 1, "standard output could not be written"},
        {"kivo-platform-check --list >/dev/full", 1, "standard output could not be written"},
        {"kivo-demo --screens --json", 2, "--screens needs a value"},
        {"kivo-demo --screens", 2, "--screens needs a value"},
        {"kivo-demo --display 390", 2, "--display takes a size in points, from 200x200 to 2000x2000, not \"390\""},
        {"kivo-demo --display 390x8440", 2, "not \"390x8440\""},
        {"kivo-demo --reading-size 12", 2, "from 0 (extra small) over 3 (as designed) to 11, not \"12\""},
        {"kivo-demo --json=yes", 2, "--json takes no value"},
        {"kivo-demo --version 16 --version 17", 2, "--version is given twice"},
        {"kivo-demo --version 13", 2, "--version takes 14, 15, 16, 17, 18 or all, not \"13\""},
        {"kivo-demo --outcome face=TIMEOUT --outcome document=OFF", 2, "not \"document=OFF\""},
        {"kivo-demo --outcome face=TIMEOUT --outcome face=CANCELLED", 2, "names face twice"},
        {"kivo-demo extra", 2, "unexpected argument \"extra\"; kivo-demo --help"},
        {"kivo-platform-check --bogus", 2, "unknown option \"--bogus\"; kivo-platform-check --help"},
        {"kivo-device -platform x", 2, "unknown option \"-platform\""},
        {"TMPDIR=/nowhere kivo-demo", 1, "set TMPDIR"},
        {"TMPDIR=/nowhere kivo-platform-check Text", 1, "set TMPDIR"},
        {"env -u DISPLAY QT_QPA_PLATFORM=xcb kivo-device", 1, "there is no display"},
    };

    for (const auto& row : rows) {
        if (isBuilt(row.line)) {
            const auto ended = run(row.line);
            EXPECT_TRUE(ended.hasExitedWith(row.status)) << row.line;
            EXPECT_THAT(ended.output, HasSubstr(row.said)) << row.line;
            EXPECT_EQ(std::ranges::count(ended.output, '\n') == 1, row.status != 0) << row.line << ended.output;
        }
    }
}

TEST_F(Programs, NameThePackageOfAMissingDecoder) {
    run("mkdir plugins; ln -s $(pkg-config --variable=pluginsdir gstreamer-1.0)/*.so plugins; cd plugins; "
        "rm -f *png.so *pixbuf.so *rsvg.so *libav.so");
    folder.write("code.gif", "GIF89a" + std::string(99, 'x'));
    folder.write("code.svg", "<svg xmlns='http://www.w3.org/2000/svg'/>");
    for (const auto& [picture, package] : {std::pair{KIVO_TEST_DATA "/pictures/code.png", "gstreamer1.0-plugins-good"},
                                           {"code.svg", "gstreamer1.0-plugins-bad"},
                                           {"code.gif", "gstreamer1.0-libav"}}) {
        const auto ended = run("GST_PLUGIN_SYSTEM_PATH=plugins GST_REGISTRY=plugins/registry ExitWhileScanning "
                               "'filesrc location=" +
                               std::string{picture} + " ! decodebin'");
        EXPECT_TRUE(ended.hasExitedWith(1)) << picture;
        EXPECT_THAT(ended.output, HasSubstr(std::string{"install the decoder (Debian: "} + package + ")."));
    }
}

TEST_F(Programs, ScanNothingWithoutTheRightModules) {
    const std::string otherVersion(std::string_view{KIVO_SDK_VERSION}.size(), '9');
    const std::pair<std::string, const char*> rows[] = {
        {"rm $1", "No such file"},
        {"echo text >$1", "is no library, or is cut off"},
        {"rm $1; mkdir $1", "is no library, or is cut off"},
        {"rm $1; mkfifo $1", "is no library, or is cut off"},
        {"truncate -s -5000 $1", "is no library, or is cut off"},
        {"cp $2 $1", "is another library"},
        {R"(LC_ALL=C sed -i 's/)" KIVO_SDK_VERSION R"(\x00/)" + otherVersion + R"(\x00/' $1)",
         "of another version than libkivo"},
    };
    run("mkdir bin; cp " KIVO_TEST_PROGRAMS "/ExitWhileScanning bin");
    for (const auto& [change, said] : rows) {
        for (const auto* const modules : {"*-codes.so.* *-camera.so.*", "*-camera.so.* *-codes.so.*"}) {
            const auto ended =
                run("rm -rf lib; mkdir lib; cd lib; cp " KIVO_TEST_PROGRAMS "/../lib/*-c*.so.?.? .; set -- " +
                    std::string{modules} + "; " + change + "; ../bin/ExitWhileScanning videotestsrc");
            EXPECT_TRUE(ended.hasExitedWith(1)) << modules << change;
            EXPECT_THAT(ended.output, HasSubstr(said)) << modules << change;
        }
    }
}

TEST_F(Programs, LeaveNothingBehindWhenASignalEndsThem) {
    const struct {
        const char* program;
        const char* signals;
        int status;
    } rows[] = {
        {"env --default-signal kivo-demo --fault join=drop", "INT", 130},
        {"env --default-signal kivo-demo --pin leaf --fault join=drop", "TERM", 143},
        {"env --default-signal kivo-demo --fault join=drop", "HUP", 129},
        {"env --default-signal QT_QPA_PLATFORM=offscreen kivo-device", "INT", 130},
        {"nohup kivo-demo --fault join=drop", "HUP TERM", 143},
    };

    for (const auto& row : rows) {
        if (isBuilt(row.program)) {
            // Certificates lie there when the service is up.
            const auto ended =
                run(std::string{"mkdir tmp; TMPDIR=$PWD/tmp "} + row.program +
                    " >/dev/null 2>&1 & until find tmp -name '*.pem' 2>&1 | grep -q pem; do "
                    "kill -0 $! || break; done; for signal in " +
                    row.signals + "; do kill -$signal $!; done; { wait $!; } 2>/dev/null; echo $?; rmdir tmp");
            EXPECT_EQ(ended.output, std::to_string(row.status) + "\n") << row.program;
        }
    }
}

/// The members of each kind of line, as the table of the document has them.
std::map<std::string, std::set<std::string>> documentedMembers() {
    std::map<std::string, std::set<std::string>> members;
    std::istringstream document{contentOf(KIVO_TEST_DATA "/../../docs/demo.md")};
    for (std::string line; std::getline(document, line);) {
        std::istringstream row{line};
        std::string bar;
        std::string member;
        if (row >> bar >> member >> bar && member.starts_with('`')) {
            for (std::string kind; row >> kind && kind != "|";) {
                members[kind].insert(member.substr(1, member.size() - 2));
            }
        }
    }
    return members;
}

TEST_F(Programs, TheDemoReportsForMachinesAsDocumented) {
    const auto documented = documentedMembers();
    std::map<std::string, int> seen;
    std::istringstream lines{run("kivo-demo --json --version 14").output};
    nlohmann::json json;
    for (std::string line; std::getline(lines, line);) {
        json = nlohmann::json::parse(line);
        std::set<std::string> members;
        for (const auto& [name, value] : json.items()) {
            members.insert(name);
        }
        EXPECT_EQ(members, documented.at(json.at("type"))) << line;
        EXPECT_EQ(json.at("version"), "14");
        ++seen[json.at("type")];
    }
    EXPECT_GT(seen["step"], 5);
    EXPECT_EQ(seen["session"], 1);
    EXPECT_EQ(seen["end"], 1);
    EXPECT_EQ(json.at("type"), "end");
    EXPECT_EQ(json.at("ok"), true);
}

TEST_F(Programs, TheDemoReadsAPassportWithTheDocumentReader) {
    if (run("kivo-demo --chip --outcome document=NO_CHIP").output.contains("needs the document reader")) {
        GTEST_SKIP() << "the document reader is not built";
    }
    std::istringstream lines{run("kivo-demo --json --version 18 --chip").output};
    std::string document;
    std::string way;
    nlohmann::json json;
    for (std::string line; std::getline(lines, line);) {
        json = nlohmann::json::parse(line);
        if (json.value("step", "") == "read the passport") {
            document = json.at("outcome");
        }
        way = json.value("chip", way);
    }
    EXPECT_EQ(document, "DOCUMENT_SCAN");
    EXPECT_TRUE(way.starts_with("through ")) << way;
    EXPECT_EQ(json.value("ok", false), true);
}

} // namespace
} // namespace kivo::test
