#include "verification/PassiveAuthentication.hpp"

#include "crypto/SignedData.hpp"
#include "reader/DocumentAuthority.hpp"
#include "reader/Vectors.hpp"
#include "tlv/Tlv.hpp"

#include <gtest/gtest.h>

namespace kivo::reader {
namespace {

using std::chrono::hours;
using std::chrono::system_clock;

constexpr auto proven = Proof::proven;
constexpr auto refuted = Proof::refuted;
constexpr auto notTried = Proof::notTried;
constexpr hours day{24};
const auto now = system_clock::now();

std::string described(const Verdict& verdict) {
    std::string text;
    for (const auto& [name, proof] :
         {std::pair{"data", verdict.dataIsUnchanged}, std::pair{"signature", verdict.signatureHolds},
          std::pair{"trusted", verdict.signerIsTrusted}, std::pair{"revocation", verdict.signerIsNotRevoked},
          std::pair{"dates", verdict.datesHold}, std::pair{"chip", verdict.chipIsGenuine}}) {
        if (proof != notTried) {
            text += std::string{text.empty() ? "" : " "} + (proof == proven ? "+" : "-") + name;
        }
    }
    return text;
}

TEST(PassiveAuthentication, AgreesWithPublishedDocuments) {
    struct Row {
        std::string_view sod = "EF.SOD.bin";
        std::string_view dg1 = "EF.DG1.bin";
        std::string_view signedGroups;
        std::string_view verdict;
    };

    const std::vector<Row> rows{
        {.signedGroups = "14", .verdict = "+data +signature -dates"},
        // The group that holds the chip's key is there, and not among those that were signed.
        {.signedGroups = "14 15", .verdict = "-data +signature -dates"},
        {.dg1 = "negative/EF.DG1.one-letter.bin", .signedGroups = "14", .verdict = "-data +signature -dates"},
        {.sod = "negative/EF.SOD.dg1-hash-last-byte.bin", .signedGroups = "14", .verdict = "-data -signature -dates"},
        {.sod = "negative/EF.SOD.signature-last-byte.bin", .signedGroups = "14", .verdict = "-signature -dates"}};
    for (const std::filesystem::path set : {"bsi-sample-2008", "bsi-tr-03105-5-reference", "etsi-tr-103-200-eacaa"}) {
        for (const auto& row : rows) {
            SCOPED_TRACE(set.string() + " " + std::string{row.sod} + " " + std::string{row.dg1});
            Files files{{DocumentFile::sod, fileOf(set / row.sod)},
                        {DocumentFile::dg1, fileOf(set / row.dg1)},
                        {DocumentFile::dg14, fileOf(set / "EF.DG14.bin")}};
            auto expected = row.verdict;
            if (row.signedGroups == "14 15") {
                files[DocumentFile::dg15] = fileOf(set / "EF.DG15.bin");
                expected = set == "etsi-tr-103-200-eacaa" ? rows[0].verdict : expected;
            }
            EXPECT_EQ(described(passiveVerdict(files, nullptr, now)), expected);
        }
    }
}

TEST(PassiveAuthentication, ReadsTheSecurityFilesOfCards) {
    for (const auto& kind : {"ecdh", "dh"}) {
        const std::filesystem::path set{"bsi-tr-03110-worked-example"};
        const auto message = SignedMessage::read(fileOf(set / ("EF.CardSecurity." + std::string{kind} + ".bin")));
        ASSERT_TRUE(message);
        EXPECT_EQ(message->contentType(), "0.4.0.127.0.7.3.2.1");
        EXPECT_TRUE(
            std::ranges::equal(message->content(), fileOf(set / ("SecurityInfos." + std::string{kind} + ".bin"))));
        ASSERT_TRUE(message->signer());
        EXPECT_TRUE(message->signatureHolds(*message->signer()));
        EXPECT_EQ(*message->signer(), *Certificate::read(fileOf(set / "ds.cer")));
    }
}

const Bytes group1{0x61, 2, 0x5F, 0x1F};
const Bytes group2{0x75, 1, 0};

Files document(const Identity& signer, const Bytes& object, const MessageFacts& facts = {}) {
    return {{DocumentFile::sod, encodedTlv(0x77, signedMessage(signer, object, facts))},
            {DocumentFile::dg1, group1},
            {DocumentFile::dg2, group2}};
}

Certificate certificateOf(const Identity& identity) {
    return *Certificate::read(identity.der());
}

TEST(PassiveAuthentication, KnowsEverySignatureAndDigest) {
    struct Row {
        std::string key;
        std::string digest;
        bool isPss;
        int version;
    };

    const auto root = makeIdentity({.isAuthority = true});
    const TrustAnchors anchors{{certificateOf(root)}, {}};
    const auto rsa = makeIdentity({.name = "signer", .key = "rsa"}, &root);
    for (const auto& [key, digest, isPss, version] :
         {Row{"rsa", "SHA1", false, 0}, Row{"rsa", "SHA256", true, 1}, Row{"rsa", "SHA512", true, 0},
          Row{"secp521r1", "SHA512", false, 1}, Row{"prime256v1", "SHA224", false, 0},
          Row{"brainpoolP384r1", "SHA384", false, 0}, Row{"brainpoolP256r1 explicit", "SHA256", false, 0}}) {
        const auto signer = key == "rsa" ? rsa : makeIdentity({.name = "signer", .key = key}, &root);
        const auto object = securityObject({{1, group1}, {2, group2}}, digest, version);
        EXPECT_EQ(
            described(passiveVerdict(document(signer, object, {.digest = digest, .isPss = isPss}), &anchors, now)),
            "+data +signature +trusted +dates")
            << key << ' ' << digest;
    }
}

TEST(PassiveAuthentication, TrustsSignersByAWayToARoot) {
    const auto former = makeIdentity({.isAuthority = true});
    const auto root = makeIdentity({.isAuthority = true});
    const auto namesake = makeIdentity({.isAuthority = true});
    const auto leaf = makeIdentity({.name = "signer"}, &root);
    // The key of `root`, certified by the authority's former key.
    auto link = makeIdentity({.isAuthority = true}, &former);
    const auto linked = makeIdentity({.name = "signer"}, &link);
    const auto leafOfLeaf = makeIdentity({.name = "signer of signers"}, &leaf);

    struct Row {
        const char* what;
        std::vector<Identity> certificates;
        Identity signer;
        std::string_view verdict;
    };

    const std::vector<Row> rows{{"the root", {root}, leaf, "+data +signature +trusted +dates"},
                                {"an authority of the same name", {namesake}, leaf, "+data +signature -trusted +dates"},
                                {"among namesakes", {namesake, root}, leaf, "+data +signature +trusted +dates"},
                                {"over a link", {former, link}, linked, "+data +signature +trusted +dates"},
                                {"a link without its root", {root, link}, linked, "+data +signature -trusted +dates"},
                                {"a signer as authority", {root, leaf}, leafOfLeaf, "+data +signature -trusted +dates"},
                                {"a signer by itself", {leaf}, leaf, "+data +signature +dates"},
                                {"nothing", {}, leaf, "+data +signature +dates"}};
    for (const auto& [what, certificates, signer, verdict] : rows) {
        std::vector<Certificate> given;
        std::ranges::transform(certificates, std::back_inserter(given), certificateOf);
        const TrustAnchors anchors{given, {}};
        const auto files = document(signer, securityObject({{1, group1}, {2, group2}}));
        EXPECT_EQ(described(passiveVerdict(files, &anchors, now)), verdict) << what;
    }
}

TEST(PassiveAuthentication, LooksForTheSignerInRevocationLists) {
    const auto root = makeIdentity({.isAuthority = true});
    const auto namesake = makeIdentity({.isAuthority = true});
    const auto signer = makeIdentity({.name = "signer"}, &root);
    const auto other = makeIdentity({.name = "another"}, &root);
    const std::vector<std::tuple<const char*, Bytes, Proof>> rows{
        {"named", revocationList(root, {other, signer}), refuted},
        {"not named", revocationList(root, {other}), proven},
        {"named by a namesake of the authority", revocationList(namesake, {signer}), notTried}};
    for (const auto& [what, list, proof] : rows) {
        const TrustAnchors anchors{{certificateOf(root)}, {*RevocationList::read(list)}};
        const auto files = document(signer, securityObject({{1, group1}, {2, group2}}));
        const auto verdict = passiveVerdict(files, &anchors, now);
        EXPECT_EQ(verdict.signerIsNotRevoked, proof) << what;
        EXPECT_EQ(verdict.signatureHolds, proven);
    }
}

TEST(PassiveAuthentication, TellsDatesApartFromSignatures) {
    const auto root = makeIdentity({.isAuthority = true, .from = now - 900 * day});
    const auto young = makeIdentity({.isAuthority = true, .from = now - day});
    const auto expired = makeIdentity({.name = "signer", .from = now - 800 * day, .to = now - 400 * day}, &root);
    const auto older = makeIdentity({.name = "signer", .from = now - 800 * day}, &young);
    const std::vector<std::tuple<const char*, Identity, Identity, std::optional<Time>, Proof>> rows{
        {"signed while valid, long ago", root, expired, now - 600 * day, proven},
        {"signed after the end", root, expired, now - 300 * day, refuted},
        {"signed before the beginning", root, expired, now - 850 * day, refuted},
        {"without a time", root, expired, std::nullopt, refuted},
        {"signed in the future", root, makeIdentity({.name = "signer", .to = now + 90 * day}, &root), now + 30 * day,
         refuted},
        {"before its authority was valid", young, older, now - 600 * day, refuted}};
    for (const auto& [what, authority, signer, time, proof] : rows) {
        const TrustAnchors anchors{{certificateOf(authority)}, {}};
        const auto files = document(signer, securityObject({{1, group1}, {2, group2}}), {.signingTime = time});
        const auto verdict = passiveVerdict(files, &anchors, now);
        EXPECT_EQ(verdict.datesHold, proof) << what;
        EXPECT_EQ(verdict.signatureHolds, proven) << what;
        EXPECT_EQ(verdict.signerIsTrusted, proven) << what;
    }
}

TEST(PassiveAuthentication, FindsASignerThatTheDocumentDoesNotBring) {
    const auto root = makeIdentity({.isAuthority = true});
    const auto signer = makeIdentity({.name = "signer"}, &root);
    const auto files = document(signer, securityObject({{1, group1}, {2, group2}}), {.hasCertificate = false});
    EXPECT_EQ(described(passiveVerdict(files, nullptr, now)), "");
    const TrustAnchors anchors{{certificateOf(root), certificateOf(signer)}, {}};
    EXPECT_EQ(described(passiveVerdict(files, &anchors, now)), "+data +signature +trusted +dates");
}

TEST(PassiveAuthentication, RefusesBrokenSecurityObjects) {
    const auto signer = makeIdentity({.name = "signer"});
    const auto good = securityObject({{1, group1}, {2, group2}});
    const auto verdictOf = [&](const Bytes& object, const std::string& kind = "2.23.136.1.1.1") {
        return described(passiveVerdict(document(signer, object, {.contentType = kind}), nullptr, now));
    };
    EXPECT_EQ(verdictOf(good), "+data +signature +dates");
    EXPECT_EQ(verdictOf(securityObject({{1, group1}})), "-data +signature +dates") << "a group is not named";
    EXPECT_EQ(verdictOf(securityObject({{1, group1}, {2, group2}}, "MD5")), "-data +signature +dates");
    EXPECT_EQ(verdictOf(securityObject({{1, group1}, {2, group2}, {17, group2}})), "-data +signature +dates");
    EXPECT_EQ(verdictOf(securityObject({{1, group1}, {2, group2}}, "SHA256", 2)), "-data +signature +dates");
    EXPECT_EQ(verdictOf({0x05, 0x00}), "-data +signature +dates");
    EXPECT_EQ(verdictOf(good, "1.2.3.4"), "-signature") << "another kind of content";
    const auto sod = encodedTlv(0x77, signedMessage(signer, good));
    for (std::size_t size = 0; size < sod.size(); size += 11) {
        const Files files{{DocumentFile::sod, {sod.begin(), sod.begin() + static_cast<std::ptrdiff_t>(size)}},
                          {DocumentFile::dg1, group1}};
        EXPECT_EQ(described(passiveVerdict(files, nullptr, now)), "-signature") << size;
    }
    EXPECT_EQ(described(passiveVerdict({{DocumentFile::dg1, group1}}, nullptr, now)), "");
}

TEST(PassiveAuthentication, TakesTheKeysOfACardFromASignerOfTheDocumentsRank) {
    const auto root = makeIdentity({.isAuthority = true});
    const auto signer = makeIdentity({.name = "signer"}, &root);
    const auto other = makeIdentity({.name = "another"}, &root);
    const auto stranger = makeIdentity({.name = "signer"});
    const TrustAnchors trusting{{certificateOf(root)}, {*RevocationList::read(revocationList(root, {other}))}};
    const Bytes infos{0x31, 0x00};
    const std::string kind = "0.4.0.127.0.7.3.2.1";
    auto changed = signedMessage(signer, infos, {.contentType = kind});
    changed.back() ^= 1U;

    const struct {
        const char* what;
        Bytes file;
        const TrustAnchors* anchors;
        Proof isSigned;
    } rows[] = {
        {"the document's signer", signedMessage(signer, infos, {.contentType = kind}), &trusting, proven},
        {"the same, nobody trusted", signedMessage(signer, infos, {.contentType = kind}), nullptr, proven},
        {"another, nobody trusted", signedMessage(other, infos, {.contentType = kind}), nullptr, notTried},
        {"revoked", signedMessage(other, infos, {.contentType = kind}), &trusting, refuted},
        {"a stranger", signedMessage(stranger, infos, {.contentType = kind}), &trusting, refuted},
        {"a changed signature", changed, nullptr, refuted},
        {"another kind of content", signedMessage(signer, infos), &trusting, refuted},
        {"no message", infos, &trusting, refuted},
    };

    for (const auto& row : rows) {
        auto files = document(signer, securityObject({{1, group1}, {2, group2}}));
        files[DocumentFile::cardSecurity] = row.file;
        EXPECT_EQ(cardSecurityKeys(files, row.anchors, now).isSigned, row.isSigned) << row.what;
    }
    EXPECT_EQ(cardSecurityKeys({}, &trusting, now).isSigned, notTried);
}

} // namespace
} // namespace kivo::reader
