# SPDX-License-Identifier: MIT
# The compiler settings that every target of the project shares.

add_library(cartloom_options INTERFACE)

target_compile_definitions(cartloom_options INTERFACE
  QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING QT_NO_KEYWORDS
  QT_DISABLE_DEPRECATED_BEFORE=0x060400)

target_compile_options(cartloom_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align -Wunused
  -Wconversion -Wsign-conversion -Wdouble-promotion -Wformat=2 -Wimplicit-fallthrough -Wswitch-enum
  $<$<BOOL:${CARTLOOM_WARNINGS_AS_ERRORS}>:-Werror>)

if(CARTLOOM_SANITIZE)
  add_compile_options(-fsanitize=${CARTLOOM_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # Among instrumented code GCC loses track of what is initialised, and it warns of the fences in Qt's headers,
    # which the thread sanitizer does not see through.
    add_compile_options(-Wno-tsan)
    target_compile_options(cartloom_options INTERFACE -Wno-maybe-uninitialized)
  endif()
  add_link_options(-fsanitize=${CARTLOOM_SANITIZE})
endif()

# cartloom_finalize(TARGET): ends the making of a program with a window.
function(cartloom_finalize target)
  # Newer versions of Qt look through all that a program imports, for static plugins to link. Where Qt is shared there
  # are none, and Debian's Qt warns of each.
  get_target_property(kind Qt6::Core TYPE)
  if(kind STREQUAL "SHARED_LIBRARY")
    set_target_properties(${target} PROPERTIES QT_QML_MODULE_NO_IMPORT_SCAN TRUE)
  endif()
  qt_finalize_target(${target})
endfunction()
