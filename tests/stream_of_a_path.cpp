// Is not to compile, and to say what does.

#include <fstream>

#include <ko/filesystem/path.hpp>

std::ifstream file(ko::filesystem::upath(u"name"));
