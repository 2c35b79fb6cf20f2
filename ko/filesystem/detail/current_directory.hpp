#pragma once

#include <string>

#include <ko/filesystem/config.hpp>

namespace ko::filesystem::detail {

/// The working directory in UTF-8, exactly as returned by getcwd, however long. Serialised with
/// `set_cwd_mt` by a process-wide lock.
/// Throws the class of the error number; path(): empty
KO_FILESYSTEM_API std::string get_cwd_mt();

/// Changes the working directory to the UTF-8 path `path8`, under the same lock. Always returns
/// true.
/// Throws the class of the error number (EINVAL for a path that contains a zero byte); path():
/// `path8`
KO_FILESYSTEM_API bool set_cwd_mt(std::string const& path8);

}  // namespace ko::filesystem::detail
