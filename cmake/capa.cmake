# telvane_capa(name SOURCES ... NECESITA ...): one folder, one static library, and the only arrows it may have.
# A folder's headers are reached as "folder/file.h" from the project's root.
function(telvane_capa nombre)
  cmake_parse_arguments(CAPA "" "" "SOURCES;NECESITA" ${ARGN})
  add_library(telvane_${nombre} STATIC ${CAPA_SOURCES})
  target_include_directories(telvane_${nombre} PUBLIC ${PROJECT_SOURCE_DIR})
  target_link_libraries(telvane_${nombre} PRIVATE telvane_avisos)
  foreach(capa IN LISTS CAPA_NECESITA)
    target_link_libraries(telvane_${nombre} PUBLIC telvane_${capa})
  endforeach()
endfunction()
