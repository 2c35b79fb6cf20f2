#pragma once

#include <string>

#include <ko/filesystem/config.hpp>

namespace ko::filesystem::detail {

/// The working directory in UTF-8, exactly as getcwd gives it, however long. One process-wide lock
/// keeps it and `set_cwd_mt` apart.
/// Throws the class of the error number; path(): empty
KO_FILESYSTEM_API std::string get_cwd_mt();

/// Changes the working directory to the UTF-8 path `path8`, under the same lock. Always true.
/// Throws the class of the error number (EINVAL for a path with a zero byte); path(): `path8`
KO_FILESYSTEM_API bool set_cwd_mt(std::string const& path8);

}  // namespace ko::filesystem::detail
