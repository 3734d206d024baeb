#import "Value.h"

#include <cmath>
#include <cstring>

namespace kivo::objc {

void refuse(Class kind, NSString* reason) {
    [NSException raise:NSInvalidArgumentException format:@"%@ %@", NSStringFromClass(kind), reason];
    __builtin_unreachable();
}

BOOL areEqual(id one, id other, NSArray* properties) {
    return one == other ||
           ([other class] == [one class] &&
            [[one dictionaryWithValuesForKeys:properties] isEqual:[other dictionaryWithValuesForKeys:properties]]);
}

NSUInteger hash(id object, NSArray* properties) {
    NSUInteger hash = 0;
    for (NSString* property in properties) {
        hash = hash * 31 + [[object valueForKey:property] hash];
    }
    return hash;
}

void encode(id object, NSCoder* coder, NSArray* properties) {
    if (![coder allowsKeyedCoding]) {
        refuse([object class], @"is archived by key only");
    }
    for (NSString* property in properties) {
        const id value = [object valueForKey:property];
        if (![value isKindOfClass:[NSNumber class]]) {
            [coder encodeObject:value forKey:property];
        } else if (std::strcmp([value objCType], @encode(double)) == 0) {
            [coder encodeDouble:[value doubleValue] forKey:property];
        } else {
            [coder encodeInteger:[value integerValue] forKey:property];
        }
    }
}

namespace {

/// The number that `decode` reads; absent where the archive has something else.
template <class Decode>
auto decoded(NSCoder* coder, NSString* name, BOOL& isDamaged, Decode decode) -> decltype(decode()) {
    @try {
        if (!isDamaged && [coder containsValueForKey:name]) {
            return decode();
        }
    } @catch (NSException*) {
        // Another type; refused below.
    }
    isDamaged = YES;
    return {};
}

} // namespace

ArchiveReader::ArchiveReader(NSCoder* coder)
    : coder_{coder}
    , isDamaged_{![coder allowsKeyedCoding]} {}

NSString* ArchiveReader::text(NSString* name) {
    NSString* const text = objectOrNil<NSString>(name);
    isDamaged_ = isDamaged_ || !text;
    return text ? text : @"";
}

NSInteger ArchiveReader::integer(NSString* name) {
    return decoded(coder_, name, isDamaged_, [&] { return [coder_ decodeIntegerForKey:name]; });
}

double ArchiveReader::number(NSString* name) {
    const double number = decoded(coder_, name, isDamaged_, [&] { return [coder_ decodeDoubleForKey:name]; });
    isDamaged_ = isDamaged_ || !std::isfinite(number);
    return number;
}

id ArchiveReader::object(NSString* name, Class kind) {
    const id object = decoded(coder_, name, isDamaged_, [&] { return [coder_ decodeObjectOfClass:kind forKey:name]; });
    if (object && ![object isKindOfClass:kind]) {
        isDamaged_ = YES;
        return nil;
    }
    return object;
}

} // namespace kivo::objc
