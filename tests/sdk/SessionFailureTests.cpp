#include "NetworkManager/Attempts.hpp"
#include "NetworkManager/StoredSession.hpp"
#include "support/HostFixture.hpp"

namespace kivo {
namespace {

using namespace std::chrono_literals;
using simulator::CertificateFlaw;
using simulator::Endpoint;
using simulator::Fault;

class SessionFailures : public test::HostFixture {
protected:
    SessionFailures()
        : HostFixture{separateHosts()} {
        session = KivoSDK::load("KEY", "18");
    }

    static simulator::IdentityServiceConfiguration separateHosts() {
        auto configuration = defaultConfiguration();
        configuration.hostPerEndpoint = true;
        return configuration;
    }

    struct Operation {
        Endpoint endpoint;
        Call call;
        ResponseCode transportFailure;
        IdvEvents event;
    };

    std::vector<Operation> operations() {
        return {
            {Endpoint::join, [this](auto response) { session->join("123456", config(), response); },
             ResponseCode::INVALID_JOIN_SESSION, IdvEvents::JOIN_SESSION},
            {Endpoint::update, [this](auto response) { session->update("inform", "m", response); },
             ResponseCode::INVALID_UPDATE_SESSION, IdvEvents::UPDATE_SESSION},
            {Endpoint::status, [this](auto response) { session->status(response); },
             ResponseCode::INVALID_STATUS_SESSION, IdvEvents::SESSION_STATUS},
            {Endpoint::commit, [this](auto response) { session->commit(response); },
             ResponseCode::INVALID_COMMIT_SESSION, IdvEvents::COMMIT_SESSION},
            {Endpoint::upload,
             [this](auto response) { session->upload(AcquisitionObject::selfieImage, "data", response); },
             ResponseCode::BIODATA_UPLOAD_FAILED, IdvEvents::UPLOAD_DOCUMENT},
        };
    }

    /// Joins a fresh session for the operations that need one.
    void prepare(Endpoint endpoint) {
        service.clearFaults();
        if (endpoint != Endpoint::join) {
            ASSERT_TRUE(join(*session).succeeded(IdvEvents::JOIN_SESSION));
        }
        Attempts::shared().setRetryLimit(3);
    }

    /// An object of 80,000 members, which is more than is read.
    static std::string withManyMembers(std::string_view first) {
        auto text = std::string{"{"}.append(first);
        for (int i = 0; i < 80'000; ++i) {
            text += ",\"" + std::to_string(i) + "\":1";
        }
        return text + '}';
    }

