#include <kivo/simulator/Secrets.hpp>

#include <gmock/gmock.h>

namespace kivo::test {
namespace {

using testing::HasSubstr;
using testing::Not;

TEST(Secrets, HideCodesKeysAndScansAtEveryDepthAndKeepWhatHelps) {
    const auto shown = simulator::withoutSecrets(R"({"kivo-action":"init","kivo-init-code":"SECRET-1",
        "app-info":{"os":"12.5","deviceId":"SECRET-2"},"auditTrail":["SECRET-3"],"faceScan":"SECRET-4"})");
    EXPECT_THAT(shown, HasSubstr("init"));
    EXPECT_THAT(shown, HasSubstr("12.5"));
    EXPECT_THAT(shown, HasSubstr("(8 characters)"));
    EXPECT_THAT(shown, Not(HasSubstr("SECRET")));
    for (const auto* other : {"SECRET", R"(["SECRET"])", ""}) {
        EXPECT_THAT(simulator::withoutSecrets(other), Not(HasSubstr("SECRET")));
    }
}

} // namespace
} // namespace kivo::test
