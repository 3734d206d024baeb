#include "desk/Desk.hpp"

#include <kivo/reader/CardSources.hpp>
#include <kivo/reader/DocumentReader.hpp>

#include <chrono>
#include <cstdint>
#include <cstdlib>

namespace desk {

using namespace std::chrono_literals;
namespace simulator = kivo::simulator;

Desk::Desk(Way way, const std::filesystem::path& folder)
    : certificates_{folder / "country-certificates"} {
    const auto authority = std::make_shared<simulator::CountryAuthority>();
    authority->save(certificates_);
    passport_ = std::make_shared<simulator::Passport>(simulator::PassportConfiguration{.authority = authority});
    if (way == Way::socket) {
        layOnSocket();
        way_ = "through a socket that stands in for a card reader";
        return;
    }
    auto service = simulator::CardService::start();
    if (service) {
        service_ = std::move(*service);
        setenv("PCSCLITE_CSOCK_NAME", service_->socket().c_str(), /*overwrite=*/1);
        virtualReader_ = std::make_unique<simulator::VirtualReader>(passport_, *service_);
        if (virtualReader_->waitForDriver(10s)) {
            cards_ = kivo::reader::systemCards();
            way_ = "through the card service pcscd and a virtual reader";
            return;
        }
        virtualReader_ = nullptr;
        service_ = nullptr;
        unsetenv("PCSCLITE_CSOCK_NAME");
    }
    const auto reason = service ? std::string{"the virtual reader does not answer"} : service.error();
    layOnSocket();
    way_ = "through a socket that stands in for the card service: " + reason;
}

void Desk::layOnSocket() {
    socket_ = std::make_unique<simulator::CardSocket>(passport_);
    cards_ = kivo::reader::cardsBehindSocket("127.0.0.1", static_cast<std::uint16_t>(socket_->port()));
}

std::shared_ptr<kivo::platform::ReadID> Desk::makeReader(bool usesCamera) const {
    return std::make_shared<kivo::reader::DocumentReader>(kivo::reader::DocumentReaderOptions{
        .cards = cards_, .countryCertificates = certificates_, .usesCamera = usesCamera});
}

} // namespace desk
