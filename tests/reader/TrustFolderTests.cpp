#include "reader/DocumentAuthority.hpp"
#include "support/TemporaryFolder.hpp"
#include "verification/TrustAnchors.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kivo::reader {
namespace {

using testing::HasSubstr;

std::string_view text(const Bytes& bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

const std::string masterListKind = "2.23.136.1.1.2";

TEST(TrustFolder, HoldsCertificatesListsAndMasterLists) {
    const auto one = makeIdentity({.name = "one", .isAuthority = true});
    const auto two = makeIdentity({.name = "two", .isAuthority = true});
    const auto three = makeIdentity({.name = "three", .isAuthority = true});
    const auto four = makeIdentity({.name = "four", .isAuthority = true});
    const auto listSigner = makeIdentity({.name = "list signer"}, &one);
    const test::TemporaryFolder folder;
    folder.write("one.cer", text(one.der()));
    folder.write("some.pem", "Two authorities\n" + two.pem() + three.pem());
    folder.write("world.ml",
                 text(signedMessage(listSigner, masterListContent({four}), {.contentType = masterListKind})));
    const auto signer = makeIdentity({.name = "signer"}, &two);
    folder.write("two.crl", text(revocationList(two, {signer})));
    folder.write(".hidden", "no certificate");
    folder.write("below/other.txt", "no certificate");
    for (const auto& vouching : {Bytes{}, listSigner.der(), one.der()}) {
        const auto anchors = trustAnchorsIn(folder.path(), vouching);
        ASSERT_TRUE(anchors) << anchors.error();
        for (const auto& authority : {one, two, three, four}) {
            const auto path =
                (*anchors)->pathOf(*Certificate::read(makeIdentity({.name = "signer"}, &authority).der()));
            ASSERT_TRUE(path);
            EXPECT_EQ(path->authorities, std::vector{*Certificate::read(authority.der())});
        }
        EXPECT_EQ((*anchors)->pathOf(*Certificate::read(signer.der()))->isNotRevoked, Proof::refuted);
    }
    const auto refused = trustAnchorsIn(folder.path(), two.der());
    ASSERT_FALSE(refused);
    EXPECT_THAT(refused.error(), HasSubstr("world.ml is a master list that another than the named signer has signed"));
}

TEST(TrustFolder, RefusesWhatOthersCanChangeAndWhatItCannotRead) {
    const auto root = makeIdentity({.isAuthority = true});
    auto list = signedMessage(root, masterListContent({root}), {.contentType = masterListKind});
    list.back() ^= 1;

    struct Row {
        std::function<void(const test::TemporaryFolder&)> prepare;
        std::string_view error;
    };

    const std::vector<Row> rows{
        {[](const auto& folder) { chmod(folder.path().c_str(), 0777); }, "can be changed by other users"},
        {[](const auto& folder) { chmod((folder.path() / "root.cer").c_str(), 0664); },
         "root.cer can be changed by other"},
        {[](const auto& folder) { folder.write("a.txt", "not in DER"); }, "a.txt holds no certificate"},
        {[&](const auto& folder) { folder.write("a.pem", root.pem() + "-----BEGIN X509 CRL-----\n"); },
         "a.pem is broken text"},
        {[](const auto& folder) { folder.write("empty", ""); }, "empty holds no certificate"},
        {[&](const auto& folder) { folder.write("bad.ml", text(list)); }, "whose signature does not hold"},
        {[](const auto& folder) { mkfifo((folder.path() / "pipe").c_str(), 0600); }, "pipe is no file"},
        {[](const auto& folder) { std::filesystem::create_symlink("/nowhere", folder.path() / "gone"); },
         "gone cannot be read"},
        {[](const auto& folder) {
             folder.write("large", "");
             std::filesystem::resize_file(folder.path() / "large", (std::uintmax_t{16} << 20) + 1);
         },
         "large is no file of at most 16 MiB"},
        {[](const auto& folder) { std::filesystem::remove_all(folder.path()); }, "is no folder"}};
    for (const auto& [prepare, error] : rows) {
        const test::TemporaryFolder folder;
        folder.write("root.cer", text(root.der()));
        ASSERT_TRUE(trustAnchorsIn(folder.path()));
        prepare(folder);
        const auto anchors = trustAnchorsIn(folder.path());
        ASSERT_FALSE(anchors) << error;
        EXPECT_THAT(anchors.error(), HasSubstr(error));
    }
    const test::TemporaryFolder folder;
    EXPECT_FALSE(trustAnchorsIn(folder.path(), Bytes{1, 2, 3}));
    if (geteuid() == 0) { // only root can give a file away
        const auto file = folder.write("root.cer", text(root.der()));
        ASSERT_EQ(chown(file.c_str(), 65'534, 65'534), 0);
        EXPECT_FALSE(trustAnchorsIn(folder.path()));
    }
}

} // namespace
} // namespace kivo::reader
