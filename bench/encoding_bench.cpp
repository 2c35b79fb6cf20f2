#include <cstddef>
#include <filesystem>
#include <string>

#include <ko/filesystem.hpp>

#ifdef KO_FILESYSTEM_BENCH_SIMDUTF
#include <simdutf.h>
#endif

#include "job.hpp"
#include "plain_posix.hpp"

namespace ko_bench {

namespace {

using namespace ko::filesystem::detail;

std::u16string repeat(std::u16string const& unit, std::size_t times) {
    std::u16string text;
    while (times-- > 0) text += unit;
    return text;
}

}  // namespace

void add_encoding_jobs() {
    struct {
        std::string name;
        std::u16string text;
        double to_target, from_target;
    } const rows[] = {
        {"16 ASCII", repeat(u"x", 16), 1.1, 1.25},
        {"52 ASCII", repeat(u"x", 52), 1.1, 1.25},
        {"259 ASCII", repeat(u"x", 259), 1.1, 1.25},
        {"260 ASCII", repeat(u"x", 260), 1.15, 1.15},
        {"1000 ASCII", repeat(u"x", 1000), 1.15, 1.15},
        {"30 CJK", repeat(u"\u6F22", 30), 1.4, 1.6},
        {"600 CJK", repeat(u"\u6F22", 600), 1.15, 1.15},
        {"15 emoji", repeat(u"\U0001F600", 15), 1.4, 1.6},
    };
    for (auto const& row : rows) {
        std::u16string const text = row.text;
        std::string const text8 = std::filesystem::path(text).string();
        // The limit of texts that need no iconv is a copy of the result.
        bool const copied = text8.size() == text.size() && text.size() < 260;
        job to("to_filesystem, " + row.name, to_filesystem(text) == text8);
        to.target(row.to_target);
        if (text.size() >= 260) to.large();
        to.ko([=] { return to_filesystem(text); });
        to.std([=] { return std::filesystem::path(text).string(); });
        to.boost([=] { return boost_path(text).string(); });
        if (copied) {
            to.limit([=] { return std::string(text8); });
        } else {
            to.limit([=] { return plain::encode(text); });
        }
        job from("from_filesystem, " + row.name, from_filesystem(text8) == text);
        from.target(row.from_target);
        if (text.size() >= 260) from.large();
        from.ko([=] { return from_filesystem(text8); });
        from.std([=] { return std::filesystem::path(text8).u16string(); });
        from.boost([=] { return boost::locale::conv::utf_to_utf<char16_t>(text8); });
        if (copied) {
            from.limit([=] { return std::u16string(text); });
        } else {
            from.limit([=] { return plain::decode(text8); });
        }
#ifdef KO_FILESYSTEM_BENCH_SIMDUTF
        to.simdutf([=] {
            char buffer[3 * 1024];
            benchmark::DoNotOptimize(buffer);
            return simdutf::convert_utf16le_to_utf8(text.data(), text.size(), buffer);
        });
        from.simdutf([=] {
            char16_t buffer[3 * 1024];
            benchmark::DoNotOptimize(buffer);
            return simdutf::convert_utf8_to_utf16le(text8.data(), text8.size(), buffer);
        });
#endif
    }
    std::u16string const han = repeat(u"\u6F22", 30);
    std::u16string const ascii = repeat(u"x", 52);
    job("to_filesystem, 52 ASCII, threads", true).threads([=] { return to_filesystem(ascii); });
    job("to_filesystem, 30 CJK, threads", true).threads([=] { return to_filesystem(han); });
    job("native form, threads", true).threads([=] { return make_native_form(ascii, true); });
}

}  // namespace ko_bench
