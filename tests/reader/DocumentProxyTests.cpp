#include "sending/DocumentProxy.hpp"

#include "JoinedHost.hpp"

#include <gtest/gtest.h>

namespace kivo::test {
namespace {

using platform::readid::FailureReason;
using reader::Sending;
using simulator::Endpoint;

/// A joined session's document proxy, over real TLS.
class DocumentProxy : public JoinedHost {
protected:
    DocumentProxy() { flow->shouldUsePinning = true; }

    Sending::Outcome send() {
        std::optional<Sending::Outcome> heard;
        const auto sending = Sending::start(*flow, document, [&](auto outcome) { heard = std::move(outcome); });
        EXPECT_TRUE(mainLoop->runUntil([&] { return heard.has_value(); }, std::chrono::seconds{20}));
        return heard.value_or(std::unexpected{FailureReason::other});
    }

    void list(const std::string& entries) const {
        folder.write("Host.bundle/readid_certificates.plist",
                     "<plist version=\"1.0\"><array>" + entries + "</array></plist>");
    }

    reader::ReadDocument document{
        .lines = {"P<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<<<<<<<<<", "L898902C36UTO7408122F1204159ZE184226B<<<<<10"}};
};

TEST_F(DocumentProxy, IsReachedByPinsWhereTheHostListsSome) {
    const auto entry = [](const std::string& pin) { return "<string>" + pin + "</string>"; };
    const auto right = entry(service().pins().leaf);

    const struct {
        const char* what;
        std::string entries;
        bool isReached;
    } rows[] = {
        {"the leaf", right, true},
        {"the intermediate", entry("AAAA") + entry(service().pins().intermediate), true},
        {"another server", entry("AAAA"), false},
        {"nobody", "", false},
        {"half a list", right + "<integer>7</integer>", false},
    };

    for (const auto& row : rows) {
        list(row.entries);
        const auto before = documents();
        const auto outcome = send();
        EXPECT_EQ(outcome == Sending::Outcome{std::unexpected{FailureReason::sslError}}, !row.isReached) << row.what;
        EXPECT_EQ(documents() - before, row.isReached ? 1 : 0) << row.what;
    }
    flow->shouldUsePinning = false;
    list(entry("AAAA"));
    EXPECT_NE(send(), Sending::Outcome{std::unexpected{FailureReason::sslError}});
}

TEST_F(DocumentProxy, IsNotReachedWhereTheDeploymentAsksForPinsThatAreMissing) {
    const auto page = service().joinPage();
    EXPECT_NE(send(), Sending::Outcome{std::unexpected{FailureReason::sslError}});
    Deployment::install({.joinPages = {page, page, page, page}, .requiresPins = true});
    EXPECT_EQ(send(), Sending::Outcome{std::unexpected{FailureReason::sslError}});
}

TEST_F(DocumentProxy, KnowsAFalseCertificateFromALostConnection) {
    service().inject(Endpoint::biodata, simulator::Fault::certificate(simulator::CertificateFlaw::selfSigned));
    EXPECT_EQ(send(), Sending::Outcome{std::unexpected{FailureReason::sslError}});
    service().clearFaults();
    service().inject(Endpoint::biodata, simulator::Fault::reset());
    EXPECT_EQ(send(), Sending::Outcome{std::unexpected{FailureReason::connectionError}});
    service().clearFaults();
    service().inject(Endpoint::biodata, simulator::Fault::status(410));
    EXPECT_EQ(send(), Sending::Outcome{std::unexpected{FailureReason::sessionExpired}});
}

} // namespace
} // namespace kivo::test
