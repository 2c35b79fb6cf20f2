#pragma once

/// Includes every header with options of operations, which were here in 1.0.

#include <ko/filesystem/copy.hpp>
#include <ko/filesystem/directory.hpp>
#include <ko/filesystem/rename.hpp>
#include <ko/filesystem/space.hpp>
