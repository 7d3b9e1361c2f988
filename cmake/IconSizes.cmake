# SPDX-License-Identifier: GPL-3.0-or-later
# Renders resources/icon/tristop.svg in the usual sizes. ICON_SIZES lists them; the pictures lie in ICON_FOLDER under the
# paths of the hicolor theme, and ICON_FILES lists them.
find_program(RSVG_CONVERT rsvg-convert REQUIRED)
set(ICON_SIZES 16 22 24 32 48 64 128 256 512)
set(ICON_FOLDER ${PROJECT_BINARY_DIR}/icons)
set(ICON_DRAWING ${PROJECT_SOURCE_DIR}/resources/icon/tristop.svg)
set(ICON_FILES)
foreach(size ${ICON_SIZES})
  set(folder ${ICON_FOLDER}/${size}x${size}/apps)
  add_custom_command(OUTPUT ${folder}/tristop.png
    COMMAND ${CMAKE_COMMAND} -E make_directory ${folder}
    COMMAND ${RSVG_CONVERT} --width ${size} --height ${size} ${ICON_DRAWING} --output ${folder}/tristop.png
    DEPENDS ${ICON_DRAWING}
    VERBATIM)
  list(APPEND ICON_FILES ${folder}/tristop.png)
  set_source_files_properties(${folder}/tristop.png PROPERTIES QT_RESOURCE_ALIAS tristop-${size}.png)
endforeach()
