# Builds a host from the unpacked archive alone, and runs it.
cmake_minimum_required(VERSION 3.24)

get_filename_component(name ${SDK} NAME)
file(REMOVE_RECURSE ${BUILD})
foreach(command IN ITEMS
        "${CMAKE_COMMAND};-G;Ninja;-S;${SOURCE};-B;${BUILD};-DCMAKE_SYSTEM_NAME=Windows;-DCMAKE_CXX_COMPILER=${COMPILER};\
-DCMAKE_BUILD_TYPE=Release;-DCMAKE_PREFIX_PATH=${SDK}/${name}-installed"
        "${CMAKE_COMMAND};--build;${BUILD}"
        "${EMULATOR};${BUILD}/consumer.exe")
    execute_process(COMMAND ${command} COMMAND_ERROR_IS_FATAL ANY)
endforeach()

# Without CMake, as its README says.
execute_process(
    COMMAND ${COMPILER} -Iinclude ${SOURCE}/main.cpp lib/libquorvex.dll.a lib/libferrolink.dll.a -static
        -o ${BUILD}/plain.exe
    WORKING_DIRECTORY ${SDK}/${name}-installed COMMAND_ERROR_IS_FATAL ANY)
