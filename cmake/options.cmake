# How every target of the project is compiled and linked, in one interface target.
add_library(ca_options INTERFACE)
target_compile_features(ca_options INTERFACE cxx_std_20)
target_compile_options(ca_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast -Wnon-virtual-dtor
    -Woverloaded-virtual -Wcast-qual -Wformat=2 -Wundef -Werror)
set_property(GLOBAL PROPERTY USE_FOLDERS ON)
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)

set(COLDANCHOR_SANITIZER "" CACHE STRING "Sanitizers for the whole build, such as address,undefined or thread")
if(COLDANCHOR_SANITIZER)
    target_compile_options(ca_options INTERFACE
        -fsanitize=${COLDANCHOR_SANITIZER} -fno-sanitize-recover=all -fno-omit-frame-pointer -O1 -g1)
    target_link_options(ca_options INTERFACE -fsanitize=${COLDANCHOR_SANITIZER})
else()
    # mingw keeps both the stack protector and what _FORTIFY_SOURCE calls in libssp, which the option below links.
    target_compile_options(ca_options INTERFACE
        -fstack-protector-strong $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
    target_link_options(ca_options INTERFACE -fstack-protector-strong)
endif()

if(WIN32)
    target_compile_definitions(ca_options INTERFACE WIN32_LEAN_AND_MEAN NOMINMAX _WIN32_WINNT=0x0A00)
    # What nothing calls is left out, and two builds are alike byte for byte, wherever and whenever they are made.
    # (A compiler's cache may name sources from the build folder.)
    file(RELATIVE_PATH from_build_folder ${PROJECT_BINARY_DIR} ${PROJECT_SOURCE_DIR})
    target_compile_options(ca_options INTERFACE -ffunction-sections -fdata-sections
        -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=/cold-anchor/ -ffile-prefix-map=${from_build_folder}=/cold-anchor/)
    target_link_options(ca_options INTERFACE -static LINKER:--gc-sections,--no-insert-timestamp)
else()
    target_compile_options(ca_options INTERFACE -fstack-clash-protection -fcf-protection)
    target_link_options(ca_options INTERFACE LINKER:-z,relro,-z,now,-z,noexecstack)
    include(CheckPIESupported)
    check_pie_supported()
endif()
