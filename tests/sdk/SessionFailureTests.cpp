#include "Configuration/session/StoredSession.hpp"
#include "NetworkManager/Attempts.hpp"
#include "NetworkManager/KeychainWrapper.hpp"
#include "support/HostFixture.hpp"
#include "support/Http2Frames.hpp"
#include "support/Program.hpp"
#include "support/RecordedDiagnostics.hpp"
#include "support/ScriptedUrlSessions.hpp"
#include "support/TestTlsServer.hpp"

#include <gmock/gmock.h>

#include <csignal>
#include <set>

namespace kivo {
namespace {

using simulator::CertificateFlaw;
using simulator::Endpoint;
using simulator::Fault;
using enum ResponseCode;

class SessionFailures : public test::HostFixture {
protected:
    SessionFailures()
        : HostFixture{defaultConfiguration(/*hostPerEndpoint=*/true)} {}

    /// Joins a sound session with attempts.
    void prepare() {
        service.clearFaults();
        ASSERT_TRUE(join(*session).succeeded(IdvEvents::JOIN_SESSION));
        Attempts::shared().setRetryLimit(3);
    }

    static std::optional<std::string> storedAnswer() {
        return KeychainWrapper::standard().data(std::string{StoredItems::joinAnswer});
    }

    const std::shared_ptr<KivoAPI> session = KivoSDK::load("KEY", "18");
    const std::vector<Operation> operations = operationsOf(session);
    const Call status = operations[2].call;
};

TEST_F(SessionFailures, ATransportFailureEndsInTheOperationsOwnCodeAndIsNotSentAgain) {
    struct Row {
        const char* what;
        Fault fault;
        int arrives = 1;
    };

    const Row rows[] = {
        {"reset", Fault::reset()},
        {"204", Fault::noBody()},
        {"404", Fault::status(404, R"({"response-type":"fail","response-code":"STATUS_AUTH_FAILED"})")},
        {"too long", Fault::largeBody((std::size_t{1} << 20) + 1)},
        {"expired", Fault::certificate(CertificateFlaw::expired), 0},
    };
    std::set<std::thread::id> threads;
    for (const auto& [endpoint, call, event, transportFailure] : operations) {
        for (const auto& [what, fault, arrives] : rows) {
            SCOPED_TRACE(std::string{name(endpoint)} + ": " + what);
            prepare();
            const auto answered = answerTo(call);
            ASSERT_TRUE(answered.succeeded(event)) << "opens the connection that the next request takes";
            threads.insert(answered.thread);
            const auto before = operationsAt(endpoint);
            service.inject(endpoint, fault);
            EXPECT_EQ(answerTo(call).code(), transportFailure);
            // A request that is sent again is on its way at once, ahead of another exchange.
            service.clearFaults();
            const auto& other = endpoint == Endpoint::status ? operations[0] : operations[2];
            EXPECT_EQ(answerTo(other.call).times, 1);
            EXPECT_EQ(operationsAt(endpoint), before + arrives);
        }
    }
    EXPECT_EQ(threads.size(), 1U) << "answers come on the transport's thread";
    EXPECT_FALSE(threads.contains(std::this_thread::get_id()));
}

/// An object of 80,000 members, which is more than is read.
std::string withManyMembers(std::string_view first) {
    auto text = std::string{"{"}.append(first);
    for (int i = 0; i < 80'000; ++i) {
        text += ",\"" + std::to_string(i) + "\":1";
    }
    return text + '}';
}

TEST_F(SessionFailures, OnlyAnExplicitFailRefusesAndOnlyDataJoins) {
    constexpr auto invalid = INVALID_JOIN_SESSION;
    constexpr auto unknown = UNKNOWN_ERROR;
    constexpr bool isLost = false;

    struct Row {
        std::string answer;
        /// What another operation than a join is refused with, and what a join; nothing where it succeeds.
        std::optional<ResponseCode> refusal;
        std::optional<ResponseCode> joinRefusal;
        bool isStored = true;
    };

    const Row rows[] = {
        {R"({"response-type":"fail","response-code":"STATUS_INVALID_SESSION"})", STATUS_INVALID_SESSION,
         STATUS_INVALID_SESSION},
        {R"({"response-type":"fail","response-code":"1010"})", unknown, unknown},
        {R"({"response-type":"fail"})", unknown, unknown},
        {R"({"response-type":"fail","response-code":null})", unknown, unknown},
        {R"({"n":1e400,"response-type":"fail","response-code":"STATUS_AUTH_FAILED","m":)" + std::string(400, '9') + '}',
         STATUS_AUTH_FAILED, STATUS_AUTH_FAILED},
        {R"({"response-type":"fail","response-code":1010})", std::nullopt, unknown},
        {R"({"response-type":"FAIL","response-code":"STATUS_INVALID_SESSION"})", std::nullopt, STATUS_INVALID_SESSION},
        {R"({"response-type":7})", std::nullopt, unknown},
        {R"({"response-type":"Data","tid":"T"})", std::nullopt, unknown},
        {R"({"response-type":"data","tid":12})", std::nullopt, std::nullopt},
        {"{}", std::nullopt, unknown},
        {"[]", std::nullopt, invalid},
        {"<html>", std::nullopt, invalid},
        {"", std::nullopt, invalid},
        {"\xff\xfe", std::nullopt, invalid, isLost},
        {"{\"response-type\":\"data\xff\"}", std::nullopt, invalid, isLost},
        {std::string(33, '[') + std::string(33, ']'), unknown, invalid, isLost},
        {withManyMembers(R"("response-type":"data","tid":"T")"), unknown, invalid, isLost},
    };
    for (const auto& row : rows) {
        for (const auto& [endpoint, call, event, transportFailure] : operations) {
            SCOPED_TRACE(std::string{name(endpoint)} + ": " + row.answer.substr(0, 80));
            prepare();
            service.inject(endpoint, Fault::answer(row.answer));
            const auto answered = answerTo(call);
            const bool isJoin = endpoint == Endpoint::join;
            const auto refusal = isJoin ? row.joinRefusal : row.refusal;
            EXPECT_TRUE(refusal ? answered.code() == *refusal : answered.succeeded(event));
            if (isJoin) {
                EXPECT_EQ(storedAnswer(), row.isStored ? row.answer : "");
            }
        }
    }
}

TEST_F(SessionFailures, APartOfAnAnswerWithoutALengthIsNoAnswer) {
    namespace http2 = test::http2;
    std::string whole;
    std::atomic<std::size_t> size = 1000;
    test::TestTlsServer server{[&](const auto&) {
                                   return test::TestReply{http2::head() + http2::frame(http2::Type::data,
                                                                                       http2::endStream,
                                                                                       whole.substr(0, size))};
                               },
                               test::TestTlsServer::Protocol::http2};
    whole = R"({"response-type":"data","tid":"T","idp-config":{"status-endpoint":")" + server.url() + R"("}})";
    installServices(bundle(), server.certificateFile());
    Deployment::install({.joinPages = {"", "", server.url(), ""}});
    ASSERT_TRUE(join(*session).succeeded(IdvEvents::JOIN_SESSION));
    for (const std::size_t part : {0UZ, 20UZ, whole.size() - 1}) {
        size = part;
        EXPECT_EQ(answerTo(status).code(), INVALID_STATUS_SESSION) << part;
    }
    EXPECT_EQ(join(*session).code(), INVALID_JOIN_SESSION);
    EXPECT_EQ(storedAnswer(), "") << "and is not stored";
}

TEST_F(SessionFailures, MissingAndUnusableAddressesAreAnsweredToo) {
    for (const std::string url : {"", "not a url", "http://localhost/", "https://nonexistent.invalid/",
                                  "https://localhost:1/", "/relative", "https://"}) {
        SCOPED_TRACE(url);
        service.inject(
            Endpoint::join,
            Fault::answer(R"({"response-type":"data","tid":"T","idp-config":{"retry-limit":"3","update-endpoint":")" +
                          url + R"(","status-endpoint":")" + url + R"(","resume-endpoint":")" + url +
                          R"("},"idp-biodata":{"biodata-endpoint":")" + url + R"("}})"));
        ASSERT_TRUE(join(*session).succeeded(IdvEvents::JOIN_SESSION));
        for (const auto& operation : operations) {
            if (operation.endpoint != Endpoint::join) {
                EXPECT_EQ(answerTo(operation.call).code(), operation.transportFailure) << name(operation.endpoint);
            }
        }
        EXPECT_EQ(Attempts::shared().retryLimit(), 2) << "an upload counts wherever it leads";
    }
    Deployment::install({.joinPages = {.TEST = "no page"}});
    EXPECT_EQ(join(*session).code(), INVALID_JOIN_SESSION);
}

