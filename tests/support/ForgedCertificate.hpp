#pragma once

#include <kivo/simulator/CertificateAuthority.hpp>

#include <string>
#include <vector>

namespace kivo::test {

/// A leaf for "localhost" on a new key that names `issuer` (the first certificate of a PEM text) as the one that issued
/// it, but is signed with `signingKey` (PEM). Its chain holds the leaf alone, and it comes without pins. With basic
/// constraints, such as "CA:TRUE,pathlen:0", it is no leaf.
simulator::IssuedCertificate forgedLeaf(const std::string& issuer, const std::string& signingKey,
                                        const char* constraints = "CA:FALSE");

/// The first certificate of a PEM text in DER form.
std::string derOf(const std::string& pem);

/// The certificates of a PEM text, each as PEM text.
std::vector<std::string> certificatesIn(const std::string& pem);

} // namespace kivo::test
