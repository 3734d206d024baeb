#pragma once

#include "Models/InterfaceVersion.hpp"

namespace kivo {

/// What a backend client does with a failure report.
enum class Reporting { none, silent, logged };

/// All that differs between the backend clients of the interface versions.
struct KivoBERules {
    Reporting reporting = Reporting::none;
    /// A join first empties the stored answer, so that nothing can take an earlier session for the new one.
    bool clearsStoredAnswerFirst = false;
    /// A debug line shows the client before the join is sent.
    bool logsClientBeforeJoin = false;
};

/// The rules of a version; each version states its own difference to the one before.
constexpr KivoBERules backendRulesOf(InterfaceVersion version) {
    KivoBERules rules;
    if (version >= InterfaceVersion::v170) {
        rules.reporting = Reporting::silent;
    }
    if (version >= InterfaceVersion::v180) {
        rules.reporting = Reporting::logged;
        rules.clearsStoredAnswerFirst = true;
        rules.logsClientBeforeJoin = true;
    }
    return rules;
}

} // namespace kivo
