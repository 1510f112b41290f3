# What makes a program a Mac application: its icon, made of the one drawing, and its signature.

set(STAYLIT_SIGNING_IDENTITY "-" CACHE STRING
  "Whose certificate signs the application; - signs for this machine only")

set(STAYLIT_DRAWING "${CMAKE_CURRENT_LIST_DIR}/../icons/com.staylit.app.svg")
set(STAYLIT_ENTITLEMENTS "${CMAKE_CURRENT_LIST_DIR}/Staylit.entitlements")

# staylit_app_icon(TARGET) puts the icon into the application TARGET.
function(staylit_app_icon target)
  add_executable(icon-set "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/../tools/IconSet.mm")
  staylit_target(icon-set)
  set_target_properties(icon-set PROPERTIES OBJCXX_STANDARD 20 OBJCXX_STANDARD_REQUIRED ON)
  target_compile_options(icon-set PRIVATE -fobjc-arc)
  target_link_libraries(icon-set PRIVATE "-framework AppKit" "-framework Foundation")
  set(set "${CMAKE_CURRENT_BINARY_DIR}/Staylit.iconset")
  set(icon "${CMAKE_CURRENT_BINARY_DIR}/Staylit.icns")
  add_custom_command(OUTPUT "${icon}" DEPENDS "${STAYLIT_DRAWING}" icon-set VERBATIM
    COMMAND icon-set "${STAYLIT_DRAWING}" "${set}"
    COMMAND iconutil --convert icns --output "${icon}" "${set}")
  target_sources(${target} PRIVATE "${icon}")
  set_source_files_properties("${icon}" PROPERTIES
    GENERATED ON MACOSX_PACKAGE_LOCATION Resources)
  set_target_properties(${target} PROPERTIES MACOSX_BUNDLE_ICON_FILE Staylit)
endfunction()

# staylit_sign(TARGET) signs the application TARGET once all of it is there, and again whenever any
# of it was made anew. With the hardened runtime, but for a debug build of this machine's own: no
# debugger and no sanitizer gets along with that.
function(staylit_sign target)
  set(stamp "${CMAKE_CURRENT_BINARY_DIR}/${target}.signed")
  set(how --timestamp --options runtime)
  if(STAYLIT_SIGNING_IDENTITY STREQUAL "-")
    set(how --timestamp=none "$<$<NOT:$<CONFIG:Debug>>:--options;runtime>")
  endif()
  # CMake writes the property list itself, before anything is built, and only when it differs.
  add_custom_command(OUTPUT "${stamp}" VERBATIM COMMAND_EXPAND_LISTS
    DEPENDS ${target} "${CMAKE_CURRENT_BINARY_DIR}/Staylit.icns" "${STAYLIT_ENTITLEMENTS}"
      "$<TARGET_BUNDLE_CONTENT_DIR:${target}>/Info.plist"
    COMMAND codesign --force --sign "${STAYLIT_SIGNING_IDENTITY}" "${how}"
      --entitlements "${STAYLIT_ENTITLEMENTS}" "$<TARGET_BUNDLE_DIR:${target}>"
    COMMAND "${CMAKE_COMMAND}" -E touch "${stamp}")
  add_custom_target(${target}-signed ALL DEPENDS "${stamp}")
endfunction()
