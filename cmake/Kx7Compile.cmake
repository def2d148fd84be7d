# What all of the project's own code is compiled with: warnings, and hardening where it is on.
option(KX7_HARDENING "Compile and link with the compiler's protections against exploits" ON)

include(CheckCXXCompilerFlag)
include(CheckCXXSourceCompiles)
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)

if(KX7_HARDENING)
    check_cxx_compiler_flag(-fstack-clash-protection KX7_HAS_STACK_CLASH_PROTECTION)
    # Where either does not have the third level, the C library warns and checks at the second.
    set(CMAKE_REQUIRED_FLAGS "-O2 -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3")
    check_cxx_source_compiles("
        #include <cstdlib>
        #if !defined __USE_FORTIFY_LEVEL || __USE_FORTIFY_LEVEL < 3
        #error lower level
        #endif
        int main() {}" KX7_HAS_FORTIFY_3)
    unset(CMAKE_REQUIRED_FLAGS)
endif()

function(kx7_compile target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
    if(KX7_WERROR)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
    if(KX7_HARDENING)
        target_compile_options(${target} PRIVATE -fstack-protector-strong)
        if(KX7_HAS_STACK_CLASH_PROTECTION)
            target_compile_options(${target} PRIVATE -fstack-clash-protection)
        endif()
        if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|i[3-6]86)$")
            target_compile_options(${target} PRIVATE -fcf-protection)
        endif()
        # Checked calls of the C library need an optimising compiler, and sanitizers check more.
        if(NOT KX7_SANITIZED AND CMAKE_BUILD_TYPE MATCHES "^(Release|RelWithDebInfo|MinSizeRel)$")
            target_compile_options(${target} PRIVATE -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=$<IF:$<BOOL:${KX7_HAS_FORTIFY_3}>,3,2>)
        endif()
        target_link_options(${target} PRIVATE -Wl,-z,relro,-z,now,-z,noexecstack)
    endif()
endfunction()
