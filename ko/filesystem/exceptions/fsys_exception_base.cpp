#include <ko/filesystem/exceptions/fsys_exception_base.hpp>

namespace ko::filesystem {

FsysExceptionBase::FsysExceptionBase(char const* message_id, int kind, std::u16string const& path,
                                     std::vector<std::u16string> const& arguments,
                                     int system_error_number)
    : message_id_(message_id),
      kind_(kind),
      path_(path),
      arguments_(arguments),
      system_error_number_(system_error_number) {}

FsysExceptionBase::~FsysExceptionBase() = default;

char const* FsysExceptionBase::what() const noexcept { return message_id_.c_str(); }

}  // namespace ko::filesystem
