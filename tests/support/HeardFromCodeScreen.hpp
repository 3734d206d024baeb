#pragma once

#include "services/acquisition/qr/inhouse/QRCodeVCDelegate.hpp"

#include <string>
#include <vector>

namespace kivo::test {

/// Keeps what the activation code screen tells, in order.
struct HeardFromCodeScreen final : QRCodeVCDelegate {
    std::vector<std::string> heard;

    void invalidQRCodeScanned() override { heard.emplace_back("invalid"); }

    void activationCodeEntered(std::string code) override { heard.push_back("entered " + code); }

    void activationCodeScanned(std::string code) override { heard.push_back("scanned " + code); }

    void closeButtonPressed() override { heard.emplace_back("closed"); }
};

} // namespace kivo::test
