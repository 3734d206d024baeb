#pragma once

// GNUstep's headers ask for this name when blocks are on. `libkivo-objc` brings the functions: the copy of a block that
// libgnustep-base makes is no copy with today's compilers, and Debian's blocks runtime does not retain captured
// objects.

#ifdef __cplusplus
extern "C" {
#endif

void* _Block_copy(const void* block);
void _Block_release(const void* block);

#ifdef __cplusplus
}
#endif

#ifndef Block_copy
#define Block_copy(...) ((__typeof(__VA_ARGS__))_Block_copy((const void*)(__VA_ARGS__)))
#define Block_release(...) _Block_release((const void*)(__VA_ARGS__))
#endif
