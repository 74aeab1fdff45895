# The compile and link options of every target of the project.
add_library(stemvault_compile INTERFACE)
target_include_directories(stemvault_compile INTERFACE ${PROJECT_SOURCE_DIR}/Sources)
target_compile_options(stemvault_compile INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion $<$<BOOL:${STEMVAULT_STRICT}>:-Werror>)
if(NOT CMAKE_UNITY_BUILD)
    target_compile_options(stemvault_compile INTERFACE -Wshadow)
elseif(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # Among combined sources, a local name may be one that another source has for itself.
    target_compile_options(stemvault_compile INTERFACE -Wshadow=local)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # When it optimises, GCC 12 mistakes "text" + std::string for an overlapping copy (bug 105651).
    target_compile_options(stemvault_compile INTERFACE $<$<CONFIG:Release>:-Wno-restrict>)
endif()
if(CMAKE_BUILD_TYPE STREQUAL "Release")
    # Hardened like Debian's own programs.
    include(CheckPIESupported)
    check_pie_supported()
    set(CMAKE_POSITION_INDEPENDENT_CODE ON)
    target_compile_options(stemvault_compile INTERFACE
        -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2 -fstack-protector-strong -fstack-clash-protection)
    target_link_options(stemvault_compile INTERFACE LINKER:-z,relro,-z,now,--as-needed)
endif()
if(STEMVAULT_SANITIZE)
    target_compile_options(stemvault_compile INTERFACE
        -fsanitize=${STEMVAULT_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(stemvault_compile INTERFACE -fsanitize=${STEMVAULT_SANITIZE})
endif()
if(STEMVAULT_COVERAGE)
    # Each program has its own profile. All of its runs count in it directly, because a run that is killed
    # writes nothing at its end. Tests are not mapped to lines, which Clang 14 cannot do for all of them.
    set(counters -fprofile-instr-generate=${CMAKE_BINARY_DIR}/profiles/%m%c.profraw)
    target_compile_options(stemvault_compile INTERFACE ${counters}
        "SHELL:-mllvm -runtime-counter-relocation=true"
        $<$<PATH:IS_PREFIX,${PROJECT_SOURCE_DIR}/Sources,$<TARGET_PROPERTY:SOURCE_DIR>>:-fcoverage-mapping>)
    target_link_options(stemvault_compile INTERFACE ${counters})
endif()

# Adds a static library of the named sources: one folder of Sources, or a part of one.
function(stemvault_library name)
    add_library(${name} STATIC ${ARGN})
    target_link_libraries(${name} PUBLIC stemvault_compile)
endfunction()
