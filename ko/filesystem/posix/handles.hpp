#pragma once

#include <iconv.h>

namespace ko::filesystem::posix::detail {

/// Returns a converter to its initial state at the end of a conversion, however that ends.
class converter_reset {
public:
    explicit converter_reset(iconv_t converter) noexcept : converter_(converter) {}
    converter_reset(converter_reset const&) = delete;
    converter_reset& operator=(converter_reset const&) = delete;
    ~converter_reset() { ::iconv(converter_, nullptr, nullptr, nullptr, nullptr); }

private:
    iconv_t converter_;
};

}  // namespace ko::filesystem::posix::detail
