# The warnings every target of ours is built with. Turned into errors by the presets only, so that a
# packager with another compiler is not stopped by a new warning.
add_library(telvane_avisos INTERFACE)
target_compile_options(telvane_avisos INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow
  -Wnon-virtual-dtor -Woverloaded-virtual)
# GCC 12 sees overlapping and overlong copies inside std::string where there are none (its bug 105651).
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(telvane_avisos INTERFACE -Wno-restrict -Wno-array-bounds
    -Wno-stringop-overflow -Wno-stringop-overread)
endif()
# For clang -Wconversion means more than the compiler that the code is written for means by it.
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  target_compile_options(telvane_avisos INTERFACE -Wno-sign-conversion -Wno-implicit-int-float-conversion)
endif()
if(TELVANE_AVISOS_COMO_ERRORES)
  target_compile_options(telvane_avisos INTERFACE -Werror)
endif()

if(TELVANE_SANEADO STREQUAL "todo")
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()
if(TELVANE_FUZZ)
  # The fuzzer sees into every layer; only its targets bring its main().
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=fuzzer-no-link,address,undefined)
  # Marks in front of every function, which coroutines cannot carry.
  add_compile_options(-fno-sanitize=function)
  # This clang has the coroutines of the standard and does not say so to the standard library.
  if(CMAKE_CXX_COMPILER_VERSION VERSION_LESS 17)
    add_compile_definitions(__cpp_impl_coroutine=201902L)
  endif()
endif()
