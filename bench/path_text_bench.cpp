#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>

#include <boost/container_hash/hash.hpp>

#include <ko/filesystem.hpp>

#include "job.hpp"

namespace ko_bench {

namespace {

using namespace ko::filesystem::detail;
using ko::filesystem::upath;

// 54 and 290 units.
std::u16string const clean = u"/usr/share/applications/some/where/deeper/document.txt";
std::u16string const longer = clean + clean + clean + clean + clean + u"/x/the/end/of/it.txt";

}  // namespace

void add_path_text_jobs() {
    ::setenv("HOME", "/home/someone", 1);
    struct {
        char const* name;
        std::u16string text, native;
        double target;
    } const forms[] = {
        {"clean, 54 units", clean, clean, 1.3},
        {"clean, 290 units", longer, longer, 2.2},
        {"doubled slashes", u"//usr//share//applications//some//where//document.txt/",
         u"/usr/share/applications/some/where/document.txt", 2.6},
        {"tilde", u"~/applications/some/where/document.txt",
         u"/home/someone/applications/some/where/document.txt", 2.8},
    };
    for (auto const& form : forms)
        job(std::string("native form, ") + form.name,
            make_native_form(form.text, true) == form.native)
            .target(form.target)
            .ko([=] { return make_native_form(form.text, true); })
            .limit([=] { return std::u16string(form.native); });

    std::filesystem::path const std_path(clean);
    boost::filesystem::path const boost_text = boost_path(clean);
    std::u16string const parent = u"/usr/share/applications/some/where/deeper";
    std::u16string const name = u"document.txt", stem = u"document", extension = u"txt";
    job("parent path", extract_parent_path(clean) == parent)
        .target(1.5)
        .ko([] { return extract_parent_path(clean); })
        .std([=] { return std_path.parent_path(); })
        .boost([=] { return boost_text.parent_path(); })
        .limit([=] { return std::u16string(parent); });
    job("filename", extract_filename(clean) == name)
        .target(1.5)
        .ko([] { return extract_filename(clean); })
        .std([=] { return std_path.filename(); })
        .boost([=] { return boost_text.filename(); })
        .limit([=] { return std::u16string(name); });
    job("stem", extract_stem(clean) == stem)
        .target(2.1)
        .ko([] { return extract_stem(clean); })
        .std([=] { return std_path.stem(); })
        .boost([=] { return boost_text.stem(); })
        .limit([=] { return std::u16string(stem); });
    job("extension", extract_extension(clean) == extension)
        .target(2.1)
        .ko([] { return extract_extension(clean); })
        .std([=] { return std_path.extension(); })
        .boost([=] { return boost_text.extension(); })
        .limit([=] { return std::u16string(extension); });
    job("all elements", extract_pathname_elements(clean).stem == stem)
        .target(1.2)
        .ko([] { return extract_pathname_elements(clean); })
        .limit([=] {
            return pathname_elements{parent, name, stem, extension};
        });

    upath const path(clean);
    std::u16string const new_extension = u"md";
    job("join", (path / name).native() == clean + u'/' + name)
        .target(1.2)
        .ko([=] { return path / name; })
        .std([=] { return std_path / name; })
        .boost([=] { return boost_text / boost_path(name); })
        .limit([result = clean + u'/' + name] { return std::u16string(result); });
    job("replace extension", upath(path).replace_extension(u"md").extension().native() == u"md")
        .target(2.2)
        .ko([=] {
            std::u16string changed = clean;
            replace_extension(changed, new_extension);
            return changed;
        })
        .std([=] { return std::filesystem::path(std_path).replace_extension(new_extension); })
        .boost([=] {
            return boost::filesystem::path(boost_text).replace_extension(boost_path(new_extension));
        })
        .limit([result = std::u16string(u"/usr/share/applications/some/where/deeper/document.md")] {
            return std::u16string(result);
        });
    job("hash", std::hash<upath>()(path) == std::hash<std::u16string>()(clean))
        .target(1.05)
        .ko([=] { return std::hash<upath>()(path); })
        .std([=] { return std::filesystem::hash_value(std_path); })
        .boost([=] { return hash_value(boost_text); })
        .limit([] { return std::hash<std::u16string>()(clean); });
}

}  // namespace ko_bench
