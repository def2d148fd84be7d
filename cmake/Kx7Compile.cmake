# The warnings that all of the project's own code is compiled with.
function(kx7_compile target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
    if(KX7_WERROR)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
endfunction()
