#pragma once

/// Marks what the shared library exports. All else of its own is hidden, but inline functions and type
/// information of Boost and the standard library keep the visibility that these give them: exceptions
/// are recognised across libraries by it.
#define KO_FILESYSTEM_API __attribute__((visibility("default")))