TEST_F(SessionFailures, ANetworkThatComesOrGoesLaterIsNoticedWithoutAJoin) {
    storeJoinAnswer(R"({"response-type":"data","tid":"T","idp-config":{"status-endpoint":"http://nowhere"}})");
    const auto codeOfStatus = [&] {
        const auto answered = answerTo(status);
        EXPECT_EQ(answered.thread == std::this_thread::get_id(), answered.code() == NETWORK_ERROR);
        return answered.code();
    };
    for (const bool isReachable : {false, true, false}) {
        network->setReachable(isReachable);
        EXPECT_EQ(codeOfStatus(), isReachable ? INVALID_STATUS_SESSION : NETWORK_ERROR);
    }
    network->failCreation(7);
    EXPECT_EQ(codeOfStatus(), NETWORK_ERROR) << "what the last monitor said holds without another";
}

TEST_F(SessionFailures, AMachineWithoutThreadsAnswers) {
    const auto exhausted = std::make_shared<test::ScriptedUrlSessions>();
    exhausted->isExhausted = true;
    services.urlSessions = exhausted;
    platform::install(services);
    EXPECT_EQ(join(*session).code(), INVALID_JOIN_SESSION);
}

TEST_F(SessionFailures, AProcessWithoutDescriptorsAnswersAndSaysWhy) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer itself needs descriptors";
#endif
    const auto diagnostics = std::make_shared<test::RecordedDiagnostics>();
    services.diagnostics = diagnostics;
    platform::install(services);
    {
        const test::LowLimit descriptors{RLIMIT_NOFILE, 3};
        // Before the request, version 17 leaves the keychain alone.
        EXPECT_EQ(join(*KivoSDK::load("KEY", "17")).code(), INVALID_JOIN_SESSION);
        EXPECT_EQ(answerTo(status).code(), INVALID_STATUS_SESSION);
    }
    EXPECT_THAT(diagnostics->texts(), testing::IsSupersetOf({testing::ContainsRegex("network: .*ulimit -n"),
                                                             testing::ContainsRegex("keychain: .*ulimit -n")}));
}

