#include "impl/SessionRules.hpp"

#include <algorithm>
#include <initializer_list>

namespace kivo {
namespace {

bool passes(Withheld withheld, ResponseCode code, std::initializer_list<ResponseCode> leaving) {
    if (withheld == Withheld::nothing) {
        return true;
    }
    if (code <= ResponseCode::STATUS_AUTH_FAILED) {
        return false;
    }
    return withheld == Withheld::statusCodes || std::ranges::find(leaving, code) == leaving.end();
}

} // namespace

bool passesDocumentFilter(Withheld withheld, ResponseCode code) {
    return passes(withheld, code, {ResponseCode::USER_CANCELLED, ResponseCode::BACK_NAVIGATION});
}

bool passesFaceFilter(Withheld withheld, ResponseCode code) {
    return passes(withheld, code,
                  {ResponseCode::CANCELLED, ResponseCode::USER_CANCELLED_VIA_CLICKABLE_READY_SCREEN_SUBTEXT});
}

} // namespace kivo
