#pragma once

#include <kivo/KivoAPIProvider.hpp>
#import <kivo/objc/KivoAPIProvider.h>

namespace kivo::objc {

/// Copies `response`, and releases it when the last copy of the completion is gone. Empty for nil.
ObjCCompletion completion(KivoCompletion response);

} // namespace kivo::objc
