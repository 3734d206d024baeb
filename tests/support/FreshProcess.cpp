#include "platform/base/Process.hpp"

#include <gtest/gtest.h>

namespace kivo::test {
namespace {

/// Every test begins with a process object of its own, so that no test sees what another test left behind.
class FreshProcess final : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo& /*test*/) override { platform::Process::beginAnew(); }
};

[[maybe_unused]] const bool isListening = [] {
    testing::UnitTest::GetInstance()->listeners().Append(new FreshProcess);
    return true;
}();

} // namespace
} // namespace kivo::test
