#include "Configuration/session/StoredSession.hpp"
#include "NetworkManager/CommunicationSecurityManager.hpp"
#include "support/HostFixture.hpp"
#include "support/RecordedDiagnostics.hpp"
#include "support/ScriptedUrlSessions.hpp"

#include <kivo/platform/LinuxServices.hpp>

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>

namespace kivo {
namespace {

/// Sessions of a host to which the system denies something.
class SessionsAndTheSystem : public test::HostFixture {
protected:
    const std::shared_ptr<KivoAPI> session = KivoSDK::load("KEY", "18");
};

TEST_F(SessionsAndTheSystem, AMachineWithoutThreadsAnswers) {
    const auto exhausted = std::make_shared<test::ScriptedUrlSessions>();
    exhausted->isExhausted = true;
    services.urlSessions = exhausted;
    platform::install(services);
    EXPECT_EQ(join(*session).code(), ResponseCode::INVALID_JOIN_SESSION);
}

TEST_F(SessionsAndTheSystem, AProcessWithoutDescriptorsAnswersAndSaysWhy) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer itself needs descriptors";
#endif
    const auto diagnostics = std::make_shared<test::RecordedDiagnostics>();
    services.diagnostics = diagnostics;
    platform::install(services);
    rlimit former{};
    getrlimit(RLIMIT_NOFILE, &former);
    const rlimit none{.rlim_cur = 3, .rlim_max = former.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    // Before the request, version 17 leaves the keychain alone.
    const auto joined = join(*KivoSDK::load("KEY", "17"));
    const auto asked = answerTo([&](auto response) { session->status(response); });
    setrlimit(RLIMIT_NOFILE, &former);
    EXPECT_EQ(joined.code(), ResponseCode::INVALID_JOIN_SESSION);
    EXPECT_EQ(asked.code(), ResponseCode::INVALID_STATUS_SESSION);
    using testing::AllOf;
    using testing::HasSubstr;
    EXPECT_THAT(diagnostics->texts(), testing::IsSupersetOf({AllOf(HasSubstr("network: "), HasSubstr("ulimit -n")),
                                                             AllOf(HasSubstr("keychain: "), HasSubstr("ulimit -n"))}));
}

TEST_F(SessionsAndTheSystem, AnAnswerThatCannotBeStoredFailsTheJoin) {
    folder.write("flat", "a file where the data folder should be");
    auto broken = platform::linuxServices({.mainBundle = folder.path() / "Host.bundle",
                                           .dataFolder = folder.path() / "flat" / "data",
                                           .trustedCertificates = service.trustedCertificates()});
    services.keychain = broken.keychain;
    platform::install(services);
    EXPECT_EQ(join(*session).code(), ResponseCode::INVALID_JOIN_SESSION);
    EXPECT_EQ(answerTo([&](auto response) { session->status(response); }).code(), ResponseCode::INVALID_STATUS_SESSION);
}

TEST_F(SessionsAndTheSystem, AResetOnAFullDiskSaysThatItCouldNot) {
    EXPECT_TRUE(join(*session).succeeded(IdvEvents::JOIN_SESSION));
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit former{};
    getrlimit(RLIMIT_FSIZE, &former);
    const rlimit full{.rlim_cur = 1000, .rlim_max = former.rlim_max};
    setrlimit(RLIMIT_FSIZE, &full);
    testing::internal::CaptureStdout();
    session->reset();
    std::fflush(stdout);
    setrlimit(RLIMIT_FSIZE, &former);
    EXPECT_TRUE(testing::internal::GetCapturedStdout().contains("could not be deleted and is still stored"));
    EXPECT_TRUE(storedSession());
    session->reset();
    EXPECT_FALSE(storedSession());
}

TEST_F(SessionsAndTheSystem, AForkedChildIsAnsweredWithFailures) {
    EXPECT_TRUE(join(*session).succeeded(IdvEvents::JOIN_SESSION));
    const auto child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        alarm(30);
        int failures = 0;
        const auto count = [&](const IdvOutcome& outcome) { failures += outcome ? 0 : 1; };
        session->join("123456", config(), count);
        session->status(count);
        session->upload(AcquisitionObject::selfieImage, "x", count);
        _exit(failures == 3 ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(answerTo([&](auto response) { session->status(response); }).succeeded(IdvEvents::SESSION_STATUS))
        << "still";
}

TEST_F(SessionsAndTheSystem, HangingNoticesHoldUpNoRequest) {
    constexpr int asManyAsAServerGets = 6;
    EXPECT_TRUE(join(*session).succeeded(IdvEvents::JOIN_SESSION));
    const auto stored = storedSession();
    service.inject(simulator::Endpoint::update, simulator::Fault::drop());
    for (int i = 0; i < asManyAsAServerGets; ++i) {
        CommunicationSecurityManager::shared().updateFailureOnServer({}, &*stored);
    }
    ASSERT_TRUE(service.waitForRequests(1 + asManyAsAServerGets, std::chrono::seconds{30}));
    EXPECT_TRUE(answerTo([&](auto response) { session->status(response); }).succeeded(IdvEvents::SESSION_STATUS));
}

} // namespace
} // namespace kivo
