#include <ko/filesystem/posix/iconv_converter.hpp>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <memory>
#include <type_traits>

#include <boost/thread/tss.hpp>

#include <ko/filesystem/posix/handles.hpp>

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

/// One conversion: the rest of the input, and the work buffer that iconv writes to.
class conversion {
public:
    template <class CharT>
    conversion(std::basic_string_view<CharT> input, iconv_t converter) noexcept
        : converter_(converter),
          // iconv takes the input as char** for historical reasons, but only reads it.
          input_(const_cast<char*>(reinterpret_cast<char const*>(input.data()))),
          input_size_(input.size() * sizeof(CharT)),
          reset_(converter) {}

    /// Converts until the end of the input, a full work buffer, or malformed input.
    /// Returns the error number, or 0 on success, which may leave any value in errno.
    int advance() noexcept {
        round_ = output_;
        auto const result = ::iconv(converter_, &input_, &input_left_, &output_, &output_left_);
        return result == static_cast<std::size_t>(-1) ? errno : 0;
    }

    bool input_left() const noexcept { return input_left_ != 0; }

    /// Writes `bytes` in place of `skip` bytes of input. Returns false if the work buffer lacks
    /// space.
    bool substitute(std::string_view bytes, std::size_t skip) noexcept {
        if (output_left_ < bytes.size()) return false;
        std::memcpy(output_, bytes.data(), bytes.size());
        output_ += bytes.size();
        output_left_ -= bytes.size();
        skip = std::min(skip, input_left_);  // some converters stop inside a unit
        input_ += skip;
        input_left_ -= skip;
        return true;
    }

    /// Appends the output of the last round. The first round estimates the size of the result.
    template <class CharT>
    void append_round_to(std::basic_string<CharT>& result) const {
        if (result.empty() && input_left_ != 0) result.reserve(expected_bytes() / sizeof(CharT));
        result.append(reinterpret_cast<CharT const*>(round_),
                      static_cast<std::size_t>(output_ - round_) / sizeof(CharT));
    }

    void empty_work_buffer() noexcept {
        output_ = begin();
        output_left_ = work_buffer_bytes;
    }

private:
    char* begin() noexcept { return reinterpret_cast<char*>(buffer_); }

    /// The size of the whole result if the rest of the input converts at the same ratio.
    std::size_t expected_bytes() const noexcept {
        auto const produced = static_cast<std::size_t>(output_ - round_);
        std::size_t const consumed = input_size_ - input_left_;
        return consumed == 0 ? 0 : (produced * input_size_ + consumed - 1) / consumed;
    }

    iconv_t converter_;
    char* input_;
    std::size_t input_size_;
    std::size_t input_left_ = input_size_;
    char16_t buffer_[work_buffer_bytes / sizeof(char16_t)];  // aligned for either character type
    char* output_ = begin();
    std::size_t output_left_ = work_buffer_bytes;
    char* round_ = output_;
    converter_reset reset_;
};

/// The loop of both directions. `tolerated` selects the error numbers of malformed input to be
/// replaced.
template <class From, class To, class Tolerated>
bool convert(std::basic_string_view<From> s, iconv_t converter, std::string_view substitute,
             Tolerated tolerated, std::basic_string<To>& result) {
    if (!is_open(converter)) return false;
    conversion round(s, converter);
    do {
        int const error = round.advance();
        bool const replaced = error != 0 && error != E2BIG;
        if (replaced && !tolerated(error)) return false;
        bool full = error == E2BIG;
        if (replaced && round.input_left()) full = !round.substitute(substitute, sizeof(From));
        round.append_round_to(result);
        if (full) round.empty_work_buffer();
    } while (round.input_left());
    return true;
}

}  // namespace

bool encode(std::u16string_view s, iconv_t converter, std::string_view substitute,
            std::string& result) {
    return convert(
        s, converter, substitute, [](int error) { return error == EILSEQ; }, result);
}

bool decode(std::string_view s, iconv_t converter, malformed policy, std::u16string& result) {
    constexpr char16_t replacement[] = {u'\uFFFD'};
    std::string_view const substitute(reinterpret_cast<char const*>(replacement),
                                      sizeof replacement);
    // EINVAL is an incomplete sequence at the end of the input.
    auto const tolerated = [policy](int error) {
        return policy == malformed::replace_bytes && (error == EILSEQ || error == EINVAL);
    };
    return convert(s, converter, substitute, tolerated, result);
}

}  // namespace ko::filesystem::posix::detail
