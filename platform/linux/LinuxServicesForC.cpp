#include "platform/c/Arguments.hpp"

#include <kivo/c/linux.h>
#include <kivo/platform/LinuxServices.hpp>

extern "C" kivo_status kivo_linux_install(const kivo_linux_options* options) {
    using namespace kivo;
    return c::statusOf(__func__, [&] {
        const auto given = options != nullptr ? c::structureOf(options, "options") : kivo_linux_options{};
        platform::install(platform::linuxServices(
            {.mainBundle = c::viewOf(given.main_bundle, "main_bundle"),
             .dataFolder = c::viewOf(given.data_folder, "data_folder"),
             .trustedCertificates = c::viewOf(given.trusted_certificates, "trusted_certificates"),
             .cameraPipeline = c::stringOf(given.camera_pipeline, "camera_pipeline"),
             .language = c::stringOf(given.language, "language")}));
    });
}
