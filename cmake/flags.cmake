# One set of flags for every target. No fast-math, no fused multiply-add, no flags of
# one machine: the numbers must be the same wherever the library is built.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

add_library(ocpan_flags INTERFACE)
if(MSVC)
  target_compile_options(ocpan_flags INTERFACE /W4 /fp:precise /utf-8)
  target_compile_definitions(ocpan_flags INTERFACE _USE_MATH_DEFINES)
else()
  target_compile_options(ocpan_flags INTERFACE
    -ffp-contract=off -Wall -Wextra -Wpedantic -Wshadow -Wfloat-conversion
    $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual>)
endif()
if(WIN32)
  target_compile_definitions(ocpan_flags INTERFACE NOMINMAX WIN32_LEAN_AND_MEAN)
endif()
if(OCPAN_WARNINGS_FATAL)
  target_compile_options(ocpan_flags INTERFACE $<IF:$<CXX_COMPILER_ID:MSVC>,/WX,-Werror>)
endif()
if(UNIX AND NOT APPLE)
  target_link_options(ocpan_flags INTERFACE -Wl,--as-needed)
endif()
if(OCPAN_SANITIZE)
  target_compile_options(ocpan_flags INTERFACE
    -fsanitize=${OCPAN_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer -O1 -g1)
  target_link_options(ocpan_flags INTERFACE -fsanitize=${OCPAN_SANITIZE})
endif()
if(OCPAN_BUILD_FUZZERS)
  target_compile_options(ocpan_flags INTERFACE
    -fsanitize-coverage-ignorelist=${PROJECT_SOURCE_DIR}/fuzz/uncounted_functions.txt)
endif()
target_compile_definitions(ocpan_flags INTERFACE
  $<$<CONFIG:Debug>:EIGEN_INITIALIZE_MATRICES_BY_NAN>
  $<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>)
