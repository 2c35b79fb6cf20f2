// Invariants:
// 1. What to_filesystem makes is valid UTF-8: it comes back without a further replacement.
// 2. Its result is empty exactly for an empty text and for one that ends with an unpaired high
//    surrogate.
// 3. from_filesystem always converts, to text that makes the round trip.

#include <ko/filesystem.hpp>

#include "fuzz.hpp"

namespace detail = ko::filesystem::detail;

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::u16string const text = units_of(data, size);
    std::string const text8 = detail::to_filesystem(text);
    bool const cut_off = !text.empty() && text.back() >= 0xD800 && text.back() < 0xDC00;
    REQUIRE(text8.empty() == (text.empty() || cut_off));
    REQUIRE(detail::to_filesystem(detail::from_filesystem(text8)) == text8);

    std::string const bytes = bytes_of(data, size);
    std::u16string const from_bytes = detail::from_filesystem(bytes);
    REQUIRE(from_bytes.empty() == bytes.empty());
    REQUIRE(detail::from_filesystem(detail::to_filesystem(from_bytes)) == from_bytes);
    return 0;
}
