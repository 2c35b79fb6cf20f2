#include <ko/filesystem/posix/fault_path.hpp>

#include <cerrno>
#include <cstddef>

#include <ko/filesystem/access.hpp>
#include <ko/filesystem/path.hpp>
#include <ko/filesystem/status.hpp>

namespace ko::filesystem::detail {

namespace {

/// A source of at least this length is at fault itself, whatever the error.
constexpr std::size_t overlong = 1024;

}  // namespace

blame blame_for_rename(int error, std::u16string const& from) {
    // Not expanded: a second expansion of a tilde could name another file.
    upath const source(from, /*expand_tilde=*/false);
    bool const source_exists = exists(source);
    if (error == ENOENT && !source_exists) return blame::source;
    if (from.size() >= overlong) return blame::source;
    switch (error) {
        case ENOENT:
        case EEXIST:
        case ENOTDIR:
        case EISDIR:
        case ENAMETOOLONG:
        case ENOTEMPTY: return blame::destination;
        case EACCES:
            return access(source.parent_path(), access_write) ? blame::destination : blame::source;
        default: return blame::both;
    }
}

blame blame_for_copy(int error, std::u16string const& from) {
    bool const source_exists = exists(from);
    if ((error == ENOENT && !source_exists) || error == EISDIR || from.size() >= overlong)
        return blame::source;
    switch (error) {
        case ENOENT:
        case EEXIST:
        case ENAMETOOLONG: return blame::destination;
        case EACCES: return access(from, access_read) ? blame::destination : blame::source;
        default: return blame::both;
    }
}

}  // namespace ko::filesystem::detail
