#pragma once

/// Marks what the shared library exports. Everything else in it is hidden, except inline functions
/// and type information of Boost and the standard library, which keep their own visibility:
/// catching their exceptions across libraries depends on it.
#define KO_FILESYSTEM_API __attribute__((visibility("default")))
