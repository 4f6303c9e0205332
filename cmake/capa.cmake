# {fmt} from its headers, compiled once and linked into each program (platform/formato.cpp says why); under the sanitizers, where
# nobody waits for a start, the distribution's shared one.
if(TELVANE_SANEADO STREQUAL "todo")
  add_library(telvane_formato INTERFACE)
  target_link_libraries(telvane_formato INTERFACE fmt::fmt)
else()
  add_library(telvane_formato STATIC ${PROJECT_SOURCE_DIR}/platform/formato.cpp)
  target_include_directories(telvane_formato SYSTEM
    PUBLIC $<TARGET_PROPERTY:fmt::fmt-header-only,INTERFACE_INCLUDE_DIRECTORIES>)
endif()

# Headers that most files include are compiled once: the standard library for every layer, the test library for every test.
# A file still includes what it uses; -DTELVANE_PRECOMPILAR=OFF builds without and shows where it does not.
option(TELVANE_PRECOMPILAR "Precompiled standard headers" ON)
file(WRITE ${CMAKE_BINARY_DIR}/vacio.cpp "")
function(telvane_precompilado nombre)
  add_library(${nombre} STATIC ${CMAKE_BINARY_DIR}/vacio.cpp)
  target_link_libraries(${nombre} PRIVATE telvane_avisos telvane_formato)
  target_precompile_headers(${nombre} PRIVATE ${ARGN})
endfunction()
function(telvane_precompilar objetivo cual)
  if(TELVANE_PRECOMPILAR)
    target_precompile_headers(${objetivo} REUSE_FROM ${cual})
  endif()
endfunction()
set(telvane_cabeceras <algorithm> <array> <chrono> <coroutine> <cstdint> <filesystem> <functional>
  <map> <memory> <optional> <span> <string> <string_view> <utility> <vector> <fmt/format.h>)
if(TELVANE_PRECOMPILAR)
  telvane_precompilado(telvane_precompilado ${telvane_cabeceras})
endif()

# Files that are compiled to be tested or watched, never to be delivered, are compiled several at once: most of what one of them
# costs are the templates that it shares with the next. Their nameless namespaces are one there. -DTELVANE_JUNTAR=OFF takes
# each by itself. Of a layer eight at most, of a test twice as many: they share more.
option(TELVANE_JUNTAR "Compile tests and sanitized twins several files at once" ON)
function(telvane_juntar objetivo cuantos)
  set_target_properties(${objetivo} PROPERTIES UNITY_BUILD ${TELVANE_JUNTAR} UNITY_BUILD_BATCH_SIZE ${cuantos})
endfunction()

# Of the toolkit only what most of its files include: all of it takes three times as long as they save.
set(telvane_cabeceras_qt <QApplication> <QLabel> <QLayout> <QLineEdit> <QPushButton> <QTimer> <QWidget>)

# telvane_capa(name [QT] SOURCES ... NECESITA ...): one folder, one static library, and the only arrows it may have.
# A folder's headers are reached as "folder/file.h" from the project's root.
function(telvane_capa nombre)
  cmake_parse_arguments(CAPA "QT" "" "SOURCES;NECESITA" ${ARGN})
  add_library(telvane_${nombre} STATIC ${CAPA_SOURCES})
  target_include_directories(telvane_${nombre} PUBLIC ${PROJECT_SOURCE_DIR})
  target_link_libraries(telvane_${nombre} PRIVATE telvane_avisos telvane_formato)
  if(NOT CAPA_QT)
    telvane_precompilar(telvane_${nombre} telvane_precompilado)
    telvane_con_gemela(telvane_${nombre})
  elseif(TELVANE_PRECOMPILAR)
    target_precompile_headers(telvane_${nombre} PRIVATE ${telvane_cabeceras_qt} <functional> <memory> <string> <vector>)
  endif()
  foreach(capa IN LISTS CAPA_NECESITA)
    target_link_libraries(telvane_${nombre} PUBLIC telvane_${capa})
  endforeach()
endfunction()
