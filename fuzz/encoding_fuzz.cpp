// Invariants:
// 1. Both conversions give what their rules say, unit by unit.
// 2. What to_filesystem makes comes back without a further replacement, and so does what
//    from_filesystem makes.

#include <ko/filesystem.hpp>

#include "fuzz.hpp"
#include "support/plain_encoding.hpp"

namespace detail = ko::filesystem::detail;

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::u16string const text = units_of(data, size);
    std::string const text8 = detail::to_filesystem(text);
    REQUIRE(text8 == ko::filesystem::testing::expected_utf8(text));
    REQUIRE(detail::to_filesystem(detail::from_filesystem(text8)) == text8);

    std::string const bytes = bytes_of(data, size);
    std::u16string const from_bytes = detail::from_filesystem(bytes);
    REQUIRE(from_bytes == ko::filesystem::testing::expected_utf16(bytes));
    REQUIRE(detail::from_filesystem(detail::to_filesystem(from_bytes)) == from_bytes);
    return 0;
}
