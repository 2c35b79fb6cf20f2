// Internal: not installed.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>

/// Predicates over a whole text. Every operation uses them, so they are worth vector code, which is
/// explicit since compilers vectorise the plain loop at their highest level only, or not at all.
namespace ko::filesystem::detail {

/// Sixteen bytes of a text.
template <class CharT>
struct text_block {
    using unit = std::conditional_t<sizeof(CharT) == 1, std::uint8_t, std::uint16_t>;
    using lanes [[gnu::vector_size(16)]] = unit;
    static constexpr std::size_t size = 16 / sizeof(CharT);

    static lanes load(CharT const* text) noexcept {
        lanes block;
        std::memcpy(&block, text, sizeof block);
        return block;
    }

    /// Whether `look`, called with the start of each block of `text`, ever returns a bit of `mask`.
    /// `text` has at least one block; its last block overlaps the previous one.
    template <class Look>
    static bool any(std::basic_string_view<CharT> text, unit mask, Look look) noexcept {
        CharT const* const last = text.data() + text.size() - size;
        lanes bits = look(last);
        for (CharT const* block = text.data(); block < last; block += size) bits |= look(block);
        bits &= mask;
        std::uint64_t halves[2];
        std::memcpy(halves, &bits, sizeof bits);
        return (halves[0] | halves[1]) != 0;
    }
};

/// Whether `text` contains two adjacent `c`.
template <class CharT>
bool has_doubled(std::basic_string_view<CharT> text, CharT c) noexcept {
    using block = text_block<CharT>;
    if (text.size() <= block::size) {
        auto const both = [c](CharT a, CharT b) { return a == c && b == c; };
        return std::adjacent_find(text.begin(), text.end(), both) != text.end();
    }
    auto const unit = static_cast<typename block::unit>(c);
    auto const doubled = [unit](CharT const* p) ->
        typename block::lanes { return (block::load(p) == unit) & (block::load(p + 1) == unit); };
    return block::any(text.substr(0, text.size() - 1), static_cast<typename block::unit>(~0u),
                      doubled);
}

/// Whether bits(unit) fits in seven bits for every unit.
template <class CharT, class Bits>
bool has_seven_bits(std::basic_string_view<CharT> text, Bits bits) noexcept {
    using block = text_block<CharT>;
    using unit = typename block::unit;
    constexpr auto upper = static_cast<unit>(~0x7Fu);
    if (text.size() >= block::size)
        return !block::any(text, upper, [bits](CharT const* p) { return bits(block::load(p)); });
    return std::none_of(text.begin(), text.end(),
                        [=](CharT c) { return (bits(static_cast<unit>(c)) & upper) != 0; });
}

/// Whether every unit of `text` is below U+0080.
template <class CharT>
bool is_ascii(std::basic_string_view<CharT> text) noexcept {
    return has_seven_bits(text, [](auto units) { return units; });
}

/// Whether every unit of `text` is from U+0001 to U+007F. Zero less one has the upper bits.
template <class CharT>
bool is_ascii_without_zero(std::basic_string_view<CharT> text) noexcept {
    return has_seven_bits(text, [](auto units) { return units | (units - 1); });
}

}  // namespace ko::filesystem::detail
