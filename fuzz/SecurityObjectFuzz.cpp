#include "FuzzInput.hpp"
#include "crypto/SignedData.hpp"
#include "verification/ActiveAuthentication.hpp"
#include "verification/PassiveAuthentication.hpp"
#include "verification/SecurityObject.hpp"

using namespace kivo::reader;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const ByteView bytes{data, size};
    const Bytes file{bytes.begin(), bytes.end()};
    const auto verdict = passiveVerdict({{DocumentFile::sod, file}, {DocumentFile::dg1, {0x61, 0x00}}}, nullptr, {});
    // The fuzzer's bytes carry no signature over the group.
    kivo::fuzz::require(verdict.dataIsUnchanged != Proof::proven && verdict.signerIsTrusted == Proof::notTried);
    kivo::fuzz::require(activeAuthentication(file, file, Bytes(8), Bytes(128, 1)) != Proof::proven);
    if (const auto object = securityObjectIn(bytes)) {
        kivo::fuzz::require(object->digests.size() <= 16);
    }
    if (const auto list = RevocationList::read(bytes)) {
        kivo::fuzz::require(!Certificate::read(bytes));
    }
    return 0;
}
