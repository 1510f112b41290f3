# The symbols of the status item: as an icon theme of our own, whose pictures follow the panel's
# colours, and as pixmaps for hosts that find no icons by name.

set(STAYLIT_STATUS_SYMBOLS cup.and.saucer.fill cup.and.saucer pause.circle)
set(STAYLIT_SYMBOLS "${CMAKE_CURRENT_LIST_DIR}/symbols")
# The edges of a drawing lie on whole pixels in its own size and in multiples of that size.
set(STAYLIT_THEME_FOLDERS scalable 22x22 24x24)
set(STAYLIT_PIXMAP_SIZES 16 22 24 32 48)

# staylit_status_drawing(RESULT SYMBOL SIZE) finds the drawing for a size in pixels, or "scalable".
function(staylit_status_drawing result symbol size)
  set(folder "${STAYLIT_SYMBOLS}")
  if(size MATCHES "^22")
    string(APPEND folder "/22")
  elseif(size MATCHES "^(24|48)")
    string(APPEND folder "/24")
  endif()
  set(${result} "${folder}/${symbol}.svg" PARENT_SCOPE)
endfunction()

# staylit_status_theme(FOLDER) writes the icon theme, the dimmed forms made from the full ones.
function(staylit_status_theme folder)
  foreach(symbol IN LISTS STAYLIT_STATUS_SYMBOLS)
    string(REPLACE "." "-" name "${symbol}")
    foreach(size IN LISTS STAYLIT_THEME_FOLDERS)
      staylit_status_drawing(drawing ${symbol} ${size})
      set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${drawing}")
      set(beginning "${folder}/hicolor/${size}/status/staylit-${name}")
      configure_file("${drawing}" "${beginning}-symbolic.svg" COPYONLY)
      file(READ "${drawing}" text)
      # Panels that follow no colour scheme show the grey itself, and it must stay legible.
      string(REPLACE "#8e8e8e" "#808080" text "${text}")
      string(REPLACE "</style>\n" "</style>\n  <g opacity=\".7\">\n" text "${text}")
      string(REPLACE "</svg>" "  </g>\n</svg>" text "${text}")
      file(CONFIGURE OUTPUT "${beginning}-dimmed-symbolic.svg" CONTENT "${text}" @ONLY)
    endforeach()
  endforeach()
endfunction()

# staylit_status_pixmaps(TARGET) gives a target the table `StatusPixmaps.inc`.
function(staylit_status_pixmaps target)
  find_program(RSVG_CONVERT rsvg-convert REQUIRED)
  find_package(PNG REQUIRED)
  add_executable(pixmap-table "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/tools/PixmapTable.cpp")
  staylit_target(pixmap-table)
  target_link_libraries(pixmap-table PRIVATE PNG::PNG)
  set(folder "${CMAKE_CURRENT_BINARY_DIR}/pixmaps")
  file(MAKE_DIRECTORY "${folder}")
  foreach(symbol IN LISTS STAYLIT_STATUS_SYMBOLS)
    foreach(size IN LISTS STAYLIT_PIXMAP_SIZES)
      staylit_status_drawing(drawing ${symbol} ${size})
      set(picture "${folder}/${symbol}-${size}.png")
      add_custom_command(OUTPUT "${picture}" DEPENDS "${drawing}" VERBATIM
        COMMAND "${RSVG_CONVERT}" -w ${size} -h ${size} -o "${picture}" "${drawing}")
      list(APPEND pictures "${picture}")
      list(APPEND arguments ${symbol} ${size} "${picture}")
    endforeach()
  endforeach()
  add_custom_command(OUTPUT "${folder}/StatusPixmaps.inc" DEPENDS ${pictures} pixmap-table VERBATIM
    COMMAND pixmap-table "${folder}/StatusPixmaps.inc" ${arguments})
  target_sources(${target} PRIVATE "${folder}/StatusPixmaps.inc")
  target_include_directories(${target} PRIVATE "${folder}")
endfunction()
