# The CLAP plug-in Tidewake.clap: one shared library exporting only clap_entry, beside the
# factory patch folder in the build tree, as tools/setup.sh installs it.
tidewake_library(tw_product_clap
  SOURCES TidewakeClap.cpp
  DEPENDS tw_clap tw_product_editor)

add_library(TidewakeClap MODULE ClapEntry.cpp)
target_link_libraries(TidewakeClap PRIVATE tw_product_clap tw_resources)
set_target_properties(TidewakeClap PROPERTIES PREFIX "" SUFFIX ".clap" OUTPUT_NAME "Tidewake"
                                              LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR})
target_link_options(TidewakeClap PRIVATE -Wl,--version-script=${PROJECT_SOURCE_DIR}/clap/exports.map)
if(NOT TIDEWAKE_SANITIZE AND NOT TIDEWAKE_TSAN)
  target_link_options(TidewakeClap PRIVATE -Wl,-z,defs)
endif()
set_property(TARGET TidewakeClap APPEND PROPERTY LINK_DEPENDS ${PROJECT_SOURCE_DIR}/clap/exports.map)
