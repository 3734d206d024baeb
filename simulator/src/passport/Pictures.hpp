#pragma once

#include "passport/Tlv.hpp"

namespace kivo::simulator::chip {

// The files in simulator/pictures: a drawn face and a drawn signature, of nobody.
extern const View face_jpg;
extern const View face_jp2;
extern const View signature_jpg;

} // namespace kivo::simulator::chip
