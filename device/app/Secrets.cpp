#include "Secrets.hpp"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <array>

namespace kivo::device::app {
namespace {

/// What may be read; everything else that is text is masked but for addresses of endpoints.
constexpr std::array openMembers{"kivo-action",
                                 "response-type",
                                 "response-code",
                                 "os",
                                 "status",
                                 "message",
                                 "source",
                                 "target-env",
                                 "appVersion",
                                 "networkType",
                                 "sdkVersion",
                                 "apiLevel",
                                 "retry-limit",
                                 "app-doclist",
                                 "kivo-app-doclist",
                                 "kivo-expiry-grace",
                                 "kivo-images",
                                 "kivo-doc-issuers",
                                 "kivo-facematch-min",
                                 "deviceModel"};

QJsonValue masked(const QString& member, const QJsonValue& value) {
    if (value.isObject()) {
        auto object = value.toObject();
        for (auto each = object.begin(); each != object.end(); ++each) {
            *each = masked(each.key(), *each);
        }
        return object;
    }
    if (value.isArray()) {
        QJsonArray array;
        for (const auto& each : value.toArray()) {
            array.append(masked(member, each));
        }
        return array;
    }
    const bool isOpen = !value.isString() || member.endsWith("-endpoint") ||
                        std::ranges::any_of(openMembers, [&](const auto* open) { return member == open; });
    return isOpen ? value : QJsonValue{QString{"\u2022\u2022\u2022 (%1 characters)"}.arg(value.toString().size())};
}

} // namespace

QString withoutSecrets(const std::string& body) {
    const auto bytes = QByteArray::fromStdString(body);
    const auto document = QJsonDocument::fromJson(bytes);
    if (!document.isObject()) {
        return bytes.isEmpty() ? QString{"(empty)"} : QString{"(%1 bytes that are no JSON object)"}.arg(bytes.size());
    }
    return QString::fromUtf8(QJsonDocument{masked({}, document.object()).toObject()}.toJson());
}

} // namespace kivo::device::app
