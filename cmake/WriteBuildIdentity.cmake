# Run by the build: writes the header with the identity; see BuildIdentity.cmake.

file(GLOB_RECURSE headers RELATIVE "${SOURCE_FOLDER}" "${SOURCE_FOLDER}/Tidewell/*.h"
     "${SOURCE_FOLDER}/Staylit/*.h" "${SOURCE_FOLDER}/Platform/Linux/*.h")
list(SORT headers)
set(all "${TOOLCHAIN}")
foreach(header IN LISTS headers)
  file(SHA256 "${SOURCE_FOLDER}/${header}" content)
  string(APPEND all "|${header} ${content}")
endforeach()
string(SHA256 identity "${all}")
string(SUBSTRING "${identity}" 0 16 identity)

file(WRITE "${OUTPUT}" "#pragma once

/// The same in all parts of one build, and in no other build that they would not fit.
#define STAYLIT_BUILD_IDENTITY \"${identity}\"
/// The name under which a part of this build offers a function.
#define STAYLIT_OF_THIS_BUILD(function) function##_${identity}
")
