// Neither line is to compile; each is to say what does.

#include <fstream>

#include <ko/filesystem/path.hpp>

std::ifstream file(ko::filesystem::upath(u"name"));
auto const converted = ko::filesystem::upath(u"name").to_std();
