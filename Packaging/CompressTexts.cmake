# Debian has manual pages and changelogs compressed, the same bytes each time.
cmake_minimum_required(VERSION 3.25)
file(GLOB texts ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr/share/man/man1/*.1 ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr/share/doc/tavaro/changelog)
execute_process(COMMAND gzip -9n ${texts} COMMAND_ERROR_IS_FATAL ANY)
