#include "platform/json/Json.hpp"

#include <kivo/AcquisitionConfig.hpp>

#include <array>

namespace kivo {
namespace {

struct Field {
    std::string_view header;
    const char* storedKey;
    std::string AcquisitionConfig::* member;
};

constexpr const char* storedEnvironment = "ENVIRONMENT";

constexpr std::array fields{
    Field{AcquisitionConfigKeys::KIVO_APP_DOCLIST, "KIVO_APP_DOCLIST", &AcquisitionConfig::KIVO_APP_DOCLIST},
    Field{AcquisitionConfigKeys::KIVO_EXPIRE_GRACE, "KIVO_EXPIRE_GRACE", &AcquisitionConfig::KIVO_EXPIRE_GRACE},
    Field{AcquisitionConfigKeys::KIVO_FACEMATCH_MIN, "KIVO_FACEMATCH_MIN", &AcquisitionConfig::KIVO_FACEMATCH_MIN},
    Field{AcquisitionConfigKeys::KIVO_DOC_ISSUERS, "KIVO_DOC_ISSUERS", &AcquisitionConfig::KIVO_DOC_ISSUERS},
    Field{AcquisitionConfigKeys::KIVO_IMAGES, "KIVO_IMAGES", &AcquisitionConfig::KIVO_IMAGES},
};

/// The limit is wide, because the host decides the length of its texts.
constexpr json::Limits storedLimits{.bytes = std::size_t{16} << 20};

std::optional<SDKEnv> environmentIn(const json::Value* value) {
    const auto number = value != nullptr ? value->integer() : std::nullopt;
    for (const auto environment : {SDKEnv::PROD, SDKEnv::PREPROD, SDKEnv::TEST, SDKEnv::DEV}) {
        if (number == rawValue(environment)) {
            return environment;
        }
    }
    return std::nullopt;
}

} // namespace

AcquisitionConfig::AcquisitionConfig(SDKEnv environment, std::string kivo_app_doclist, std::string kivo_expire_grace,
                                     std::string kivo_facematch_min, std::string kivo_doc_issuers,
                                     std::string kivo_images)
    : ENVIRONMENT{environment}
    , KIVO_APP_DOCLIST{std::move(kivo_app_doclist)}
    , KIVO_EXPIRE_GRACE{std::move(kivo_expire_grace)}
    , KIVO_FACEMATCH_MIN{std::move(kivo_facematch_min)}
    , KIVO_DOC_ISSUERS{std::move(kivo_doc_issuers)}
    , KIVO_IMAGES{std::move(kivo_images)} {}

AcquisitionConfig::AcquisitionConfig(AcquisitionConfigValues values)
    : AcquisitionConfig{values.ENVIRONMENT,
                        std::move(values.KIVO_APP_DOCLIST),
                        std::move(values.KIVO_EXPIRE_GRACE),
                        std::move(values.KIVO_FACEMATCH_MIN),
                        std::move(values.KIVO_DOC_ISSUERS),
                        std::move(values.KIVO_IMAGES)} {}

AcquisitionConfig::Dictionary AcquisitionConfig::getAsDictionary() const {
    const auto environment = SDKEnvHelper::environmentName(ENVIRONMENT);
    if (environment.empty()) {
        return {};
    }
    Dictionary dictionary;
    dictionary.reserve(fields.size() + 1);
    dictionary.emplace_back(AcquisitionConfigKeys::ENVIRONMENT, environment);
    for (const auto& field : fields) {
        dictionary.emplace_back(field.header, this->*field.member);
    }
    return dictionary;
}

std::string AcquisitionConfig::encode() const {
    json::Object object;
    object.set(storedEnvironment, rawValue(ENVIRONMENT));
    for (const auto& field : fields) {
        object.set(field.storedKey, this->*field.member);
    }
    return json::writeRepaired(object);
}

std::expected<std::shared_ptr<AcquisitionConfig>, std::string> AcquisitionConfig::decode(std::string_view encoded) {
    const auto object = json::read(encoded, storedLimits);
    if (!object || object->kind() != json::Kind::object) {
        return std::unexpected{"the text is no JSON object of less than 16 MiB"};
    }
    const auto environment = environmentIn(object->find(storedEnvironment));
    if (!environment) {
        return std::unexpected{"ENVIRONMENT is no environment: expected an integer from 0 to 3"};
    }
    auto config = std::make_shared<AcquisitionConfig>(*environment, "", "", "", "", "");
    for (const auto& field : fields) {
        const auto* const text = object->textOf(field.storedKey);
        if (text == nullptr) {
            return std::unexpected{std::string{field.storedKey} + " is missing, or is no text"};
        }
        (*config).*field.member = *text;
    }
    return config;
}

} // namespace kivo
