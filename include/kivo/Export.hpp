#pragma once

/// Marks what the shared library offers to a host; everything else stays hidden.
#define KIVO_EXPORT __attribute__((visibility("default")))
