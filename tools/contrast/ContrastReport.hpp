#pragma once

#include <kivo/device/TextContrast.hpp>

#include <filesystem>
#include <fstream>
#include <iomanip>
#include <sstream>
#include <string>
#include <vector>

namespace contrast {

/// The file "contrast.txt" beside pictures, with a line for each: how many texts it has, and how well they stand out.
class Report {
public:
    explicit Report(const std::filesystem::path& folder)
        : file_{folder / "contrast.txt"}
        , lines_{file_} {}

    /// Adds the line of a picture. Returns an empty text, or a sentence about a text with too little contrast or about
    /// the file.
    std::string add(const std::string& picture, const std::vector<kivo::device::TextContrast>& texts) {
        const kivo::device::TextContrast* worst = nullptr;
        std::size_t judged = 0;
        for (const auto& each : texts) {
            if (each.least > 0) {
                ++judged;
                // By how much a text is above what the text needs.
                worst = worst == nullptr || each.contrast / each.least < worst->contrast / worst->least ? &each : worst;
            }
        }
        std::ostringstream detail;
        lines_ << picture << ": " << judged << " texts judged, " << texts.size() - judged
               << " behind a veil or disabled";
        if (worst != nullptr) {
            detail << std::fixed << std::setprecision(1) << worst->contrast << " of " << worst->least << " (\""
                   << worst->text << "\")";
            lines_ << "; least contrast " << detail.str();
        }
        if (!(lines_ << std::endl)) {
            return file_.string() + " could not be written";
        }
        return worst != nullptr && worst->contrast < worst->least
                   ? picture + ": a text hardly stands out, with a contrast of " + detail.str()
                   : std::string{};
    }

private:
    std::filesystem::path file_;
    std::ofstream lines_;
};

} // namespace contrast
