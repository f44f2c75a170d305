# Packs what the build installs, and unpacks it into the folder SDK, which the build has never seen.
cmake_minimum_required(VERSION 3.24)

file(REMOVE_RECURSE ${SDK} ${SDK}-installed)
file(MAKE_DIRECTORY ${SDK})
foreach(command IN ITEMS
        "${CMAKE_COMMAND};--install;${BUILD};--component;sdk;--prefix;${SDK}-installed"
        "${ARCHIVER};${SDK}-installed;${SDK}/archive.zip"
        "${CMAKE_COMMAND};-E;tar;xf;${SDK}/archive.zip")
    execute_process(COMMAND ${command} WORKING_DIRECTORY ${SDK} OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
endforeach()
file(REMOVE_RECURSE ${SDK}-installed)

get_filename_component(name ${SDK} NAME)
foreach(file IN ITEMS README.md bin/quorvex.dll bin/ferrolink.dll bin/quorvex.exe include/quorvex/quorvex.h
        include/ferrolink/log.h)
    if(NOT EXISTS ${SDK}/${name}-installed/${file})
        message(FATAL_ERROR "The archive has no ${file}.")
    endif()
endforeach()
