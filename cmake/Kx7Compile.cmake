# What all of the project's own code is compiled with: warnings, and hardening where it is on.
option(KX7_HARDENING "Compile and link with the compiler's protections against exploits" ON)

include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)

function(kx7_compile target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
    if(KX7_WERROR)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
    if(KX7_HARDENING)
        target_compile_options(${target} PRIVATE -fstack-protector-strong)
        if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|i[3-6]86)$")
            target_compile_options(${target} PRIVATE -fcf-protection)
        endif()
        # Checked calls of the C library need an optimising compiler, and sanitizers check more.
        if(NOT KX7_SANITIZED AND CMAKE_BUILD_TYPE MATCHES "^(Release|RelWithDebInfo|MinSizeRel)$")
            target_compile_options(${target} PRIVATE -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
        endif()
        target_link_options(${target} PRIVATE -Wl,-z,relro,-z,now,-z,noexecstack)
    endif()
endfunction()
