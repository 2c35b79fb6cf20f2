#include <iconv.h>

#include <cstddef>
#include <filesystem>
#include <string>

#include <ko/filesystem.hpp>

#include "job.hpp"

namespace ko_bench {

namespace {

using namespace ko::filesystem::detail;

/// One iconv call and the reset, into a buffer on the stack: the least that a conversion can cost.
template <class CharT>
std::size_t bare_iconv(iconv_t converter, std::basic_string<CharT> const& text) {
    char buffer[8192];
    char* in = const_cast<char*>(reinterpret_cast<char const*>(text.data()));
    char* out = buffer;
    std::size_t in_left = text.size() * sizeof(CharT);
    std::size_t out_left = sizeof buffer;
    ::iconv(converter, &in, &in_left, &out, &out_left);
    ::iconv(converter, nullptr, nullptr, nullptr, nullptr);
    benchmark::DoNotOptimize(buffer);
    return sizeof buffer - out_left;
}

std::u16string repeat(std::u16string const& unit, std::size_t times) {
    std::u16string text;
    while (times-- > 0) text += unit;
    return text;
}

}  // namespace

void add_encoding_jobs() {
    static iconv_t const encoder = ::iconv_open("UTF-8", "UTF-16LE");
    static iconv_t const decoder = ::iconv_open("UTF-16LE", "UTF-8");
    struct {
        std::string name;
        std::u16string text;
    } const rows[] = {
        {"16 ASCII", repeat(u"x", 16)},      {"52 ASCII", repeat(u"x", 52)},
        {"259 ASCII", repeat(u"x", 259)},    {"260 ASCII", repeat(u"x", 260)},
        {"1000 ASCII", repeat(u"x", 1000)},  {"30 CJK", repeat(u"\u6F22", 30)},
        {"600 CJK", repeat(u"\u6F22", 600)}, {"15 emoji", repeat(u"\U0001F600", 15)},
    };
    for (auto const& row : rows) {
        std::u16string const text = row.text;
        std::string const text8 = std::filesystem::path(text).string();
        // Texts that need no iconv are measured against a copy of the result.
        bool const copied = text8.size() == text.size() && text.size() < 260;
        job to("to_filesystem, " + row.name, to_filesystem(text) == text8);
        to.ko([=] { return to_filesystem(text); });
        to.std([=] { return std::filesystem::path(text).string(); });
        to.boost([=] { return boost_path(text).string(); });
        if (copied)
            to.limit([=] { return std::string(text8); });
        else
            to.limit([=] { return bare_iconv(encoder, text); });
        job from("from_filesystem, " + row.name, from_filesystem(text8) == text);
        from.ko([=] { return from_filesystem(text8); });
        from.std([=] { return std::filesystem::path(text8).u16string(); });
        from.boost([=] { return boost::locale::conv::utf_to_utf<char16_t>(text8); });
        if (copied)
            from.limit([=] { return std::u16string(text); });
        else
            from.limit([=] { return bare_iconv(decoder, text8); });
    }
    std::u16string const han = repeat(u"\u6F22", 30);
    for (int const count : {1, 2, 4})
        job("to_filesystem, 30 CJK, " + std::to_string(count) + " threads", true)
            .ko([=] { return to_filesystem(han); })
            .threads(count)
            .std([=] { return std::filesystem::path(han).string(); })
            .threads(count);
}

}  // namespace ko_bench