TEST_F(SessionFailures, AnAnswerThatCannotBeStoredFailsTheJoin) {
    folder.write("flat", "a file where the data folder should be");
    auto broken = platform::linuxServices({.mainBundle = folder.path() / "Host.bundle",
                                           .dataFolder = folder.path() / "flat" / "data",
                                           .trustedCertificates = service.trustedCertificates()});
    services.keychain = broken.keychain;
    platform::install(services);
    EXPECT_EQ(join(*session).code(), INVALID_JOIN_SESSION);
    EXPECT_EQ(answerTo(status).code(), INVALID_STATUS_SESSION);
}

TEST_F(SessionFailures, AResetOnAFullDiskSaysThatItCouldNot) {
    EXPECT_TRUE(join(*session).succeeded(IdvEvents::JOIN_SESSION));
    std::signal(SIGXFSZ, SIG_IGN);
    testing::internal::CaptureStdout();
    {
        const test::LowLimit fullDisk{RLIMIT_FSIZE, 1000};
        session->reset();
        std::fflush(stdout);
    }
    EXPECT_TRUE(testing::internal::GetCapturedStdout().contains("could not be deleted and is still stored"));
    EXPECT_TRUE(storedSession());
    session->reset();
    EXPECT_FALSE(storedSession());
}

TEST_F(SessionFailures, AForkedChildIsAnsweredWithFailures) {
    EXPECT_TRUE(join(*session).succeeded(IdvEvents::JOIN_SESSION));
    const auto failures = test::statusInChild([this] {
        alarm(30);
        int count = 0;
        for (const auto& operation : operations) {
            operation.call([&](const IdvOutcome& outcome) { count += outcome ? 0 : 1; });
        }
        return count;
    });
    EXPECT_EQ(failures, 5) << "one for each operation";
    EXPECT_TRUE(answerTo(status).succeeded(IdvEvents::SESSION_STATUS)) << "still";
}

} // namespace
} // namespace kivo
