#include "crypto/SignedData.hpp"
#include "tlv/Tlv.hpp"
#include "verification/TrustAnchors.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>

namespace kivo::reader {
namespace {

constexpr std::size_t mostFiles = 4096;
constexpr std::size_t largestFile = std::size_t{16} << 20;
constexpr std::size_t mostObjects = 16'384;
constexpr std::string_view masterListKind = "2.23.136.1.1.2";

std::unexpected<std::string> refused(const std::filesystem::path& path, std::string_view why) {
    return std::unexpected{path.string() + " " + std::string{why}};
}

bool isVouchedFor(const struct stat& status) {
    return (status.st_uid == 0 || status.st_uid == geteuid()) && (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

constexpr std::string_view writtenByOthers = "can be changed by other users, so the authorities in it cannot be "
                                             "trusted. Its owner must be root or the user of this "
                                             "process, and nobody else may write it.";

class Descriptor {
public:
    explicit Descriptor(const std::filesystem::path& path)
        : number(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {}

    ~Descriptor() {
        if (number >= 0) {
            close(number);
        }
    }

    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int value() const { return number; }

private:
    int number;
};

std::expected<Bytes, std::string> bytesIn(const std::filesystem::path& path) {
    const Descriptor file{path};
    struct stat status{};
    if (file.value() < 0 || fstat(file.value(), &status) != 0) {
        return refused(path, "cannot be read: " + std::error_code{errno, std::generic_category()}.message() + ".");
    }
    if (!S_ISREG(status.st_mode) || static_cast<std::size_t>(status.st_size) > largestFile) {
        return refused(path, "is no file of at most 16 MiB.");
    }
    if (!isVouchedFor(status)) {
        return refused(path, writtenByOthers);
    }
    Bytes bytes(static_cast<std::size_t>(status.st_size));
    std::size_t size = 0;
    while (size < bytes.size()) {
        const auto count = read(file.value(), bytes.data() + size, bytes.size() - size);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return refused(path, "changed while it was read.");
        }
        size += static_cast<std::size_t>(count);
    }
    return bytes;
}

struct Found {
    std::vector<Certificate> certificates;
    std::vector<RevocationList> lists;
};

// The certificates of a master list: a version and a set.
bool appendMasterList(ByteView content, Found& found) {
    const auto whole = firstTlv(content);
    const auto set = whole && whole->tag == 0x30 ? valueOf(whole->value, 0x31) : std::nullopt;
    if (!set) {
        return false;
    }
    for (auto rest = *set; !rest.empty();) {
        const auto object = firstTlv(rest);
        const auto certificate = object ? Certificate::read(rest.first(object->size)) : std::nullopt;
        if (!object || found.certificates.size() == mostObjects) {
            return false;
        }
        // One country's certificate that cannot be read leaves the others usable.
        if (certificate) {
            found.certificates.push_back(*certificate);
        }
        rest = rest.subspan(object->size);
    }
    return true;
}

// Empty, or what is wrong with the object.
std::string_view append(ByteView der, const std::optional<Certificate>& masterListSigner, Found& found) {
    if (found.certificates.size() + found.lists.size() >= mostObjects) {
        return "is one too many: 16384 certificates and lists are read at most.";
    }
    if (const auto certificate = Certificate::read(der)) {
        found.certificates.push_back(*certificate);
        return {};
    }
    if (const auto list = RevocationList::read(der)) {
        found.lists.push_back(*list);
        return {};
    }
    const auto message = SignedMessage::read(der);
    if (!message || message->contentType() != masterListKind) {
        return "holds no certificate, no revocation list and no master list.";
    }
    const auto signer = message->signer();
    if (!signer || !message->signatureHolds(*signer)) {
        return "is a master list whose signature does not hold.";
    }
    if (masterListSigner && *signer != *masterListSigner && !signer->isIssuedBy(*masterListSigner)) {
        return "is a master list that another than the named signer has signed.";
    }
    return appendMasterList(message->content(), found) ? std::string_view{} : "is a broken master list.";
}

std::expected<std::vector<std::filesystem::path>, std::string> filesOf(const std::filesystem::path& folder) {
    struct stat status{};
    if (stat(folder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
        return refused(folder, "is no folder that can be read.");
    }
    if (!isVouchedFor(status)) {
        return refused(folder, writtenByOthers);
    }
    std::vector<std::filesystem::path> files;
    std::error_code error;
    for (std::filesystem::directory_iterator at{folder, error}, end; !error && at != end; at.increment(error)) {
        if (at->path().filename().string().starts_with('.') || at->is_directory(error)) {
            continue;
        }
        if (files.size() == mostFiles) {
            return refused(folder, "holds more than 4096 files.");
        }
        files.push_back(at->path());
    }
    if (error) {
        return refused(folder, "cannot be read: " + error.message() + ".");
    }
    std::ranges::sort(files);
    return files;
}

} // namespace

std::expected<std::shared_ptr<const TrustAnchors>, std::string> trustAnchorsIn(const std::filesystem::path& folder,
                                                                               ByteView masterListSigner) {
    const auto listSigner = Certificate::read(masterListSigner);
    if (!masterListSigner.empty() && !listSigner) {
        return std::unexpected{"The signer of the master lists is no certificate in DER."};
    }
    const auto files = filesOf(folder);
    if (!files) {
        return std::unexpected{files.error()};
    }
    Found found;
    for (const auto& path : *files) {
        const auto bytes = bytesIn(path);
        if (!bytes) {
            return std::unexpected{bytes.error()};
        }
        const auto objects = derObjectsIn(*bytes, mostObjects);
        if (!objects) {
            return refused(path, "is broken text (PEM), or holds more than 16384 objects.");
        }
        for (const auto& der : *objects) {
            if (const auto wrong = append(der, listSigner, found); !wrong.empty()) {
                return refused(path, wrong);
            }
        }
    }
    return std::make_shared<const TrustAnchors>(std::move(found.certificates), std::move(found.lists));
}

} // namespace kivo::reader
