#pragma once

#include "Cryptography.hpp"
#include "passport/Ciphers.hpp"
#include "passport/Command.hpp"
#include "passport/KeyAgreement.hpp"

namespace kivo::simulator::chip {

/// The private key with which a chip answers challenges. The public key lies in DG15.
class ActiveKey {
public:
    /// `bits` is the size of an RSA key; a key on a curve has 256.
    ActiveKey(ActiveAuthentication kind, HashFunction hash, int bits);

    /// The public key, as SubjectPublicKeyInfo.
    Bytes publicKeyInfo() const;

    /// The answer to INTERNAL AUTHENTICATE: a signature of ISO 9796-2 or a plain one on a curve.
    Answer answer(View challenge, const Random& random) const;

private:
    Bytes recoverable(View challenge, const Random& random, std::size_t size) const;

    bool isRsa_;
    HashFunction hash_;
    Key key_;
};

/// The private key of chip authentication. The public key lies in DG14.
class AgreementKey {
public:
    AgreementKey(ChipAuthenticationOffer offer, const Random& random);

    const ChipAuthenticationOffer& offer() const { return offer_; }

    const Bytes& secret() const { return secret_; }

    /// The public key as it is sent, and as SubjectPublicKeyInfo.
    Bytes publicKey() const;
    Bytes publicKeyInfo() const;

    /// The object identifier of the protocol, without tag and length.
    Bytes identifier() const;

    /// The secret shared with the terminal; absent for a key that is none.
    std::optional<Bytes> sharedWith(View theirKey) const;

private:
    ChipAuthenticationOffer offer_;
    std::unique_ptr<KeyAgreement> agreement_;
    Bytes secret_;
};

} // namespace kivo::simulator::chip
