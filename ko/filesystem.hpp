#pragma once

/// Includes every public header except ko/filesystem/std_path.hpp.

#include <ko/filesystem/access.hpp>
#include <ko/filesystem/attempt.hpp>
#include <ko/filesystem/attributes.hpp>
#include <ko/filesystem/config.hpp>
#include <ko/filesystem/copy.hpp>
#include <ko/filesystem/create.hpp>
#include <ko/filesystem/current_path.hpp>
#include <ko/filesystem/detail/callback.hpp>
#include <ko/filesystem/detail/current_directory.hpp>
#include <ko/filesystem/detail/encoding.hpp>
#include <ko/filesystem/detail/path_composition.hpp>
#include <ko/filesystem/detail/path_constants.hpp>
#include <ko/filesystem/detail/path_decomposition.hpp>
#include <ko/filesystem/detail/path_expansion.hpp>
#include <ko/filesystem/detail/path_traits.hpp>
#include <ko/filesystem/directory.hpp>
#include <ko/filesystem/equivalent.hpp>
#include <ko/filesystem/exceptions.hpp>
#include <ko/filesystem/exceptions/describe.hpp>
#include <ko/filesystem/exceptions/fsys_exception_base.hpp>
#include <ko/filesystem/exceptions/invalid_argument.hpp>
#include <ko/filesystem/exceptions/path_errors.hpp>
#include <ko/filesystem/file_status.hpp>
#include <ko/filesystem/options.hpp>
#include <ko/filesystem/other_platforms.hpp>
#include <ko/filesystem/path.hpp>
#include <ko/filesystem/read_symlink.hpp>
#include <ko/filesystem/remove.hpp>
#include <ko/filesystem/rename.hpp>
#include <ko/filesystem/resolve.hpp>
#include <ko/filesystem/space.hpp>
#include <ko/filesystem/status.hpp>
#include <ko/filesystem/time.hpp>
