// The functions that clang's code calls to copy and release blocks and captured variables; the layouts are those of
// clang's block ABI. Blocks are Objective-C objects: they understand copy and release, and can be kept in collections
// and properties.
#import "Value.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <unordered_map>

namespace {

enum Flags : int {
    referenceCount = 0xffff,
    isOnHeap = 1 << 24,
    hasCopyAndDispose = 1 << 25,
    isGlobal = 1 << 28,
};

/// The content of a field of a block or of a `__block` variable. The bits of `object` are part of the bits of `block`.
enum FieldKind : int {
    object = 3,
    block = 7,
    variable = 8,
    ofVariable = 128,
};

struct Block {
    const void* isa;
    int flags;
    int reserved;
    void (*invoke)(void*, ...);

    const struct Descriptor {
        unsigned long reserved;
        unsigned long size;
        void (*copy)(void* to, const void* from);
        void (*dispose)(const void* block);
    }* descriptor;
};

/// A `__block` variable. The variable moves to the heap with the first copied block; `forwarding` points to its place.
struct Variable {
    void* isa;
    Variable* forwarding;
    int flags;
    int size;
    void (*copy)(void* to, void* from);
    void (*dispose)(void* variable);
};

/// The references that the bits of the flags have no room for, by the address of the flags.
struct MoreReferences {
    std::mutex mutex;
    std::unordered_map<const int*, std::size_t> counts;
};

// Never destroyed, because blocks may be released while the process exits.
MoreReferences& moreReferences() {
    static auto* const all = new MoreReferences;
    return *all;
}

/// Changes the count in the flags, unless the count is full. Returns the count before, or the full count.
int changeCount(int& flags, int change) {
    const std::atomic_ref shared{flags};
    int before = shared.load(std::memory_order_relaxed);
    while ((before & referenceCount) != referenceCount &&
           !shared.compare_exchange_weak(before, before + change, std::memory_order_acq_rel)) {
    }
    return before & referenceCount;
}

void addReference(int& flags) {
    if (changeCount(flags, +1) != referenceCount) {
        return;
    }
    auto& more = moreReferences();
    const std::scoped_lock lock{more.mutex};
    if (changeCount(flags, +1) == referenceCount) {
        ++more.counts[&flags];
    }
}

/// Returns whether the reference was the last.
bool dropReference(int& flags) {
    if (const int before = changeCount(flags, -1); before != referenceCount) {
        return before == 1;
    }
    // A full count falls under the lock only.
    auto& more = moreReferences();
    const std::scoped_lock lock{more.mutex};
    const auto found = more.counts.find(&flags);
    if (found == more.counts.end()) {
        return (std::atomic_ref{flags}.fetch_sub(1, std::memory_order_acq_rel) & referenceCount) == 1;
    }
    if (--found->second == 0) {
        more.counts.erase(found);
    }
    return false;
}

void* moved(const void* from, std::size_t size) {
    void* const memory = std::malloc(size);
    if (!memory) {
        std::abort();
    }
    return std::memcpy(memory, from, size);
}

Variable* kept(Variable* variable) {
    Variable* const current = variable->forwarding;
    if (current->flags & isOnHeap) {
        addReference(current->flags);
        return current;
    }
    auto* const copy = static_cast<Variable*>(moved(current, static_cast<std::size_t>(current->size)));
    // The block holds one reference, and the scope that declares the variable another.
    copy->flags = (current->flags & ~referenceCount) | isOnHeap | 2;
    copy->forwarding = copy;
    current->forwarding = copy;
    if (copy->flags & hasCopyAndDispose) {
        copy->copy(copy, current);
    }
    return copy;
}

void drop(const Variable* variable) {
    Variable* const current = variable->forwarding;
    if (!(current->flags & isOnHeap) || !dropReference(current->flags)) {
        return;
    }
    if (current->flags & hasCopyAndDispose) {
        current->dispose(current);
    }
    std::free(current);
}

} // namespace

