# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

include(CheckCXXCompilerFlag)
include(CheckPIESupported)

check_pie_supported(LANGUAGES CXX)
check_cxx_compiler_flag(-fcf-protection BWA_HAS_CF_PROTECTION)

# Makes security holes harder to exploit, in builds for production. Not in debug builds, because the C
# library checks the bounds of its functions only in optimised code.
function(bwa_harden target)
    set(serving $<CONFIG:Release,RelWithDebInfo,MinSizeRel>)
    target_compile_options(${target} PRIVATE
        $<${serving}:-fstack-protector-strong -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>
        $<$<AND:${serving},$<BOOL:${BWA_HAS_CF_PROTECTION}>>:-fcf-protection>)
    target_link_options(${target} PRIVATE
        $<${serving}:-Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack>)
endfunction()

# What every target of this project is built with.
function(bwa_target_defaults target)
    set_target_properties(${target} PROPERTIES
        CXX_STANDARD 17
        CXX_STANDARD_REQUIRED ON
        CXX_EXTENSIONS OFF
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON
        POSITION_INDEPENDENT_CODE ON)
    target_compile_definitions(${target} PRIVATE QT_NO_KEYWORDS QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII)
    target_compile_options(${target} PRIVATE
        -Wall -Wextra -Wpedantic
        # Without it, ccache would not notice a change of a precompiled header (its manual).
        $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>
        $<$<CXX_COMPILER_ID:Clang>:-Wshadow>
        $<$<BOOL:${BWA_WERROR}>:-Werror>)
    bwa_harden(${target})
    if(BWA_SANITIZE)
        # Without vptr: that check opens a pipe, and reports every object when no descriptor is left.
        target_compile_options(${target} PRIVATE
            -fsanitize=${BWA_SANITIZE} -fno-sanitize=vptr -fno-sanitize-recover=all
            -fno-omit-frame-pointer)
        # PUBLIC, because a program that links to the library needs the sanitizer's runtime, too.
        target_link_options(${target} PUBLIC -fsanitize=${BWA_SANITIZE})
    endif()
endfunction()
