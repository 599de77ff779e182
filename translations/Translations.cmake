# The window's translations: translations/kextkeeper_<lang>.ts, compiled by lrelease into
# the application library under :/i18n. `cmake --build build --target update_translations`
# brings the .ts files up to date with the sources (lupdate). The texts keep their English
# wording as the key, so a missing translation shows the English text.

find_package(Qt6 REQUIRED COMPONENTS LinguistTools)

# lupdate cannot see through kkTr(): a file written from the sources names each of its
# texts in the context kkTr() looks them up in.
file(GLOB_RECURSE kk_tr_sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/src/*.cpp)
set(kk_tr_list ${CMAKE_BINARY_DIR}/kk_tr_sources.txt)
string(REPLACE ";" "\n" kk_tr_lines "${kk_tr_sources}")
file(CONFIGURE OUTPUT ${kk_tr_list} CONTENT "${kk_tr_lines}\n")
set(kk_tr_keys ${CMAKE_BINARY_DIR}/kk_tr_keys.cpp)
add_custom_command(OUTPUT ${kk_tr_keys}
  COMMAND ${CMAKE_COMMAND} -DOUT=${kk_tr_keys} -DSOURCE_LIST=${kk_tr_list}
          -P ${CMAKE_CURRENT_SOURCE_DIR}/translations/ExtractKeys.cmake
  DEPENDS ${kk_tr_sources} ${CMAKE_CURRENT_SOURCE_DIR}/translations/ExtractKeys.cmake
  COMMENT "Listing the texts looked up with kkTr() for lupdate")
add_custom_target(kk_tr_keys DEPENDS ${kk_tr_keys})

get_target_property(kk_app_sources kextkeeper_app SOURCES)
qt_add_translations(kextkeeper_app
  TS_FILES ${CMAKE_CURRENT_SOURCE_DIR}/translations/kextkeeper_de.ts
  SOURCES ${kk_app_sources} ${kk_tr_keys}
  RESOURCE_PREFIX /i18n
  LUPDATE_OPTIONS -no-obsolete -locations none)
add_dependencies(kextkeeper_app_lupdate kk_tr_keys)
