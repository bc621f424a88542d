set(VESK_SANITIZE "" CACHE STRING "Value of -fsanitize= for every target, empty for none")

# Flags like those that distributions add themselves when they build a package. Control-flow protection
# is there on some processors only.
option(VESK_HARDENING "Build with hardening flags of our own choice" OFF)
if(VESK_HARDENING AND UNIX AND NOT APPLE)
    include(CheckCXXCompilerFlag)
    set(vesk_hardening_compile
        -fstack-protector-strong -fstack-clash-protection -D_FORTIFY_SOURCE=3
        $<$<NOT:$<STREQUAL:$<TARGET_PROPERTY:TYPE>,MODULE_LIBRARY>>:-fPIE>)
    check_cxx_compiler_flag(-fcf-protection VESK_HAS_CONTROL_FLOW_PROTECTION)
    if(VESK_HAS_CONTROL_FLOW_PROTECTION)
        list(APPEND vesk_hardening_compile -fcf-protection)
    endif()
    set(vesk_hardening_link
        $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-pie>
        -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
endif()

# Warnings, hardening, sanitizers and the source root as include path, for one target of ours. GCC counts a
# member as forgotten that designated initialisers leave at its default.
function(vesk_configure target)
    target_compile_options(${target} PRIVATE
        -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual
        -Wno-missing-field-initializers)
    # What nobody calls is left out, and what only we call is bound without a detour.
    target_compile_options(${target} PRIVATE
        -ffunction-sections -fdata-sections -fvisibility=hidden)
    if(NOT APPLE)
        target_link_options(${target} PRIVATE -Wl,--gc-sections -Wl,--as-needed)
    endif()
    target_include_directories(${target} PUBLIC "${PROJECT_SOURCE_DIR}")
    if(VESK_SANITIZE)
        target_compile_options(${target} PRIVATE
            -fsanitize=${VESK_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
        # An empty optional that is dereferenced and an index beyond a vector end the program.
        target_compile_definitions(${target} PRIVATE _GLIBCXX_ASSERTIONS)
        target_link_options(${target} PRIVATE -fsanitize=${VESK_SANITIZE})
        # Calls through a pointer are checked by data in front of each function, which clang 14 does
        # not find for coroutines.
        if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
            target_compile_options(${target} PRIVATE -fno-sanitize=function)
        endif()
    elseif(VESK_HARDENING)
        # The folder that something was built in is nobody's business, and makes no difference.
        target_compile_options(${target} PRIVATE
            ${vesk_hardening_compile} "-ffile-prefix-map=${PROJECT_SOURCE_DIR}/=")
        target_link_options(${target} PRIVATE ${vesk_hardening_link})
    endif()
endfunction()

# The rules for code that uses Qt: no implicit conversions between text encodings, nothing that
# was deprecated in the oldest toolkit we build with.
function(vesk_configure_qt target)
    vesk_configure(${target})
    target_compile_definitions(${target} PRIVATE
        QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING QT_NO_FOREACH
        QT_DISABLE_DEPRECATED_BEFORE=0x060400)
endfunction()

# vesk_precompile(target <Header>...) has what most sources of the target include read once. Only
# under a sanitizer: what is shipped is compiled as each source says, so that it says all it needs.
function(vesk_precompile target)
    if(VESK_SANITIZE)
        target_precompile_headers(${target} PRIVATE ${ARGN})
        # Without a time in it a compiler cache knows it again.
        if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
            target_compile_options(${target} PRIVATE "SHELL:-Xclang -fno-pch-timestamp")
        endif()
    endif()
endfunction()

# A room of the product: vesk_library(name SOURCES ... LINK ... [PRECOMPILE <Header>...])
function(vesk_library target)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINK;PRECOMPILE")
    add_library(${target} STATIC ${arg_SOURCES})
    target_link_libraries(${target} PUBLIC ${arg_LINK})
    vesk_configure_qt(${target})
    if(arg_PRECOMPILE)
        vesk_precompile(${target} ${arg_PRECOMPILE})
    endif()
endfunction()
