#pragma once

#include "support/HostFixture.hpp"

#include <algorithm>
#include <string>
#include <string_view>

namespace kivo::test {

/// A host with a joined session at an identity service over real TLS. The tests of a program share the service, whose
/// certificates the SDK's connections go on to trust.
class JoinedHost : public OfflineHost {
protected:
    JoinedHost() {
        installServices(bundle(), service().trustedCertificates());
        const auto page = service().joinPage();
        Deployment::install({.joinPages = {page, page, page, page}});
        const auto joined =
            answerTo([&](IdvCompletion response) { session->join("123456", config(), std::move(response)); });
        EXPECT_TRUE(joined.succeeded(IdvEvents::JOIN_SESSION));
        const auto name = service().sessions().back().name;
        flow->baseUrl = page.substr(0, page.find("/enrol")) + "/session/" + name + "/biodata";
        flow->accessKey = "simulated-access-key";
        requestsBefore_ = documentsSent();
        violationsBefore_ = service().violations().size();
    }

    ~JoinedHost() override { service().clearFaults(); }

    static simulator::IdentityService& service() {
        static simulator::IdentityService one;
        return one;
    }

    /// What the join has told, as a member of its answer.
    static std::string joined(std::string_view member) {
        const auto requests = service().requests();
        const auto last = std::ranges::find(requests.rbegin(), requests.rend(), simulator::Endpoint::join,
                                            &simulator::RecordedRequest::endpoint);
        const auto name = "\"" + std::string{member} + "\":\"";
        const auto begin = last == requests.rend() ? std::string::npos : last->answer.find(name);
        if (begin == std::string::npos) {
            return {};
        }
        const auto value = begin + name.size();
        return last->answer.substr(value, last->answer.find('"', value) - value);
    }

    /// How many requests of this test have come to the document proxy, and how many requests broke the protocol.
    std::ptrdiff_t documents() const { return documentsSent() - requestsBefore_; }

    std::size_t violations() const { return service().violations().size() - violationsBefore_; }

    std::shared_ptr<KivoAPI> session = KivoSDK::load("KEY", "18");
    std::shared_ptr<platform::readid::NFCWithAccessControlFlow> flow =
        std::make_shared<platform::readid::NFCWithAccessControlFlow>();

private:
    static std::ptrdiff_t documentsSent() {
        return std::ranges::count(service().requests(), simulator::Endpoint::biodata,
                                  &simulator::RecordedRequest::endpoint);
    }

    std::ptrdiff_t requestsBefore_ = 0;
    std::size_t violationsBefore_ = 0;
};

} // namespace kivo::test
