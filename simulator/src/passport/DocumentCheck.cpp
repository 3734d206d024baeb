#include "passport/DocumentCheck.hpp"

#include "ProtocolRequest.hpp"
#include "passport/Ciphers.hpp"

#include <openssl/cms.h>
#include <openssl/err.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <map>
#include <string>
#include <string_view>
#include <utility>

namespace kivo::simulator::chip {
namespace {

using Json = nlohmann::ordered_json;
using SignedMessage = std::unique_ptr<CMS_ContentInfo, Free<CMS_ContentInfo_free>>;
using Identifier = std::unique_ptr<ASN1_OBJECT, Free<ASN1_OBJECT_free>>;
using Trust = std::unique_ptr<X509_STORE_CTX, Free<X509_STORE_CTX_free>>;
using RevokedList = std::unique_ptr<X509_CRL, Free<X509_CRL_free>>;

void freeStack(STACK_OF(X509) * certificates) {
    sk_X509_free(certificates);
}

using Signers = std::unique_ptr<STACK_OF(X509), Free<freeStack>>;

constexpr std::size_t largestFile = std::size_t{200} * 1024;

/// The types of documents, and how many letters their zones have in all.
constexpr std::array<std::pair<std::string_view, std::size_t>, 3> types{
    {{"passport", 88}, {"identityCardTD1", 90}, {"identityCardTD2", 72}}};

constexpr std::array<std::string_view, 11> fileNames{"COM",  "SOD",  "DG1",  "DG2",        "DG7",         "DG11",
                                                     "DG12", "DG14", "DG15", "CardAccess", "CardSecurity"};

constexpr std::array<std::string_view, 3> findings{"proven", "refuted", "not-tried"};

[[noreturn]] void refuse(std::string text) {
    throw Violation{std::move(text)};
}

template <class Names>
bool isOneOf(const Json& value, const Names& names) {
    const auto* const text = value.get_ptr<const std::string*>();
    return text != nullptr && std::ranges::find(names, *text) != names.end();
}

void requireMembers(const Json& object, const std::string& where, std::initializer_list<std::string_view> known) {
    if (!object.is_object()) {
        refuse(where + " is not an object");
    }
    for (const auto& [name, value] : object.items()) {
        if (std::ranges::find(known, name) == known.end()) {
            refuse(std::string{where}.append(" has an unknown member \"").append(name).append("\""));
        }
    }
}

/// The lines of the page, one after the other.
std::string zoneOf(const Json& page) {
    requireMembers(page, "the document's \"page\"", {"lines"});
    const auto lines = page.find("lines");
    if (lines == page.end() || !lines->is_array() || lines->empty() || lines->size() > 3) {
        refuse("the document's \"page\" has no two or three \"lines\"");
    }
    std::string zone;
    for (const auto& line : *lines) {
        if (!line.is_string() || line.get_ref<const std::string&>().size() > 44) {
            refuse("the document's \"page\" has a line that is no text of at most 44 letters");
        }
        zone += line.get<std::string>();
    }
    return zone;
}

std::map<std::string, Bytes> filesOf(const Json& files) {
    if (!files.is_object()) {
        refuse("the chip's \"files\" are not an object");
    }
    std::map<std::string, Bytes> result;
    for (const auto& [name, value] : files.items()) {
        if (std::ranges::find(fileNames, name) == fileNames.end()) {
            refuse(std::string{"the chip's \"files\" have an unknown member \""}.append(name).append("\""));
        }
        const auto* const text = value.get_ptr<const std::string*>();
        const auto bytes = text == nullptr ? std::nullopt : bytesOfBase64(*text);
        if (!bytes || bytes->size() > largestFile) {
            refuse("the chip's file " + name + " is no base64 of at most 200 KiB");
        }
        result.emplace(name, copied(viewOf(*bytes)));
    }
    for (const auto* const needed : {"DG1", "SOD"}) {
        if (!result.contains(needed)) {
            refuse(std::string{"the chip's \"files\" lack "} + needed);
        }
    }
    return result;
}

/// The value of the only object in the bytes.
std::optional<std::vector<DataObject>> inside(View bytes, std::uint32_t tag) {
    const auto outer = dataObjects(bytes);
    const auto value = outer && outer->size() == 1 ? valueOf(*outer, tag) : std::nullopt;
    return value ? dataObjects(*value) : std::nullopt;
}

/// What a security object says: a digest algorithm, and digests by the numbers of the groups.
struct SignedDigests {
    const EVP_MD* algorithm = nullptr;
    std::map<int, Bytes> digests{};
};

SignedDigests digestsIn(View content) {
    constexpr auto broken = "the SOD does not hold a list of digests";
    const auto members = inside(content, 0x30);
    const auto algorithm = members && members->size() >= 3 ? dataObjects((*members)[1].value) : std::nullopt;
    const auto entries = algorithm ? dataObjects((*members)[2].value) : std::nullopt;
    if (!entries || algorithm->empty() || algorithm->front().tag != 0x06) {
        refuse(broken);
    }
    const auto der = object(0x06, algorithm->front().value);
    const auto* begin = der.data();
    const Identifier identifier{d2i_ASN1_OBJECT(nullptr, &begin, static_cast<long>(der.size()))};
    SignedDigests result{.algorithm = identifier ? EVP_get_digestbyobj(identifier.get()) : nullptr};
    if (result.algorithm == nullptr) {
        refuse("the SOD names an unknown digest");
    }
    for (const auto& entry : *entries) {
        const auto pair = dataObjects(entry.value);
        if (!pair || pair->size() != 2 || (*pair)[0].value.size() != 1) {
            refuse(broken);
        }
        result.digests.emplace((*pair)[0].value.front(), copied((*pair)[1].value));
    }
    return result;
}

Bytes digestOf(const EVP_MD* algorithm, const Bytes& data) {
    Bytes result(EVP_MAX_MD_SIZE);
    unsigned length = 0;
    EVP_Digest(data.data(), data.size(), result.data(), &length, algorithm, nullptr);
    result.resize(length);
    return result;
}

void requireDigests(const SignedDigests& expected, const std::map<std::string, Bytes>& files) {
    for (const auto& [name, content] : files) {
        if (!name.starts_with("DG")) {
            continue;
        }
        const auto found = expected.digests.find(std::stoi(name.substr(2)));
        if (found == expected.digests.end() || digestOf(expected.algorithm, content) != found->second) {
            refuse("the chip's file " + name + " is not what the document signer has signed");
        }
    }
}

/// A country's list of revoked certificates is as new as the service, which may run for longer than the list lasts.
int acceptDatesOfList(int holds, X509_STORE_CTX* context) {
    const int error = X509_STORE_CTX_get_error(context);
    return error == X509_V_ERR_CRL_HAS_EXPIRED || error == X509_V_ERR_CRL_NOT_YET_VALID ? 1 : holds;
}

} // namespace

DocumentCheck::DocumentCheck(const std::vector<std::shared_ptr<const CountryAuthority>>& countries, Clock clock)
    : clock_{clock ? std::move(clock) : Clock{std::chrono::system_clock::now}}
    , trusted_{X509_STORE_new()} {
    const auto trust = [this](const CountryAuthority& authority) {
        const auto certificate = authority.certificate();
        const auto* begin = certificate.data();
        const Certificate root{d2i_X509(nullptr, &begin, static_cast<long>(certificate.size()))};
        X509_STORE_add_cert(trusted_.get(), root.get());
        const auto revoked = authority.revocationList();
        begin = revoked.data();
        const RevokedList list{d2i_X509_CRL(nullptr, &begin, static_cast<long>(revoked.size()))};
        X509_STORE_add_crl(trusted_.get(), list.get());
    };
    if (countries.empty()) {
        trust(CountryAuthority{});
    }
    for (const auto& country : countries) {
        trust(*country);
    }
    X509_STORE_set_flags(trusted_.get(), X509_V_FLAG_CRL_CHECK);
    X509_STORE_set_verify_cb(trusted_.get(), acceptDatesOfList);
}

void DocumentCheck::require(const Json& document) const {
    requireMembers(document, "the document", {"document-type", "page", "chip"});
    const auto type = document.find("document-type");
    const auto* const known = type == document.end() || !type->is_string()
                                  ? types.end()
                                  : std::ranges::find(types, type->get_ref<const std::string&>(),
                                                      &std::pair<std::string_view, std::size_t>::first);
    if (known == types.end()) {
        refuse("the document has an unknown \"document-type\"");
    }
    if (!document.contains("page") && !document.contains("chip")) {
        refuse("the document has neither \"page\" nor \"chip\"");
    }
    const auto zone = document.contains("page") ? zoneOf(document.at("page")) : std::string{};
    if (!zone.empty() && zone.size() != known->second) {
        refuse("the page's lines are not those of a document of this type");
    }
    if (document.contains("chip")) {
        requireChip(document.at("chip"), zone, known->second);
    }
}

void DocumentCheck::requireChip(const Json& chip, const std::string& zone, std::size_t zoneSize) const {
    requireMembers(chip, "the document's \"chip\"", {"access", "files", "verdict"});
    constexpr std::array<std::string_view, 2> accesses{"pace", "bac"};
    if (!isOneOf(chip.value("access", Json{}), accesses)) {
        refuse("the chip's \"access\" is neither \"pace\" nor \"bac\"");
    }
    const auto verdict = chip.value("verdict", Json{});
    requireTexts(verdict, "the chip's \"verdict\"",
                 {"data-is-unchanged", "signature-holds", "signer-is-trusted", "signer-is-not-revoked", "dates-hold",
                  "chip-is-genuine"});
    if (!std::ranges::all_of(verdict, [](const Json& value) { return isOneOf(value, findings); })) {
        refuse("the chip's \"verdict\" has a value that is not \"proven\", \"refuted\" or \"not-tried\"");
    }
    const auto files = filesOf(chip.value("files", Json{}));
    requireDigests(digestsIn(signedContentOf(files.at("SOD"))), files);
    const auto groups = inside(files.at("DG1"), 0x61);
    const auto found = groups ? valueOf(*groups, 0x5F1F) : std::nullopt;
    if (!found || found->size() != zoneSize) {
        refuse("the chip's DG1 holds no zone of a document of this type");
    }
    if (!zone.empty() && !areEqual(*found, viewOf(zone))) {
        refuse("the page's lines are not the zone in the chip's DG1");
    }
}

Bytes DocumentCheck::signedContentOf(const Bytes& securityObject) const {
    const auto outer = dataObjects(securityObject);
    const auto value = outer && outer->size() == 1 ? valueOf(*outer, 0x77) : std::nullopt;
    const auto* begin = value ? value->data() : nullptr;
    const SignedMessage message{value ? d2i_CMS_ContentInfo(nullptr, &begin, static_cast<long>(value->size()))
                                      : nullptr};
    const Memory content{BIO_new(BIO_s_mem())};
    const bool holds = message && CMS_verify(message.get(), nullptr, nullptr, nullptr, content.get(),
                                             CMS_BINARY | CMS_NO_SIGNER_CERT_VERIFY) == 1;
    ERR_clear_error();
    if (!holds) {
        refuse("the signature of the SOD does not hold");
    }
    const Identifier type{OBJ_txt2obj("2.23.136.1.1.1", 1)};
    if (OBJ_cmp(CMS_get0_eContentType(message.get()), type.get()) != 0) {
        refuse("the SOD holds something else than digests");
    }
    const Signers signers{CMS_get0_signers(message.get())};
    if (sk_X509_num(signers.get()) != 1) {
        refuse("the SOD has another number of signers than one");
    }
    requireTrust(sk_X509_value(signers.get(), 0));
    const std::uint8_t* bytes = nullptr;
    const long length = BIO_get_mem_data(content.get(), &bytes);
    return {bytes, bytes + length};
}

void DocumentCheck::requireTrust(X509* signer) const {
    const Trust trust{X509_STORE_CTX_new()};
    X509_STORE_CTX_init(trust.get(), trusted_.get(), signer, nullptr);
    X509_STORE_CTX_set_time(trust.get(), 0, std::chrono::system_clock::to_time_t(clock_()));
    if (X509_verify_cert(trust.get()) != 1) {
        const auto* const reason = X509_verify_cert_error_string(X509_STORE_CTX_get_error(trust.get()));
        ERR_clear_error();
        refuse(std::string{"the document signer is not trusted: "} + reason);
    }
}

} // namespace kivo::simulator::chip
