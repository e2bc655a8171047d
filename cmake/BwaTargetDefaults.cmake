# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# What every target of this project is built with.
function(bwa_target_defaults target)
    set_target_properties(${target} PROPERTIES
        CXX_STANDARD 17
        CXX_STANDARD_REQUIRED ON
        CXX_EXTENSIONS OFF
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON)
    target_compile_definitions(${target} PRIVATE QT_NO_KEYWORDS QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII)
    target_compile_options(${target} PRIVATE
        -Wall -Wextra -Wpedantic
        $<$<CXX_COMPILER_ID:Clang>:-Wshadow>
        $<$<BOOL:${BWA_WERROR}>:-Werror>)
    if(BWA_SANITIZE)
        target_compile_options(${target} PRIVATE
            -fsanitize=${BWA_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
        # PUBLIC: what links to the library needs the sanitizer's runtime, too.
        target_link_options(${target} PUBLIC -fsanitize=${BWA_SANITIZE})
    endif()
endfunction()
