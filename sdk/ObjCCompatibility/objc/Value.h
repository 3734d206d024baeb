#pragma once

#import <Foundation/Foundation.h>

/// What the classes answer to the messages that every object understands.
namespace kivo::objc {

/// Raises `NSInvalidArgumentException` with the class's name and the reason.
[[noreturn]] void refuse(Class kind, NSString* reason);

BOOL areEqual(id one, id other, NSArray* properties);
NSUInteger hash(id object, NSArray* properties);
void encode(id object, NSCoder* coder, NSArray* properties);

/// Reads an archive by name. A value that is missing or of another type reads as empty, and makes the archive damaged.
class ArchiveReader {
public:
    explicit ArchiveReader(NSCoder* coder);

    NSString* text(NSString* name);
    NSInteger integer(NSString* name);
    double number(NSString* name);

    /// Nil may be archived, too.
    template <class T>
    T* objectOrNil(NSString* name) {
        return static_cast<T*>(object(name, [T class]));
    }

    /// For values that the class does not take.
    void markDamaged() { isDamaged_ = YES; }

    BOOL isDamaged() const { return isDamaged_; }

private:
    id object(NSString* name, Class kind);

    NSCoder* coder_;
    BOOL isDamaged_;
};

} // namespace kivo::objc

/// The class has no initializer without arguments.
#define KIVO_NO_INIT                                                                                                   \
    -(instancetype)init {                                                                                              \
        const Class kind = [self class];                                                                               \
        [self release];                                                                                                \
        kivo::objc::refuse(kind, @"has no init without arguments");                                                    \
    }

/// Foundation would archive nothing, and would read an object without content from the archive.
#define KIVO_NO_ARCHIVE                                                                                                \
    -(instancetype)initWithCoder : (NSCoder*)coder {                                                                   \
        const Class kind = [self class];                                                                               \
        [self release];                                                                                                \
        kivo::objc::refuse(kind, @"is not archived");                                                                  \
    }                                                                                                                  \
    /* Before the archiver begins with the object: GNUstep's archiver breaks at an exception of `encodeWithCoder:`. */ \
    -(id)replacementObjectForKeyedArchiver : (NSKeyedArchiver*)archiver {                                              \
        kivo::objc::refuse([self class], @"is not archived");                                                          \
    }                                                                                                                  \
    -(void)encodeWithCoder : (NSCoder*)coder {                                                                         \
        kivo::objc::refuse([self class], @"is not archived");                                                          \
    }

/// Equality, hash and archive of a class whose objects stand for the values of these properties.
#define KIVO_VALUE(...)                                                                                                \
    -(BOOL)isEqual : (id)other {                                                                                       \
        return kivo::objc::areEqual(self, other, @[ __VA_ARGS__ ]);                                                    \
    }                                                                                                                  \
    -(NSUInteger)hash {                                                                                                \
        return kivo::objc::hash(self, @[ __VA_ARGS__ ]);                                                               \
    }                                                                                                                  \
    +(BOOL)supportsSecureCoding {                                                                                      \
        return YES;                                                                                                    \
    }                                                                                                                  \
    -(id)replacementObjectForKeyedArchiver : (NSKeyedArchiver*)archiver {                                              \
        return self;                                                                                                   \
    }                                                                                                                  \
    -(void)encodeWithCoder : (NSCoder*)coder {                                                                         \
        kivo::objc::encode(self, coder, @[ __VA_ARGS__ ]);                                                             \
    }
