// Invariants:
// 1. A native form is its own native form.
// 2. Root and relative path, parent and filename, stem and extension make the whole again.
// 3. The functions on bytes agree with those on units for text that converts both ways.
// 4. The cursor ends, and goes back the way it came.

#include <ko/filesystem.hpp>

#include "fuzz.hpp"

using namespace ko::filesystem::detail;
using byte_traits = path_traits<char, char>;

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::u16string const text = from_filesystem(bytes_of(data, size));
    std::u16string const native = make_native_form(text, false);
    REQUIRE(make_native_form(native, false) == native);
    REQUIRE(extract_root_path(text) + extract_relative_path(text) == text);

    std::u16string joined = extract_parent_path(native);
    if (native != u"/" && !native.empty())
        concatenate_pathname(joined, extract_filename(native), false);
    REQUIRE(joined == (native == u"/" ? u"" : native));
    std::u16string const name = extract_filename(native), extension = extract_extension(native);
    std::u16string const stem = extract_stem(native);
    REQUIRE(name == stem || name == stem + u'.' + extension);

    std::string const bytes = to_filesystem(text);
    REQUIRE(byte_traits::make_native_form(bytes, false) == to_filesystem(native));
    REQUIRE(byte_traits::extract_filename(bytes) == to_filesystem(extract_filename(text)));
    REQUIRE(byte_traits::is_absolute(bytes) == is_absolute(text));

    std::size_t const root = get_root_path_length(native);
    std::u16string element = extract_first_element(native, root);
    std::size_t position = 0, steps = 0;
    for (; position < native.size(); ++steps) move_down(native, root, position, element);
    REQUIRE(element.empty());
    for (; steps > 0; --steps) move_up(native, root, position, element);
    REQUIRE(position == 0 && element == extract_first_element(native, root));
    return 0;
}
