#include <kivo/platform/Services.hpp>

#include <gtest/gtest.h>

namespace kivo::reader {
namespace {

/// Every test begins with the services of this machine, so that no test waits on the main queue of another test.
class FreshServices final : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo& /*test*/) override { platform::install(platform::defaultServices()); }
};

[[maybe_unused]] const bool isListening = [] {
    testing::UnitTest::GetInstance()->listeners().Append(new FreshServices);
    return true;
}();

} // namespace
} // namespace kivo::reader
