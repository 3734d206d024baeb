#include "verification/ActiveAuthentication.hpp"

#include "reader/Vectors.hpp"
#include "tlv/Tlv.hpp"

#include <gtest/gtest.h>

namespace kivo::reader {
namespace {

// DG14 with the identifier of a signature for active authentication: the last number of plain ECDSA's.
Bytes dg14Naming(std::uint8_t function) {
    auto info = bytesOfHex("0606678108010105020101060a04007f000701010401");
    info.push_back(function);
    return encodedTlv(0x6E, encodedTlv(0x31, encodedTlv(0x30, info)));
}

TEST(ActiveAuthentication, AgreesWithComputedSignatures) {
    const auto data = vectors("active-authentication");
    for (const auto& kind : {"rsa", "ecdsa"}) {
        const auto dg15 = bytesOfHex(data[kind]["dg15"].get<std::string>());
        const auto challenge = bytesOfHex(data[kind]["rnd_ifd"].get<std::string>());
        for (const auto& each : data[kind]["signatures"]) {
            SCOPED_TRACE(kind + each["hash"].get<std::string>());
            const auto answer = bytesOfHex(each["s"].get<std::string>());
            EXPECT_EQ(activeAuthentication(dg15, {}, challenge, answer), Proof::proven);
            auto other = challenge;
            other.back() ^= 1;
            EXPECT_EQ(activeAuthentication(dg15, {}, other, answer), Proof::refuted) << "a replay";
            for (const std::size_t at : {std::size_t{0}, answer.size() / 2, answer.size() - 1}) {
                auto changed = answer;
                changed[at] ^= 1;
                EXPECT_EQ(activeAuthentication(dg15, {}, challenge, changed), Proof::refuted) << at;
            }
            for (const std::size_t size : {std::size_t{0}, std::size_t{1}, answer.size() - 1}) {
                EXPECT_EQ(activeAuthentication(dg15, {}, challenge, ByteView{answer}.first(size)), Proof::refuted);
            }
            auto longer = answer;
            longer.insert(longer.end(), 200, 0);
            EXPECT_EQ(activeAuthentication(dg15, {}, challenge, longer), Proof::refuted);
        }
    }
}

TEST(ActiveAuthentication, TakesTheFunctionThatIsNamed) {
    const auto data = vectors("active-authentication")["ecdsa"];
    const auto dg15 = bytesOfHex(data["dg15"].get<std::string>());
    const auto challenge = bytesOfHex(data["rnd_ifd"].get<std::string>());
    const std::map<std::string, std::uint8_t> functions{{"sha256", 3}, {"sha384", 4}, {"sha512", 5}};
    for (const auto& each : data["signatures"]) {
        const auto answer = bytesOfHex(each["s"].get<std::string>());
        for (const auto& [name, number] : functions) {
            EXPECT_EQ(activeAuthentication(dg15, dg14Naming(number), challenge, answer),
                      name == each["hash"].get<std::string>() ? Proof::proven : Proof::refuted);
        }
    }
}

TEST(ActiveAuthentication, ReadsTheKeysOfPublishedDocuments) {
    // The modulus of the first has no zero before it, which makes it negative.
    for (const std::filesystem::path set : {"bsi-sample-2008", "bsi-tr-03105-5-reference", "etsi-tr-103-200-eacaa"}) {
        EXPECT_EQ(activeAuthentication(fileOf(set / "EF.DG15.bin"), {}, Bytes(8), Bytes(128, 1)), Proof::refuted);
    }
}

TEST(ActiveAuthentication, DoesNotTryKeysThatAreNone) {
    const auto dg15 = bytesOfHex(vectors("active-authentication")["rsa"]["dg15"].get<std::string>());
    for (std::size_t size = 0; size < dg15.size(); ++size) {
        EXPECT_EQ(activeAuthentication(ByteView{dg15}.first(size), {}, Bytes(8), Bytes(128, 1)), Proof::notTried);
    }
    const std::vector<std::tuple<const char*, std::size_t, std::string>> rows{{"an even modulus", 159, "00"},
                                                                              {"another group", 0, "6e"},
                                                                              {"another algorithm", 18, "0a"},
                                                                              {"an algorithm that is cut off", 9, "ff"},
                                                                              {"an exponent of zero", 162, "000000"}};
    for (const auto& [what, at, hex] : rows) {
        auto broken = dg15;
        std::ranges::copy(bytesOfHex(hex), broken.begin() + static_cast<std::ptrdiff_t>(at));
        EXPECT_EQ(activeAuthentication(broken, {}, Bytes(8), Bytes(128, 1)), Proof::notTried) << what;
    }
}

} // namespace
} // namespace kivo::reader
