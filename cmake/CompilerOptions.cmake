# SPDX-License-Identifier: GPL-3.0-or-later
# Every target of the project takes its warnings and floating-point rules from tristop_options.
add_library(tristop_options INTERFACE)
target_include_directories(tristop_options INTERFACE ${PROJECT_SOURCE_DIR})
# Fused multiply-add would change tables and the guided filter, and with them the picture.
target_compile_options(tristop_options INTERFACE -Wall -Wextra -Wconversion -ffp-contract=off)
# g++ leaves this out of -Wconversion: sizes and differences of pixels go back and forth between the two.
target_compile_options(tristop_options INTERFACE $<$<COMPILE_LANG_AND_ID:CXX,Clang>:-Wno-sign-conversion>)
set(CMAKE_CXX_FLAGS_RELEASE "-O3 -DNDEBUG")
set(CMAKE_C_FLAGS_RELEASE "-O3 -DNDEBUG")

set(TRISTOP_SANITIZE "" CACHE STRING "Sanitizers, as in -fsanitize=")
if(TRISTOP_SANITIZE)
  add_compile_options(-fsanitize=${TRISTOP_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${TRISTOP_SANITIZE})
endif()
