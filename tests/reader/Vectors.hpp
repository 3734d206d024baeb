#pragma once

#include <kivo/reader/Card.hpp>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <openssl/bn.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

/// Published worked examples, as data.
namespace kivo::reader {

inline nlohmann::json vectors(const std::string& name) {
    std::ifstream file{KIVO_TEST_DATA "/reader/" + name + ".json"};
    return nlohmann::json::parse(file);
}

/// A file of a published document.
inline Bytes fileOf(const std::filesystem::path& name) {
    std::ifstream file{std::filesystem::path{KIVO_TEST_DATA} / "reader" / name, std::ios::binary};
    return {std::istreambuf_iterator<char>{file}, {}};
}

inline Bytes bytesOfHex(const std::string& hex) {
    Bytes bytes;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
        bytes.push_back(static_cast<std::uint8_t>(std::stoi(hex.substr(i, 2), nullptr, 16)));
    }
    return bytes;
}

inline Bytes bytesOf(const nlohmann::json& value) {
    return bytesOfHex(value.get<std::string>());
}

inline Bytes joined(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const auto& part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

/// A secret number of an example that is larger than the order of the group gives the same keys as its remainder.
inline Bytes reduced(const nlohmann::json& example, const char* name) {
    auto secret = bytesOf(example[name]);
    if (!example.contains("q")) {
        return secret;
    }
    const auto order = bytesOf(example["q"]);
    const std::unique_ptr<BIGNUM, decltype(&BN_free)> number{
        BN_bin2bn(secret.data(), static_cast<int>(secret.size()), nullptr), &BN_free};
    const std::unique_ptr<BIGNUM, decltype(&BN_free)> modulus{
        BN_bin2bn(order.data(), static_cast<int>(order.size()), nullptr), &BN_free};
    const std::unique_ptr<BN_CTX, decltype(&BN_CTX_free)> context{BN_CTX_new(), &BN_CTX_free};
    EXPECT_EQ(BN_nnmod(number.get(), number.get(), modulus.get(), context.get()), 1);
    secret.resize(order.size());
    EXPECT_GE(BN_bn2binpad(number.get(), secret.data(), static_cast<int>(secret.size())), 0);
    return secret;
}

} // namespace kivo::reader
