# SPDX-License-Identifier: MIT
# What makes a mistake in memory harder to abuse, as far as the compiler and the linker of this system know it.

include(CheckCXXCompilerFlag)
include(CheckCXXSourceCompiles)
include(CheckLinkerFlag)
include(CheckPIESupported)

set(CMAKE_POSITION_INDEPENDENT_CODE ON)
check_pie_supported(LANGUAGES CXX)

# A compiler that only warns of a flag does not know it.
set(CMAKE_REQUIRED_FLAGS -Werror)
foreach(flag IN ITEMS -fstack-protector-strong -fstack-clash-protection -fcf-protection
             -mbranch-protection=standard)
  string(MAKE_C_IDENTIFIER "CARTLOOM_HAS${flag}" known)
  check_cxx_compiler_flag(${flag} ${known})
  if(${known})
    add_compile_options(${flag})
  endif()
endforeach()
unset(CMAKE_REQUIRED_FLAGS)

foreach(flag IN ITEMS -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
  string(MAKE_C_IDENTIFIER "CARTLOOM_HAS${flag}" known)
  check_linker_flag(CXX ${flag} ${known})
  if(${known})
    add_link_options(${flag})
  endif()
endforeach()

# The third level needs both a newer compiler and a newer C library; these know of each other.
set(CMAKE_REQUIRED_FLAGS "-O2 -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3")
check_cxx_source_compiles("
  #include <cstdlib>
  #if __USE_FORTIFY_LEVEL < 3
  #error
  #endif
  int main() {}" CARTLOOM_HAS_FORTIFY_3)
unset(CMAKE_REQUIRED_FLAGS)
if(CARTLOOM_HAS_FORTIFY_3)
  set(level 3)
else()
  set(level 2)
endif()
add_compile_options(-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=${level} -D_GLIBCXX_ASSERTIONS)
