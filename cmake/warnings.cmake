# The warnings of this project's own code, for g++ and clang++.
function(ko_filesystem_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
    if(KO_FILESYSTEM_WERROR)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
endfunction()
