#include "QrPicture.hpp"

#include <nlohmann/json.hpp>
#include <qrencode.h>

#include <memory>
#include <stdexcept>

namespace simulation {

std::string qrPicture(const std::string& activationCode) {
    const auto content = nlohmann::json{{"code", activationCode}}.dump();
    const std::unique_ptr<QRcode, decltype(&QRcode_free)> code{
        QRcode_encodeString8bit(content.c_str(), 0, QR_ECLEVEL_M), QRcode_free};
    if (!code) {
        throw std::runtime_error{"the activation code has no QR picture"};
    }
    // The margin that readers of QR codes need.
    constexpr int margin = 4;
    const auto side = std::to_string(code->width + 2 * margin);
    std::string path;
    for (int row = 0; row < code->width; ++row) {
        for (int column = 0; column < code->width; ++column) {
            if ((code->data[row * code->width + column] & 1U) != 0) {
                path += "M" + std::to_string(column + margin) + " " + std::to_string(row + margin) + "h1v1h-1z";
            }
        }
    }
    return R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 )" + side + " " + side +
           R"(" shape-rendering="crispEdges"><path fill="#fff" d="M0 0h)" + side + "v" + side + "h-" + side +
           R"(z"/><path fill="#000" d=")" + path + R"("/></svg>)";
}

} // namespace simulation
