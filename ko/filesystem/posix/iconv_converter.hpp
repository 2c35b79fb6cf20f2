// Internal: not installed.
#pragma once

#include <iconv.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace ko::filesystem::posix::detail {

/// False for the value that iconv_open returns on failure, which must be neither used nor closed.
inline bool is_open(iconv_t converter) noexcept {
    return converter != reinterpret_cast<iconv_t>(std::intptr_t{-1});
}

/// The calling thread's converter number `N` (0: UTF-8 to UTF-16, 1: UTF-16 to the native side),
/// opened by the thread's first call and closed when the thread ends. Later calls in that thread
/// return the same converter, whatever their arguments. Not open if the system has no such
/// converter.
template <int N>
iconv_t get_thread_local_iconv_converter(char const* tocode, char const* fromcode);

extern template iconv_t get_thread_local_iconv_converter<0>(char const*, char const*);
extern template iconv_t get_thread_local_iconv_converter<1>(char const*, char const*);

/// U+FFFD in UTF-8.
constexpr std::string_view utf8_replacement = "\xEF\xBF\xBD";

/// Appends `s`, UTF-16, to `result` in the target encoding of `converter`, which is UTF-8 if
/// `substitute` is `utf8_replacement`. A unit that can't be converted becomes `substitute`. Returns
/// false if the conversion can't be completed; `result` then has a part of it.
bool encode(std::u16string_view s, iconv_t converter, std::string_view substitute,
            std::string& result);

enum class malformed { replace_bytes, reject };

/// Appends `s`, UTF-8, to `result` as UTF-16. Each malformed byte becomes U+FFFD, or ends the
/// conversion. Returns false if it can't be completed; `result` then has a part of it.
bool decode(std::string_view s, iconv_t converter, malformed policy, std::u16string& result);

}  // namespace ko::filesystem::posix::detail
