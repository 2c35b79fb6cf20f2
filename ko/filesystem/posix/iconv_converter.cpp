#include <ko/filesystem/posix/iconv_converter.hpp>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <memory>
#include <type_traits>

#include <boost/thread/tss.hpp>

#include <ko/filesystem/detail/text_scan.hpp>

namespace ko::filesystem::posix::detail {

// The converters specify a byte order, since otherwise they would write a byte-order mark.
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "UTF-16LE must be the host's own UTF-16");

template <int N>
iconv_t get_thread_local_iconv_converter(char const* tocode, char const* fromcode) {
    using closer = void (*)(iconv_t);
    using owner = std::unique_ptr<std::remove_pointer_t<iconv_t>, closer>;
    static boost::thread_specific_ptr<owner> conv_thread_ptr;
    if (owner* const opened = conv_thread_ptr.get()) return opened->get();
    closer const close = [](iconv_t converter) {
        if (is_open(converter)) ::iconv_close(converter);
    };
    auto opened = std::make_unique<owner>(nullptr, close);
    opened->reset(::iconv_open(tocode, fromcode));
    conv_thread_ptr.reset(opened.get());
    return opened.release()->get();  // the thread owns it now
}

template iconv_t get_thread_local_iconv_converter<0>(char const*, char const*);
template iconv_t get_thread_local_iconv_converter<1>(char const*, char const*);

namespace {

constexpr std::size_t work_buffer_bytes = 1024;

// Mistakable: what the iconv of some macOS gets wrong without an error, so that no iconv is given
// it. In UTF-16 it drops U+FEFF and U+FFFE anywhere and converts unpaired low surrogates; in UTF-8
// it converts what is above U+10FFFF to "?". The result would be the name of another file.

bool is_low_surrogate(char16_t unit) noexcept { return (unit & 0xFC00) == 0xDC00; }

bool is_mistakable(std::u16string_view s, std::size_t i) noexcept {
    if (is_low_surrogate(s[i])) return i == 0 || (s[i - 1] & 0xFC00) != 0xD800;
    return s[i] == 0xFEFF || s[i] == 0xFFFE;
}

bool is_mistakable(std::string_view s, std::size_t i) noexcept {
    auto const byte = [s](std::size_t k) { return static_cast<unsigned char>(s[k]); };
    return byte(i) > 0xF4 || (byte(i) == 0xF4 && i + 1 < s.size() && byte(i + 1) >= 0x90);
}

/// Whether it is worth looking at each unit of `s`; most texts have nothing mistakable.
bool may_be_mistakable(std::u16string_view s) noexcept {
    using block = filesystem::detail::text_block<char16_t>;
    if (s.size() <= block::size || is_low_surrogate(s[0])) return true;
    return block::any(s.substr(1), 0xFFFF, [](char16_t const* p) -> block::lanes {
        auto const units = block::load(p);
        auto const after_high = (block::load(p - 1) & 0xFC00) == 0xD800;
        return (((units & 0xFC00) == 0xDC00) ^ after_high) | ((units | 0x0101) == 0xFFFF);
    });
}

bool may_be_mistakable(std::string_view s) noexcept {
    using block = filesystem::detail::text_block<char>;
    auto const above = [](char const* p) -> block::lanes { return block::load(p) >= 0xF4; };
    return s.size() < block::size || block::any(s, 0xFF, above);
}

struct reset_converter {
    void operator()(iconv_t converter) const noexcept {
        ::iconv(converter, nullptr, nullptr, nullptr, nullptr);
    }
};

/// One conversion: the rest of the input, and the work buffer that iconv writes to. iconv gets the
/// pieces of the input between mistakable units.
template <class From>
class conversion {
public:
    conversion(std::basic_string_view<From> input, iconv_t converter) noexcept
        : converter_(converter),
          whole_(input),
          // iconv takes the input as char** for historical reasons, but only reads it.
          input_(const_cast<char*>(reinterpret_cast<char const*>(input.data()))),
          reset_(converter) {
        start_piece(0, may_be_mistakable(input) ? 0 : input.size());
    }

    /// Converts until the end of the input, a full work buffer, or input to be substituted: EILSEQ.
    /// Returns the error number, or 0 on success, which may leave any value in errno.
    int advance() noexcept {
        round_ = output_;
        if (piece_left_ != 0 && ::iconv(converter_, &input_, &piece_left_, &output_,
                                        &output_left_) == static_cast<std::size_t>(-1)) {
            int const error = errno;
            // What is incomplete at the end of a piece is malformed inside of the text.
            return error == EINVAL && !is_last_piece() ? EILSEQ : error;
        }
        return is_last_piece() ? 0 : EILSEQ;
    }

    bool input_left() const noexcept { return piece_left_ != 0 || !is_last_piece(); }

