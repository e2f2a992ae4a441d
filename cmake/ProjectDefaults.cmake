# What every target of this project is compiled with: veltrane_defaults(target...).
if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

function(veltrane_defaults)
    foreach(target IN LISTS ARGN)
        target_compile_features(${target} PUBLIC cxx_std_20)
        set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
        target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
        # Results are the same bits on every compiler and at every optimisation level.
        target_compile_options(${target} PRIVATE -ffp-contract=off)
        if(VELTRANE_WARNINGS_AS_ERRORS)
            target_compile_options(${target} PRIVATE -Werror)
        endif()
        if(VELTRANE_BUILD_FUZZERS)
            target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
        endif()
        if(VELTRANE_SANITIZE)
            target_compile_options(${target} PRIVATE -fsanitize=${VELTRANE_SANITIZE} -fno-sanitize-recover=all
                                                     -fno-omit-frame-pointer)
            # The sanitizers' own code makes g++ warn of variables that are set.
            target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
            target_link_options(${target} PRIVATE -fsanitize=${VELTRANE_SANITIZE})
        endif()
    endforeach()
endfunction()
