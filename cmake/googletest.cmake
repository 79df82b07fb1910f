# GoogleTest out of its sources, built like the project: for the same target, and instrumented where the project is.
set(COLDANCHOR_GOOGLETEST /usr/src/googletest CACHE PATH "GoogleTest's sources")
set(INSTALL_GTEST OFF)
add_subdirectory(${COLDANCHOR_GOOGLETEST} ${PROJECT_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
target_compile_options(gtest PRIVATE -O0 -g0) # takes a third of the time to compile, and none of the tests' time
if(COLDANCHOR_SANITIZER)
    target_compile_options(gtest PRIVATE -fsanitize=${COLDANCHOR_SANITIZER})
endif()
include(GoogleTest)
