#include "reader/EncodedPictures.hpp"

#include "tlv/Tlv.hpp"

#include <openjpeg.h>
#include <turbojpeg.h>

#include <algorithm>
#include <array>
#include <memory>
#include <stdexcept>

namespace kivo::reader {
namespace {

struct Written {
    Bytes bytes;
    std::size_t at = 0;
};

OPJ_SIZE_T write(void* data, OPJ_SIZE_T size, void* user) {
    auto& written = *static_cast<Written*>(user);
    written.bytes.resize(std::max<std::size_t>(written.bytes.size(), written.at + size));
    std::copy_n(static_cast<std::uint8_t*>(data), size,
                written.bytes.begin() + static_cast<std::ptrdiff_t>(written.at));
    written.at += size;
    return size;
}

OPJ_BOOL moveTo(OPJ_OFF_T to, void* user) {
    static_cast<Written*>(user)->at = static_cast<std::size_t>(to);
    return OPJ_TRUE;
}

OPJ_OFF_T moveBy(OPJ_OFF_T by, void* user) {
    static_cast<Written*>(user)->at += static_cast<std::size_t>(by);
    return by;
}

void check(bool succeeded) {
    if (!succeeded) {
        throw std::runtime_error{"a picture could not be encoded"};
    }
}

} // namespace

Bytes jpegOf(const platform::VideoFrame& frame) {
    const std::unique_ptr<void, int (*)(void*)> encoder{tjInitCompress(), tjDestroy};
    unsigned char* bytes = nullptr;
    unsigned long size = 0;
    check(tjCompress2(encoder.get(), frame.bytes.data(), frame.width, 0, frame.height, TJPF_RGB, &bytes, &size,
                      TJSAMP_444, 95, 0) == 0);
    const std::unique_ptr<unsigned char, void (*)(unsigned char*)> owned{bytes, tjFree};
    return {bytes, bytes + size};
}

Bytes jpeg2000Of(const platform::VideoFrame& frame, int tile) {
    std::array<opj_image_cmptparm_t, 3> facts{};
    for (auto& each : facts) {
        each = {.dx = 1,
                .dy = 1,
                .w = static_cast<OPJ_UINT32>(frame.width),
                .h = static_cast<OPJ_UINT32>(frame.height),
                .x0 = 0,
                .y0 = 0,
                .prec = 8,
                .bpp = 8,
                .sgnd = 0};
    }
    const std::unique_ptr<opj_image_t, void (*)(opj_image_t*)> image{opj_image_create(3, facts.data(), OPJ_CLRSPC_SRGB),
                                                                     opj_image_destroy};
    image->x1 = static_cast<OPJ_UINT32>(frame.width);
    image->y1 = static_cast<OPJ_UINT32>(frame.height);
    for (std::size_t i = 0; i < frame.bytes.size(); ++i) {
        image->comps[i % 3].data[i / 3] = frame.bytes[i];
    }
    opj_cparameters_t parameters{};
    opj_set_default_encoder_parameters(&parameters);
    parameters.tcp_numlayers = 1;
    parameters.cp_disto_alloc = 1;
    parameters.numresolution = 4;
    parameters.tcp_mct = 1;
    if (tile > 0) {
        parameters.tile_size_on = OPJ_TRUE;
        parameters.cp_tdx = tile;
        parameters.cp_tdy = tile;
    }
    const std::unique_ptr<opj_codec_t, void (*)(opj_codec_t*)> codec{opj_create_compress(OPJ_CODEC_J2K),
                                                                     opj_destroy_codec};
    Written written;
    const std::unique_ptr<opj_stream_t, void (*)(opj_stream_t*)> stream{opj_stream_create(4096, OPJ_FALSE),
                                                                        opj_stream_destroy};
    opj_stream_set_user_data(stream.get(), &written, nullptr);
    opj_stream_set_write_function(stream.get(), write);
    opj_stream_set_seek_function(stream.get(), moveTo);
    opj_stream_set_skip_function(stream.get(), moveBy);
    check(opj_setup_encoder(codec.get(), &parameters, image.get()) &&
          opj_start_compress(codec.get(), image.get(), stream.get()) && opj_encode(codec.get(), stream.get()) &&
          opj_end_compress(codec.get(), stream.get()));
    return written.bytes;
}

Bytes jp2Of(const Bytes& codestream) {
    const auto number = [](std::size_t value) {
        return Bytes{static_cast<std::uint8_t>(value >> 24), static_cast<std::uint8_t>(value >> 16),
                     static_cast<std::uint8_t>(value >> 8), static_cast<std::uint8_t>(value)};
    };
    const auto box = [&](std::string_view kind, const Bytes& content) {
        auto bytes = number(content.size() + 8);
        bytes.insert(bytes.end(), kind.begin(), kind.end());
        bytes.insert(bytes.end(), content.begin(), content.end());
        return bytes;
    };
    auto file = box("jP  ", {0x0D, 0x0A, 0x87, 0x0A});
    for (const auto& each :
         {box("ftyp", {'j', 'p', '2', ' ', 0, 0, 0, 0, 'j', 'p', '2', ' '}), box("jp2c", codestream)}) {
        file.insert(file.end(), each.begin(), each.end());
    }
    return file;
}

} // namespace kivo::reader