    std::shared_ptr<KivoAPI> session;
};

TEST_F(SessionFailures, TransportFailuresEndInTheOperationsOwnCode) {
    const std::pair<const char*, Fault> faults[] = {
        {"reset", Fault::reset()},
        {"204", Fault::noBody()},
        {"404", Fault::status(404, R"({"response-type":"fail","response-code":"STATUS_AUTH_FAILED"})")},
        {"expired", Fault::certificate(CertificateFlaw::expired)},
    };
    for (const auto& operation : operations()) {
        for (const auto& [what, fault] : faults) {
            SCOPED_TRACE(std::string{name(operation.endpoint)} + ": " + what);
            prepare(operation.endpoint);
            service.inject(operation.endpoint, fault);
            EXPECT_EQ(answerTo(operation.call).code(), operation.transportFailure);
        }
    }
}

TEST_F(SessionFailures, OnlyAnExplicitFailRefuses) {
    struct Row {
        std::string answer;
        std::optional<ResponseCode> refusal;
    };

    const Row rows[] = {
        {R"({"response-type":"fail","response-code":"STATUS_INVALID_SESSION"})", ResponseCode::STATUS_INVALID_SESSION},
        {R"({"response-type":"fail","response-code":"1010"})", ResponseCode::UNKNOWN_ERROR},
        {R"({"response-type":"fail"})", ResponseCode::UNKNOWN_ERROR},
        {R"({"response-type":"fail","response-code":null})", ResponseCode::UNKNOWN_ERROR},
        {R"({"n":1e400,"response-type":"fail","response-code":"STATUS_INVALID_SESSION","m":)" + std::string(400, '9') +
             '}',
         ResponseCode::STATUS_INVALID_SESSION},
        {std::string(33, '[') + std::string(33, ']'), ResponseCode::UNKNOWN_ERROR},
        {withManyMembers(R"("response-type":"data")"), ResponseCode::UNKNOWN_ERROR},
        {R"({"response-type":"fail","response-code":1010})", std::nullopt},
        {R"({"response-type":"FAIL","response-code":"STATUS_INVALID_SESSION"})", std::nullopt},
        {R"({"response-type":7})", std::nullopt},
        {"[]", std::nullopt},
        {"<html>", std::nullopt},
        {"\xff\xfe", std::nullopt},
        {"", std::nullopt},
    };
    for (const auto& operation : operations()) {
        if (operation.endpoint == Endpoint::join) {
            continue;
        }
        for (const auto& row : rows) {
            SCOPED_TRACE(std::string{name(operation.endpoint)} + ": " + row.answer);
            prepare(operation.endpoint);
            service.inject(operation.endpoint, Fault::answer(row.answer));
            const auto answered = answerTo(operation.call);
            if (row.refusal) {
                EXPECT_EQ(answered.code(), *row.refusal);
            } else {
                EXPECT_TRUE(answered.succeeded(operation.event));
            }
        }
    }
}

TEST_F(SessionFailures, AJoinNeedsAnAnswerThatSaysData) {
    struct Row {
        std::string answer;
        ResponseCode code;
        bool isStored = true;
    };

    const Row rows[] = {
        {R"({"response-type":"fail","response-code":"STATUS_INVALID_ACTIVATION_CODE"})",
         ResponseCode::STATUS_INVALID_ACTIVATION_CODE},
        {R"({"response-type":"fail","response-code":"NO_SUCH_CODE"})", ResponseCode::UNKNOWN_ERROR},
        {R"({"response-type":"Data","tid":"T"})", ResponseCode::UNKNOWN_ERROR},
        {R"({"response-type":true})", ResponseCode::UNKNOWN_ERROR},
        {"{}", ResponseCode::UNKNOWN_ERROR},
        {"[]", ResponseCode::INVALID_JOIN_SESSION},
        {"<html>", ResponseCode::INVALID_JOIN_SESSION},
        {"", ResponseCode::INVALID_JOIN_SESSION},
        {"{\"response-type\":\"data\xff\"}", ResponseCode::INVALID_JOIN_SESSION, false},
        {std::string(200'000, '['), ResponseCode::INVALID_JOIN_SESSION, false},
        {withManyMembers(R"("response-type":"data","tid":"T")"), ResponseCode::INVALID_JOIN_SESSION, false},
        {R"({"response-type":"data","tid":")" + std::string(1 << 20, 'T') + "\"}", ResponseCode::INVALID_JOIN_SESSION,
         false},
        {R"({"response-type":"fail","response-code":"STATUS_AUTH_FAILED","n":[-1e400]})",
         ResponseCode::STATUS_AUTH_FAILED},
    };
    for (const auto& [answer, code, isStored] : rows) {
        SCOPED_TRACE(answer.substr(0, 60));
        prepare(Endpoint::join);
        service.inject(Endpoint::join, Fault::answer(answer));
        EXPECT_EQ(join(*session).code(), code);
        EXPECT_EQ(storedJoinAnswer(), isStored ? answer : "");
    }
}

TEST_F(SessionFailures, AWrongTypedMemberLeavesTheRestOfTheSessionUsable) {
    service.inject(Endpoint::join,
                   Fault::answer(R"({"response-type":"data","tid":12,"app-config":{"app-doclist":true},)"
                                 R"("idp-config":{"status-endpoint":"https://localhost:1/"}})"));
    const auto joined = join(*session);
    ASSERT_TRUE(joined.succeeded(IdvEvents::JOIN_SESSION));
    EXPECT_EQ((*joined.outcome)->data(), "");
    EXPECT_EQ(storedSession()->idpConfig.size(), 1U);
    EXPECT_EQ(answerTo([&](auto response) { session->status(response); }).code(), ResponseCode::INVALID_STATUS_SESSION);
}

TEST_F(SessionFailures, MissingAndUnusableAddressesAreAnsweredToo) {
    for (const auto* address : {"", "not a url", "http://localhost/", "https://nonexistent.invalid/",
                                "https://localhost:1/", "/relative", "https://"}) {
        SCOPED_TRACE(address);
        service.clearFaults();
        const std::string url{address};
        service.inject(
            Endpoint::join,
            Fault::answer(R"({"response-type":"data","tid":"T","idp-config":{"retry-limit":"3","update-endpoint":")" +
                          url + R"(","status-endpoint":")" + url + R"(","resume-endpoint":")" + url +
                          R"("},"idp-biodata":{"biodata-endpoint":")" + url + R"("}})"));
        ASSERT_TRUE(join(*session).succeeded(IdvEvents::JOIN_SESSION));
        for (const auto& operation : operations()) {
            if (operation.endpoint != Endpoint::join) {
                EXPECT_EQ(answerTo(operation.call).code(), operation.transportFailure) << name(operation.endpoint);
            }
        }
        EXPECT_EQ(Attempts::shared().retryLimit(), 2) << "an upload counts wherever it leads";
    }
    Deployment::install({.joinPages = {"", "", "no page", ""}});
    EXPECT_EQ(join(*session).code(), ResponseCode::INVALID_JOIN_SESSION);
}

TEST_F(SessionFailures, ANetworkThatComesOrGoesLaterIsNoticedWithoutAJoin) {
    storeJoinAnswer(R"({"response-type":"data","tid":"T","idp-config":{"status-endpoint":"http://nowhere"}})");
    const auto status = [&] { return answerTo([&](auto response) { session->status(response); }).code(); };
    for (const bool isReachable : {false, true, false}) {
        network->setReachable(isReachable);
        EXPECT_EQ(status(), isReachable ? ResponseCode::INVALID_STATUS_SESSION : ResponseCode::NETWORK_ERROR);
    }
    network->failCreation(7);
    EXPECT_EQ(status(), ResponseCode::NETWORK_ERROR) << "what the last monitor said holds without another";
}

TEST_F(SessionFailures, AJoinWithoutAnEnvironmentIsRefused) {
    EXPECT_EQ(answerTo([&](auto response) { session->join("123456", nullptr, response); }).code(),
              ResponseCode::INVALID_JOIN_SESSION);
    EXPECT_EQ(
        answerTo([&](auto response) { session->join("123456", config(static_cast<SDKEnv>(4)), response); }).code(),
        ResponseCode::INVALID_JOIN_SESSION);
    EXPECT_TRUE(service.requests().empty());
}

TEST_F(SessionFailures, EmptyCompletionsAreAllowed) {
    session->join("123456", config(), {});
    session->status({});
    session->upload(AcquisitionObject::selfieImage, "x", {});
    EXPECT_TRUE(service.waitForRequests(1, 10s));
}

} // namespace
} // namespace kivo
