# SPDX-License-Identifier: GPL-3.0-or-later
# Run by CPack on the files of each package before they are packed: brings them into the form that Debian asks for.

function(write_compressed source target)
  execute_process(COMMAND gzip -9 --no-name --stdout ${source} OUTPUT_FILE ${target} COMMAND_ERROR_IS_FATAL ANY)
  file(CHMOD ${target} PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
endfunction()

foreach(component ${CPACK_COMPONENTS_ALL})
  string(TOUPPER ${component} upper)
  set(usr ${CPACK_TEMPORARY_DIRECTORY}/${component}/usr)
  set(documents ${usr}/share/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME})

  file(GLOB manuals ${usr}/share/man/man1/*.1)
  foreach(manual ${manuals})
    write_compressed(${manual} ${manual}.gz)
    file(REMOVE ${manual})
  endforeach()

  # The licences are in the copyright file or part of every system.
  file(REMOVE_RECURSE ${usr}/share/licenses)
  file(MAKE_DIRECTORY ${documents})
  file(COPY ${CPACK_TRISTOP_SOURCES}/packaging/debian/copyright DESTINATION ${documents})
  write_compressed(${CPACK_TRISTOP_SOURCES}/CHANGELOG.md ${documents}/changelog.gz)
  write_compressed(${CPACK_TRISTOP_SOURCES}/packaging/debian/changelog ${documents}/changelog.Debian.gz)
endforeach()
