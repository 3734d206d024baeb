#import "Values.h"

namespace kivo::objc {

std::string fromText(NSString* text) {
    NSData* const bytes = [text dataUsingEncoding:NSUTF8StringEncoding allowLossyConversion:YES];
    return bytes ? std::string{static_cast<const char*>([bytes bytes]), [bytes length]} : std::string{};
}

NSString* toText(std::string_view text) {
    for (const auto encoding : {NSUTF8StringEncoding, NSISOLatin1StringEncoding}) {
        NSString* const decoded = [[NSString alloc] initWithBytes:text.data() length:text.size() encoding:encoding];
        if (decoded) {
            return [decoded autorelease];
        }
    }
    return @"";
}

} // namespace kivo::objc
