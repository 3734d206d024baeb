#include "c/Values.hpp"

#include "platform/c/Arguments.hpp"

#include <kivo/c/codes.h>

namespace kivo::c {

AcquisitionConfigValues configurationOf(const kivo_config* config) {
    const auto given = structureOf(config, "config");
    return {.ENVIRONMENT = enumeratorOf<SDKEnv>(given.environment, "environment"),
            .KIVO_APP_DOCLIST = stringOf(given.document_list, "document_list"),
            .KIVO_EXPIRE_GRACE = stringOf(given.expiry_grace, "expiry_grace"),
            .KIVO_FACEMATCH_MIN = stringOf(given.face_match_minimum, "face_match_minimum"),
            .KIVO_DOC_ISSUERS = stringOf(given.document_issuers, "document_issuers"),
            .KIVO_IMAGES = stringOf(given.images, "images")};
}

Deployment deploymentOf(const kivo_deployment* deployment) {
    const auto given = structureOf(deployment, "deployment");
    return {.joinPages = {.PROD = stringOf(given.join_page_prod, "join_page_prod"),
                          .PREPROD = stringOf(given.join_page_preprod, "join_page_preprod"),
                          .TEST = stringOf(given.join_page_test, "join_page_test"),
                          .DEV = stringOf(given.join_page_dev, "join_page_dev")},
            .faceTecProduction = given.face_tec_production,
            .faceTecProductionKey = stringOf(given.face_tec_production_key, "face_tec_production_key"),
            .requiresPins = given.requires_pins};
}

kivo_failure failureFor(const Failure& failure) {
    const auto* const known = kivo_response_code_of(code(failure.code));
    return {.size = sizeof(kivo_failure),
            .code = known != nullptr ? known : kivo_response_code_of(KIVO_CODE_UNKNOWN_ERROR),
            .kind = static_cast<kivo_failure_kind>(failure.kind),
            .cause = textOf(failure.text)};
}

} // namespace kivo::c
