# With TELVANE_SANEADO=gemela the core stands twice in one build tree: as delivered, and once more under the sanitizers, each
# layer's twin as <layer>_saneada. A test is compiled once, by itself not sanitized, and linked with both: prueba_<name> and
# saneada_<name>.
set(saneadores -fsanitize=address,undefined -fno-sanitize-recover=all)

if(TELVANE_SANEADO STREQUAL "gemela")
  # What there is to warn of is told once, of the objects that are delivered.
  set(opciones_saneadas -Og -g1 -UNDEBUG ${saneadores} -fno-omit-frame-pointer -w)
  if(TELVANE_PRECOMPILAR)
    telvane_precompilado(telvane_precompilado_saneado ${telvane_cabeceras})
    target_compile_options(telvane_precompilado_saneado PRIVATE ${opciones_saneadas})
  endif()
endif()

# telvane_gemelas(result name...): what the twin links where the other links these.
function(telvane_gemelas resultado)
  get_property(con_gemela GLOBAL PROPERTY telvane_con_gemela)
  foreach(nombre IN LISTS ARGN)
    if(nombre IN_LIST con_gemela)
      string(APPEND nombre _saneada)
    endif()
    list(APPEND gemelas ${nombre})
  endforeach()
  set(${resultado} ${gemelas} PARENT_SCOPE)
endfunction()

# Made when all of its folder's CMakeLists.txt is read: what is set after telvane_capa() counts too.
function(telvane_gemela_de_capa capa)
  foreach(cosa SOURCES INCLUDE_DIRECTORIES COMPILE_DEFINITIONS LINK_LIBRARIES)
    get_target_property(${cosa} ${capa} ${cosa})
    list(FILTER ${cosa} EXCLUDE REGEX "NOTFOUND$")
  endforeach()
  telvane_gemelas(enlaza ${LINK_LIBRARIES})
  add_library(${capa}_saneada STATIC ${SOURCES})
  target_include_directories(${capa}_saneada SYSTEM PUBLIC ${INCLUDE_DIRECTORIES})
  target_compile_definitions(${capa}_saneada PRIVATE ${COMPILE_DEFINITIONS})
  target_compile_options(${capa}_saneada PRIVATE ${opciones_saneadas})
  target_link_libraries(${capa}_saneada PUBLIC ${enlaza})
  telvane_precompilar(${capa}_saneada telvane_precompilado_saneado)
  telvane_juntar(${capa}_saneada 8)
  # Each store has its statements.
  list(FILTER SOURCES INCLUDE REGEX "^(almacen|tablas|filas)_sqlite")
  set_source_files_properties(${SOURCES} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
endfunction()

# telvane_con_gemela(layer): what telvane_capa() says of each.
function(telvane_con_gemela capa)
  if(TELVANE_SANEADO STREQUAL "gemela")
    set_property(GLOBAL APPEND PROPERTY telvane_con_gemela ${capa})
    cmake_language(EVAL CODE "cmake_language(DEFER CALL telvane_gemela_de_capa ${capa})")
  endif()
endfunction()

# telvane_programa_saneado(twin program): the same objects, linked with the twins of the layers.
function(telvane_programa_saneado gemela programa)
  get_target_property(enlaza ${programa} LINK_LIBRARIES)
  get_target_property(antes ${programa} MANUALLY_ADDED_DEPENDENCIES)
  telvane_gemelas(enlaza ${enlaza})
  add_executable(${gemela} $<TARGET_OBJECTS:${programa}>)
  set_target_properties(${gemela} PROPERTIES LINKER_LANGUAGE CXX)
  target_link_libraries(${gemela} PRIVATE ${enlaza})
  target_link_options(${gemela} PRIVATE ${saneadores})
  if(antes)
    add_dependencies(${gemela} ${antes})
  endif()
endfunction()
