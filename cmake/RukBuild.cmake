# How everything here is compiled: the flags, and the functions by which a directory says what it
# holds.  Flags are set in this file only.
if(NOT CMAKE_SIZEOF_VOID_P EQUAL 8)
    message(FATAL_ERROR
        "ruklog's records hold 64-bit addresses: build for a 64-bit target, without -m32 or -mx32")
endif()

include(CheckPIESupported)
find_package(Threads REQUIRED)
check_pie_supported(LANGUAGES C CXX)

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
if(NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE Release)
endif()

set(RUK_SANITIZE "" CACHE STRING "Sanitizers to build with, as -fsanitize= takes them")

# Warnings, for products and tests alike.
add_library(ruk_warnings INTERFACE)
target_compile_options(ruk_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Werror
    -Wshadow -Wconversion -Wsign-conversion -Wcast-align -Wcast-qual
    -Wformat=2 -Wundef -Wvla -Wdouble-promotion -Wimplicit-fallthrough
    $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual>
    $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wduplicated-cond -Wlogical-op -Wuseless-cast>)

# Tests and fuzz targets, which use the standard library freely: g++ 12 sees overflows in std::string
# and unset members in std::regex that are not there.
add_library(ruk_test_warnings INTERFACE)
target_link_libraries(ruk_test_warnings INTERFACE ruk_warnings)
target_compile_options(ruk_test_warnings INTERFACE
    $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-array-bounds;-Wno-restrict;-Wno-stringop-overflow;-Wno-maybe-uninitialized>)

# Sanitizers reach every object, the tests' too.
add_library(ruk_sanitizers INTERFACE)
if(RUK_SANITIZE)
    target_compile_options(ruk_sanitizers INTERFACE
        -fsanitize=${RUK_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(ruk_sanitizers INTERFACE -fsanitize=${RUK_SANITIZE})
endif()
if(RUK_BUILD_FUZZERS)
    # Coverage of the products is what guides the fuzzers.
    target_compile_options(ruk_sanitizers INTERFACE -fsanitize=fuzzer-no-link)
endif()

# Coverage counts are kept in a file mapped into memory, so that those of a process that a signal
# ends, or that leaves by _exit, are not lost.
option(RUK_COVERAGE "Count what runs (clang only)" OFF)
if(RUK_COVERAGE)
    target_compile_options(ruk_sanitizers INTERFACE
        -fprofile-instr-generate -fcoverage-mapping "SHELL:-mllvm -runtime-counter-relocation"
        # Threads and processes count together.  Outcomes are differences of counts, so one that is
        # lost would pass for an outcome that was seen.
        -fprofile-update=atomic)
    target_link_options(ruk_sanitizers INTERFACE -fprofile-instr-generate)
endif()

# Products: no exceptions, no run-time type information, nothing visible but what is exported.
add_library(ruk_build_flags INTERFACE)
target_compile_options(ruk_build_flags INTERFACE
    -fvisibility=hidden
    $<$<COMPILE_LANGUAGE:CXX>:-fvisibility-inlines-hidden -fno-exceptions -fno-rtti -Wmissing-declarations>)
target_link_libraries(ruk_build_flags INTERFACE ruk_warnings ruk_sanitizers Threads::Threads)
target_include_directories(ruk_build_flags INTERFACE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)

# A release is hardened, and optimised across files where the compiler can do so with the
# system's linker.  The objects stay ordinary ones as well ("fat"), since libruklog.a is made of them.
if(CMAKE_BUILD_TYPE STREQUAL Release AND NOT RUK_SANITIZE)
    target_compile_options(ruk_build_flags INTERFACE
        -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2
        -fstack-protector-strong -fstack-clash-protection -fcf-protection)
    # Short functions that are called millions of times begin where the processor fetches.
    target_compile_options(ruk_build_flags INTERFACE -falign-functions=32)
    if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
        # Without direct access to the C library's data: for a tool optimised across files the linker
        # would otherwise copy stdout into it and export the copy.
        target_compile_options(ruk_build_flags INTERFACE
            -flto=auto -ffat-lto-objects -mno-direct-extern-access)
        target_link_options(ruk_build_flags INTERFACE -flto=auto -mno-direct-extern-access)
    endif()
endif()

# Adds one directory of the product: its sources become part of the tool and of both libraries.
#   ruk_component(<name> <source>...)
function(ruk_component name)
    add_library(${name} OBJECT ${ARGN})
    target_link_libraries(${name} PRIVATE ruk_build_flags)
    set_property(GLOBAL APPEND PROPERTY RUK_COMPONENTS ${name})
endfunction()

# Stores the objects of all components in the variable <result>.
function(ruk_component_objects result)
    get_property(components GLOBAL PROPERTY RUK_COMPONENTS)
    set(objects)
    foreach(component IN LISTS components)
        list(APPEND objects $<TARGET_OBJECTS:${component}>)
    endforeach()
    set(${result} ${objects} PARENT_SCOPE)
endfunction()

# Links a product: hardened, without a dynamic libstdc++, exporting what is marked and no more.
function(ruk_finish_product target)
    set(runtime_names ${PROJECT_SOURCE_DIR}/cmake/runtime-names.map)
    target_link_libraries(${target} PRIVATE ruk_build_flags)
    target_include_directories(${target} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>)
    target_link_options(${target} PRIVATE -Wl,-z,relro,-z,now -Wl,--as-needed)
    # A sanitizer's names have to be found by every library of its process.
    if(NOT RUK_SANITIZE)
        target_link_options(${target} PRIVATE
            -Wl,--exclude-libs,ALL -static-libstdc++ -static-libgcc -Wl,--version-script=${runtime_names})
        set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${runtime_names})
    endif()
endfunction()
