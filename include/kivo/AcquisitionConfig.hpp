#pragma once

#include <kivo/Export.hpp>
#include <kivo/SDKEnv.hpp>

#include <expected>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kivo {

/// The names under which an acquisition configuration travels with the join.
struct AcquisitionConfigKeys {
    /// The key of the member with the same name of the configuration.
    static constexpr std::string_view ENVIRONMENT = "target-env";
    static constexpr std::string_view KIVO_APP_DOCLIST = "kivo-app-doclist";
    static constexpr std::string_view KIVO_EXPIRE_GRACE = "kivo-expiry-grace";
    static constexpr std::string_view KIVO_FACEMATCH_MIN = "kivo-facematch-min";
    static constexpr std::string_view KIVO_DOC_ISSUERS = "kivo-doc-issuers";
    static constexpr std::string_view KIVO_IMAGES = "kivo-images";
};

/// The values of an `AcquisitionConfig` by name, for
/// `std::make_shared<AcquisitionConfig>(AcquisitionConfigValues{...})`.
///
/// The identity service defines what the texts mean and how they are written; the SDK passes them on unread. A value
/// that is not named is an empty text.
struct AcquisitionConfigValues {
    /// The environment whose join page is asked.
    SDKEnv ENVIRONMENT = SDKEnv::PROD;
    /// The accepted documents ("kivo-app-doclist").
    std::string KIVO_APP_DOCLIST{};
    /// How long a document may have expired ("kivo-expiry-grace").
    std::string KIVO_EXPIRE_GRACE{};
    /// The least likeness of face and document ("kivo-facematch-min").
    std::string KIVO_FACEMATCH_MIN{};
    /// The accepted issuers of documents ("kivo-doc-issuers").
    std::string KIVO_DOC_ISSUERS{};
    /// The images that the service is to return ("kivo-images").
    std::string KIVO_IMAGES{};
};

/// A host's requirements for a session: the environment and five constraints, which the SDK passes on unread.
///
/// The identity service defines the meaning of the constraint texts. `join` reads a configuration during the call;
/// later changes have no effect on the session.
class KIVO_EXPORT AcquisitionConfig {
public:
    /// Keys and values, in the order in which a join sends them.
    using Dictionary = std::vector<std::pair<std::string, std::string>>;

    /// The values in the order of the members below.
    AcquisitionConfig(SDKEnv environment, std::string kivo_app_doclist, std::string kivo_expire_grace,
                      std::string kivo_facematch_min, std::string kivo_doc_issuers, std::string kivo_images);

    /// The values by their names.
    explicit AcquisitionConfig(AcquisitionConfigValues values);

    /// The six values under the names of `AcquisitionConfigKeys`, in that order, the environment by its name.
    /// Empty when `ENVIRONMENT` holds an integer that is not an environment.
    Dictionary getAsDictionary() const;

    /// The configuration as JSON text for storage, keyed by the member names below.
    std::string encode() const;

    /// Reads the output of `encode`, up to 16 MiB. All six members must be present with their types; otherwise a text
    /// names the fault.
    static std::expected<std::shared_ptr<AcquisitionConfig>, std::string> decode(std::string_view encoded);

    /// The values; `AcquisitionConfigValues` says what each means.
    SDKEnv ENVIRONMENT;
    std::string KIVO_APP_DOCLIST;
    std::string KIVO_EXPIRE_GRACE;
    std::string KIVO_FACEMATCH_MIN;
    std::string KIVO_DOC_ISSUERS;
    std::string KIVO_IMAGES;
};

} // namespace kivo
