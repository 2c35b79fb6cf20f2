#pragma once

#include <ko/filesystem/exceptions/describe.hpp>
#include <ko/filesystem/exceptions/fsys_exception_base.hpp>
#include <ko/filesystem/exceptions/invalid_argument.hpp>
#include <ko/filesystem/exceptions/path_errors.hpp>
