#include <kivo/AcquisitionConfig.hpp>

#include <nlohmann/json.hpp>

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

std::optional<SDKEnv> environmentIn(const nlohmann::json& value) {
    for (const auto environment : {SDKEnv::PROD, SDKEnv::PREPROD, SDKEnv::TEST, SDKEnv::DEV}) {
        if (value.is_number_integer() && value == rawValue(environment)) {
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
    nlohmann::ordered_json object;
    object[storedEnvironment] = rawValue(ENVIRONMENT);
    for (const auto& field : fields) {
        object[field.storedKey] = this->*field.member;
    }
    return object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

std::expected<std::shared_ptr<AcquisitionConfig>, std::string> AcquisitionConfig::decode(std::string_view encoded) {
    try {
        const auto object = nlohmann::json::parse(encoded);
        const auto environment = environmentIn(object.at(storedEnvironment));
        if (!environment) {
            return std::unexpected{"ENVIRONMENT is no environment: expected an integer from 0 to 3"};
        }
        auto config = std::make_shared<AcquisitionConfig>(*environment, "", "", "", "", "");
        for (const auto& field : fields) {
            object.at(field.storedKey).get_to((*config).*field.member);
        }
        return config;
    } catch (const nlohmann::json::exception& error) {
        return std::unexpected{std::string{error.what()}};
    }
}

} // namespace kivo
