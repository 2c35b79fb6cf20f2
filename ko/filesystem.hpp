#pragma once

/// Everything public of the library.

#include <ko/filesystem/config.hpp>
#include <ko/filesystem/detail/encoding.hpp>
#include <ko/filesystem/detail/path_composition.hpp>
#include <ko/filesystem/detail/path_constants.hpp>
#include <ko/filesystem/detail/path_decomposition.hpp>
#include <ko/filesystem/detail/path_expansion.hpp>
#include <ko/filesystem/detail/path_traits.hpp>
#include <ko/filesystem/exceptions.hpp>
#include <ko/filesystem/file_status.hpp>
#include <ko/filesystem/path.hpp>
#include <ko/filesystem/status.hpp>
