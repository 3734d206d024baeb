#pragma once

#include "Cryptography.hpp"
#include "passport/Ciphers.hpp"

#include <map>
#include <string>

namespace kivo::simulator {

namespace chip {

/// The state of a document signer's certificate.
enum class SignerState { sound, expired, revoked };

/// A document signer: certificate and key.
struct DocumentSigner {
    Key key;
    Certificate certificate;
    SignatureScheme scheme;
};

/// A signer below the authority.
DocumentSigner makeSigner(const CountryAuthority& authority, SignatureScheme scheme, SignerState state);

/// EF.SOD: the digests of the groups by their numbers, signed.
Bytes securityObject(const DocumentSigner& signer, HashFunction hash, const std::map<int, Bytes>& groups);

/// EF.CardSecurity: the infos, signed.
Bytes cardSecurity(const DocumentSigner& signer, HashFunction hash, View infos);

/// CMS SignedData over the content, with the signer's certificate.
Bytes signedContent(const DocumentSigner& signer, HashFunction hash, const char* contentType, View content);

} // namespace chip

struct CountryAuthority::Keys {
    std::string country;
    SignatureScheme scheme;
    Key key;
    Certificate certificate;
};

} // namespace kivo::simulator
