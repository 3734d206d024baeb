// A host that joins once and ends. usage: kivo-start-with-sdk JOIN-PAGE CERTIFICATES FOLDER
#include "BareCurl.hpp"
#include "BenchHost.hpp"

#include <cstdlib>
#include <memory>
#include <string>

using namespace kivo;
using namespace kivo::bench;

namespace {

struct Address {
    std::string joinPage;
    std::string trustedCertificates;
};

} // namespace

// The time of the disk is not the program's. Visible, so that SQLite calls these in place of those of the C library.
extern "C" [[gnu::visibility("default")]] int fsync(int /*file*/) {
    return 0;
}

extern "C" [[gnu::visibility("default")]] int fdatasync(int /*file*/) {
    return 0;
}

int main(int argc, char** argv) {
    if (argc != 4) {
        giveUp("wants a join page, certificates and a folder");
    }
    const auto session = loadAgainst(Address{argv[1], argv[2]}, argv[3]);
    Answered joined;
    session->join("123456", std::make_shared<AcquisitionConfig>(SDKEnv::TEST, "PASSPORT", "P6M", "0.8", "UTO", "face"),
                  [&](const IdvOutcome& outcome) { joined.tell(outcome.has_value()); });
    joined.await("the join failed");
    return EXIT_SUCCESS;
}
