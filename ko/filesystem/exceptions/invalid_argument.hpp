#pragma once

#include <string>
#include <vector>

#include <ko/filesystem/config.hpp>
#include <ko/filesystem/exceptions/fsys_exception_base.hpp>

namespace ko::filesystem {

/// An argument was refused: by a check of the library, with a message and in most cases nothing
/// else, or as EINVAL, with the path, an empty message, and the second path as the only argument.
/// EINVAL comes from the system, and from the library for a path that contains U+0000 and for
/// copying or moving a directory into itself.
class KO_FILESYSTEM_API InvalidArgument : public FsysExceptionBase {
public:
    InvalidArgument(std::string const& message, std::u16string const& path,
                    std::vector<std::u16string> const& arguments);
    ~InvalidArgument() override;

    /// What was wrong, in English; may be empty.
    std::string const& message() const noexcept { return message_; }

    /// The identifier, then ": " and the message, then ": {" and the escaped path and "}", the last
    /// two only if not empty.
    ///
    /// Every call rebuilds the text inside the object: the pointer is valid until the next call,
    /// and two threads must not call this on one object at the same time. Terminates the process if
    /// memory runs out.
    char const* what() const noexcept override;

    /// `text` in printable ASCII: U+0020 to U+007F unchanged, every other UTF-16 unit as "\u" and
    /// four upper-case hexadecimal digits; surrogates are not combined. Terminates the process if
    /// memory runs out.
    std::string printHelper(std::u16string const& text) const;

private:
    mutable std::string what_text_;
    std::string message_;
};

}  // namespace ko::filesystem