    /// The mistakable unit that the input has come to, or 0.
    From mistakable() const noexcept {
        return piece_left_ == 0 && !is_last_piece() ? whole_[piece_end_] : From();
    }

    /// Writes `bytes` in place of a unit of input. Returns false if the work buffer lacks space.
    bool substitute(std::string_view bytes) noexcept {
        if (output_left_ < bytes.size()) return false;
        std::memcpy(output_, bytes.data(), bytes.size());
        output_ += bytes.size();
        output_left_ -= bytes.size();
        if (piece_left_ == 0) {
            input_ += sizeof(From);
            start_piece(piece_end_ + 1, piece_end_ + 1);
        } else {
            auto const skip = std::min(sizeof(From), piece_left_);  // some stop inside a unit
            input_ += skip;
            piece_left_ -= skip;
        }
        return true;
    }

    /// Appends the output of the last round. The first round estimates the size of the result.
    template <class CharT>
    void append_round_to(std::basic_string<CharT>& result) const {
        if (result.empty() && input_left()) result.reserve(expected_bytes() / sizeof(CharT));
        result.append(reinterpret_cast<CharT const*>(round_),
                      static_cast<std::size_t>(output_ - round_) / sizeof(CharT));
    }

    void empty_work_buffer() noexcept {
        output_ = begin();
        output_left_ = work_buffer_bytes;
    }

private:
    char* begin() noexcept { return reinterpret_cast<char*>(buffer_); }

    bool is_last_piece() const noexcept { return piece_end_ == whole_.size(); }

    /// The piece from `start` up to the next mistakable unit, which is not before `search`.
    void start_piece(std::size_t start, std::size_t search) noexcept {
        while (search != whole_.size() && !is_mistakable(whole_, search)) ++search;
        piece_end_ = search;
        piece_left_ = (search - start) * sizeof(From);
    }

    /// The size of the whole result if the rest of the input converts at the same ratio.
    std::size_t expected_bytes() const noexcept {
        auto const produced = static_cast<std::size_t>(output_ - round_);
        auto const consumed =
            static_cast<std::size_t>(input_ - reinterpret_cast<char const*>(whole_.data()));
        std::size_t const input_size = whole_.size() * sizeof(From);
        return consumed == 0 ? 0 : (produced * input_size + consumed - 1) / consumed;
    }

    iconv_t converter_;
    std::basic_string_view<From> whole_;
    std::size_t piece_end_ = 0;
    char* input_;
    std::size_t piece_left_ = 0;
    char16_t buffer_[work_buffer_bytes / sizeof(char16_t)];  // aligned for either character type
    char* output_ = begin();
    std::size_t output_left_ = work_buffer_bytes;
    char* round_ = output_;
    /// Returns the converter to its initial state, however the conversion ends.
    std::unique_ptr<std::remove_pointer_t<iconv_t>, reset_converter> reset_;
};

/// The loop of both directions. `tolerated` selects the error numbers of malformed input, and
/// `form` is what a mistakable unit becomes, or with 0 any other malformed one.
template <class From, class To, class Form, class Tolerated>
bool convert(std::basic_string_view<From> s, iconv_t converter, Form form, Tolerated tolerated,
             std::basic_string<To>& result) {
    if (!is_open(converter)) return false;
    conversion<From> round(s, converter);
    do {
        int const error = round.advance();
        bool const replaced = error != 0 && error != E2BIG;
        if (replaced && !tolerated(error)) return false;
        bool full = error == E2BIG;
        if (replaced && round.input_left()) full = !round.substitute(form(round.mistakable()));
        round.append_round_to(result);
        if (full) round.empty_work_buffer();
    } while (round.input_left());
    return true;
}

}  // namespace

bool encode(std::u16string_view s, iconv_t converter, std::string_view substitute,
            std::string& result) {
    auto const form = [substitute](char16_t unit) -> std::string_view {
        bool const is_utf8 = substitute == utf8_replacement;
        if (is_utf8 && unit == 0xFEFF) return "\xEF\xBB\xBF";
        if (is_utf8 && unit == 0xFFFE) return "\xEF\xBF\xBE";
        return substitute;
    };
    return convert(
        s, converter, form, [](int error) { return error == EILSEQ; }, result);
}

bool decode(std::string_view s, iconv_t converter, malformed policy, std::u16string& result) {
    auto const form = [](char) {
        static constexpr char16_t replacement[] = {u'\uFFFD'};
        return std::string_view(reinterpret_cast<char const*>(replacement), sizeof replacement);
    };
    // EINVAL is an incomplete sequence at the end of the input.
    auto const tolerated = [policy](int error) {
        return policy == malformed::replace_bytes && (error == EILSEQ || error == EINVAL);
    };
    return convert(s, converter, form, tolerated, result);
}

}  // namespace ko::filesystem::posix::detail
