// Internal: not installed.
#pragma once

#include <iconv.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace ko::filesystem::posix::detail {

/// False for what iconv_open returns when it fails, which is neither to be used nor to be closed.
inline bool is_open(iconv_t converter) noexcept {
    return converter != reinterpret_cast<iconv_t>(std::intptr_t{-1});
}

/// The calling thread's converter number `N` (0: UTF-8 to UTF-16, 1: UTF-16 to the native side),
/// opened by the thread's first call and closed when the thread ends. Later calls of the same
/// thread get that converter whatever they name. Not open when the system has none of the kind.
template <int N>
iconv_t get_thread_local_iconv_converter(char const* tocode, char const* fromcode);

extern template iconv_t get_thread_local_iconv_converter<0>(char const*, char const*);
extern template iconv_t get_thread_local_iconv_converter<1>(char const*, char const*);

/// Appends `s`, UTF-16, to `result` in the encoding that `converter` makes. A unit that can't be
/// converted becomes `substitute`. False when the conversion cannot be finished; `result` then
/// holds a part.
bool encode(std::u16string_view s, iconv_t converter, std::string_view substitute,
            std::string& result);

enum class malformed { replace_bytes, reject };

/// Appends `s`, UTF-8, to `result` as UTF-16. Each malformed byte becomes U+FFFD, or ends the
/// conversion. False when it cannot be finished; `result` then holds a part.
bool decode(std::string_view s, iconv_t converter, malformed policy, std::u16string& result);

}  // namespace ko::filesystem::posix::detail
