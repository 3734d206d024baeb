#pragma once

namespace kivo::reader {

/// What became of one proof.
enum class Proof {
    /// The proof was made.
    proven,
    /// The proof was tried and failed.
    refuted,
    /// The document offers no such proof, or what the proof needs is missing here.
    notTried,
};

/// What a reading has proven of a document, one proof a member.
struct Verdict {
    /// The groups that were read are those whose digests the document signer has signed.
    Proof dataIsUnchanged = Proof::notTried;
    /// The signature over the digests holds with the document signer's certificate.
    Proof signatureHolds = Proof::notTried;
    /// The document signer was certified by a country authority that the host trusts.
    Proof signerIsTrusted = Proof::notTried;
    /// The signer is on no revocation list that the host has.
    Proof signerIsNotRevoked = Proof::notTried;
    /// The certificates were valid when the document was signed. Told apart, because an old document is no forgery.
    Proof datesHold = Proof::notTried;
    /// The chip holds the key that its signed groups name: the chip is no copy.
    Proof chipIsGenuine = Proof::notTried;
};

} // namespace kivo::reader
