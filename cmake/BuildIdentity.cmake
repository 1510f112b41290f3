# What tells the parts of one build from those of another.
#
# The program loads parts of itself from files of their own. They speak by C++ interfaces, so they
# fit each other only when the same compiler made them from the same headers, with the same options.
# The identity is made of these, and of nothing else: the same source gives the same identity
# wherever and whenever it is built.

set(STAYLIT_BUILD_IDENTITY_FOLDER "${PROJECT_BINARY_DIR}/generated")

string(TOUPPER "${CMAKE_BUILD_TYPE}" build_type)
set(options "${CMAKE_CXX_FLAGS} ${CMAKE_CXX_FLAGS_${build_type}} ${CMAKE_INTERPROCEDURAL_OPTIMIZATION}")
# Says where it was built, which changes nothing.
string(REGEX REPLACE "-f[a-z]+-prefix-map=[^ ]*" "" options "${options}")
set(compiler "${CMAKE_CXX_COMPILER_ID} ${CMAKE_CXX_COMPILER_VERSION} ${CMAKE_SYSTEM_PROCESSOR}")
string(SHA256 toolchain "${PROJECT_VERSION}|${compiler}|${options}")

file(GLOB_RECURSE headers CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/Tidewell/*.h"
     "${PROJECT_SOURCE_DIR}/Staylit/*.h" "${PROJECT_SOURCE_DIR}/Platform/Linux/*.h")
set(script "${PROJECT_SOURCE_DIR}/cmake/WriteBuildIdentity.cmake")
add_custom_command(
  OUTPUT "${STAYLIT_BUILD_IDENTITY_FOLDER}/StaylitBuildIdentity.h"
  COMMAND ${CMAKE_COMMAND} -DSOURCE_FOLDER=${PROJECT_SOURCE_DIR} -DTOOLCHAIN=${toolchain}
          -DOUTPUT=${STAYLIT_BUILD_IDENTITY_FOLDER}/StaylitBuildIdentity.h -P "${script}"
  DEPENDS ${headers} "${script}"
  COMMENT "Telling this build from others" VERBATIM)
add_custom_target(staylit-build-identity
                  DEPENDS "${STAYLIT_BUILD_IDENTITY_FOLDER}/StaylitBuildIdentity.h")

# staylit_uses_build_identity(NAME) lets a target include "StaylitBuildIdentity.h".
function(staylit_uses_build_identity name)
  add_dependencies(${name} staylit-build-identity)
  target_include_directories(${name} PRIVATE "${STAYLIT_BUILD_IDENTITY_FOLDER}")
endfunction()
