# The LV2 bundle Tidewake.lv2/: the library (plug-in and UI in one, exporting lv2_descriptor
# and lv2ui_descriptor), its description written from the product at build time, and the
# factory patch folder beside the library.
tidewake_library(tw_product_lv2
  SOURCES TidewakeLv2.cpp
  DEPENDS tw_lv2 tw_product_editor)

set(lv2_bundle ${PROJECT_BINARY_DIR}/Tidewake.lv2)
add_library(TidewakeLv2 MODULE Lv2Entry.cpp)
target_link_libraries(TidewakeLv2 PRIVATE tw_product_lv2 tw_resources)
set_target_properties(TidewakeLv2 PROPERTIES PREFIX "" OUTPUT_NAME "Tidewake" LIBRARY_OUTPUT_DIRECTORY ${lv2_bundle})
target_link_options(TidewakeLv2 PRIVATE -Wl,--version-script=${PROJECT_SOURCE_DIR}/lv2/exports.map)
if(NOT TIDEWAKE_SANITIZE AND NOT TIDEWAKE_TSAN)
  target_link_options(TidewakeLv2 PRIVATE -Wl,-z,defs)
endif()
set_property(TARGET TidewakeLv2 APPEND PROPERTY LINK_DEPENDS ${PROJECT_SOURCE_DIR}/lv2/exports.map)

set(lv2_description ${lv2_bundle}/manifest.ttl ${lv2_bundle}/Tidewake.ttl ${lv2_bundle}/presets.ttl)
add_custom_command(OUTPUT ${lv2_description}
                   COMMAND ${CMAKE_COMMAND} -E make_directory ${lv2_bundle}
                   COMMAND tidewake-lv2-bundle ${lv2_bundle}
                   COMMAND ${CMAKE_COMMAND} -E copy_directory "${PROJECT_BINARY_DIR}/Tidewake Patches"
                           "${lv2_bundle}/Tidewake Patches"
                   DEPENDS tidewake-lv2-bundle tw_resources
                   COMMENT "Writing the LV2 bundle's description")
add_custom_target(tidewake_lv2_bundle ALL DEPENDS ${lv2_description} TidewakeLv2)