// The compiler knows a block's class by its address alone.
asm(".globl _NSConcreteStackBlock, _NSConcreteGlobalBlock, _NSConcreteMallocBlock\n"
    ".protected _NSConcreteStackBlock, _NSConcreteGlobalBlock, _NSConcreteMallocBlock\n"
    ".set _NSConcreteStackBlock, _OBJC_CLASS_KivoStackBlock\n"
    ".set _NSConcreteGlobalBlock, _OBJC_CLASS_KivoGlobalBlock\n"
    ".set _NSConcreteMallocBlock, _OBJC_CLASS_KivoMallocBlock\n");

extern "C" {

extern const void* const _NSConcreteMallocBlock[] __attribute__((visibility("protected")));

__attribute__((visibility("protected"))) void* _Block_copy(const void* source) {
    auto* const original = static_cast<Block*>(const_cast<void*>(source));
    if (!original || (original->flags & isGlobal)) {
        return original;
    }
    if (original->flags & isOnHeap) {
        addReference(original->flags);
        return original;
    }
    auto* const copy = static_cast<Block*>(moved(original, original->descriptor->size));
    copy->isa = _NSConcreteMallocBlock;
    copy->flags = (original->flags & ~referenceCount) | isOnHeap | 1;
    if (copy->flags & hasCopyAndDispose) {
        copy->descriptor->copy(copy, original);
    }
    return copy;
}

__attribute__((visibility("protected"))) void _Block_release(const void* source) {
    auto* const released = static_cast<Block*>(const_cast<void*>(source));
    if (!released || !(released->flags & isOnHeap) || !dropReference(released->flags)) {
        return;
    }
    if (released->flags & hasCopyAndDispose) {
        released->descriptor->dispose(released);
    }
    std::free(released);
}

__attribute__((visibility("protected"))) void _Block_object_assign(void* to, const void* value, int kind) {
    auto* const captured = const_cast<void*>(value);
    void* held = captured;
    if (kind & ofVariable) {
        // Without ARC, a `__block` variable does not retain what it refers to.
    } else if (kind & variable) {
        held = kept(static_cast<Variable*>(captured));
    } else if ((kind & block) == block) {
        held = _Block_copy(captured);
    } else if ((kind & object) == object) {
        held = [static_cast<id>(captured) retain];
    }
    *static_cast<void**>(to) = held;
}

__attribute__((visibility("protected"))) void _Block_object_dispose(const void* value, int kind) {
    auto* const captured = const_cast<void*>(value);
    if (kind & ofVariable) {
        return;
    }
    if (kind & variable) {
        drop(static_cast<const Variable*>(captured));
    } else if ((kind & block) == block) {
        _Block_release(captured);
    } else if ((kind & object) == object) {
        [static_cast<id>(captured) release];
    }
}

} // extern "C"

@interface KivoBlock : NSObject
@end

@implementation KivoBlock

KIVO_NO_ARCHIVE

- (id)copy {
    return static_cast<id>(_Block_copy(self));
}

- (id)copyWithZone:(NSZone*)zone {
    return static_cast<id>(_Block_copy(self));
}

// A block on the stack stays in place until copied.
- (instancetype)retain {
    return self;
}

- (oneway void)release {
}

- (instancetype)autorelease {
    return self;
}

- (NSUInteger)retainCount {
    return NSUIntegerMax;
}

@end

@interface KivoStackBlock : KivoBlock
@end

@implementation KivoStackBlock
@end

@interface KivoGlobalBlock : KivoBlock
@end

@implementation KivoGlobalBlock
@end

@interface KivoMallocBlock : KivoBlock
@end

@implementation KivoMallocBlock

- (instancetype)retain {
    return static_cast<id>(_Block_copy(self));
}

- (oneway void)release {
    _Block_release(self);
}

- (instancetype)autorelease {
    [NSAutoreleasePool addObject:self];
    return self;
}

- (NSUInteger)retainCount {
    return static_cast<NSUInteger>(reinterpret_cast<const Block*>(self)->flags & referenceCount);
}

@end
