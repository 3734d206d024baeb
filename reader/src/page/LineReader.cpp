#include "page/LineReader.hpp"

#include <tesseract/baseapi.h>

// Of the compiler's library for parallel loops, which the recognition library uses.
extern "C" {
int omp_get_max_active_levels();
void omp_set_max_active_levels(int levels);
}

namespace kivo::reader {
namespace {

// Keeps recognition on the calling thread: a line is short, and waiting for helping threads takes longer than the line,
// ten times as long where the processors are busy.
class OneThread {
public:
    OneThread() { omp_set_max_active_levels(0); }

    ~OneThread() { omp_set_max_active_levels(former); }

    OneThread(const OneThread&) = delete;
    OneThread& operator=(const OneThread&) = delete;

private:
    int former = omp_get_max_active_levels();
};

} // namespace

LineReader::LineReader()
    : recognition(std::make_unique<tesseract::TessBaseAPI>()) {
    // Words of a language are no help among names and numbers.
    const std::vector<std::string> names{"load_system_dawg", "load_freq_dawg", "debug_file"};
    const std::vector<std::string> values{"0", "0", "/dev/null"};
    ready = recognition->Init(nullptr, "eng", tesseract::OEM_LSTM_ONLY, nullptr, 0, &names, &values, false) == 0;
    if (ready) {
        recognition->SetVariable("tessedit_char_whitelist", "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789<");
        recognition->SetPageSegMode(tesseract::PSM_RAW_LINE);
    }
}

LineReader::~LineReader() = default;

std::string LineReader::read(const Shades& strip) {
    if (!ready || strip.bytes.empty()) {
        return {};
    }
    const OneThread alone;
    recognition->SetImage(strip.bytes.data(), strip.width, strip.height, 1, strip.width);
    recognition->SetSourceResolution(300);
    const std::unique_ptr<char[]> text{recognition->GetUTF8Text()};
    std::string letters;
    for (const char* at = text.get(); at != nullptr && *at != '\0'; ++at) {
        if ((*at >= 'A' && *at <= 'Z') || (*at >= '0' && *at <= '9') || *at == '<') {
            letters += *at;
        }
    }
    return letters;
}

} // namespace kivo::reader
