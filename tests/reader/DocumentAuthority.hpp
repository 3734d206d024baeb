#pragma once

#include <kivo/reader/Card.hpp>

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

struct x509_st;
struct evp_pkey_st;

namespace kivo::reader {

using Time = std::chrono::system_clock::time_point;

/// A certificate with its private key, made for one test.
struct Identity {
    std::shared_ptr<x509_st> certificate;
    std::shared_ptr<evp_pkey_st> key;

    Bytes der() const;
    std::string pem() const;
};

struct IdentityFacts {
    std::string name = "UT";
    /// "rsa", or the name of a curve; with "explicit" behind the name, its parameters are spelled out.
    std::string key = "prime256v1";
    bool isAuthority = false;
    Time from = std::chrono::system_clock::now() - std::chrono::hours{24};
    Time to = std::chrono::system_clock::now() + std::chrono::hours{24};
};

/// Signed by `issuer`, or by itself.
Identity makeIdentity(const IdentityFacts& facts, const Identity* issuer = nullptr);

struct MessageFacts {
    std::string contentType = "2.23.136.1.1.1";
    std::string digest = "SHA256";
    bool isPss = false;
    bool hasCertificate = true;
    /// Without a time the message has no signed attributes.
    std::optional<Time> signingTime = std::chrono::system_clock::now();
};

Bytes signedMessage(const Identity& signer, const Bytes& content, const MessageFacts& facts = {});

Bytes revocationList(const Identity& issuer, const std::vector<Identity>& revoked);

/// What a document signer signs, with the digests of these groups.
Bytes securityObject(const std::map<int, Bytes>& groups, const std::string& digest = "SHA256", int version = 0);

/// A set of certificates in the form of ICAO's master lists.
Bytes masterListContent(const std::vector<Identity>& authorities);

} // namespace kivo::reader
