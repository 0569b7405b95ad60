# Run while installing: parts the installed files from their debug symbols, which debuggers find in a file beside each.
# These tools write the time into what they copy, unless they are given one.
cmake_policy(VERSION 3.25)
foreach(name toolbelt.dll toolbelt.exe)
    set(file "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/bin/${name}")
    message(STATUS "Parting: ${file}.debug")
    foreach(command "${objcopy};--only-keep-debug;${file};${file}.debug"
                    "${strip};--strip-unneeded;${file}"
                    "${objcopy};--add-gnu-debuglink=${file}.debug;${file}")
        execute_process(COMMAND "${CMAKE_COMMAND}" -E env SOURCE_DATE_EPOCH=0 ${command} COMMAND_ERROR_IS_FATAL ANY)
    endforeach()
endforeach()
