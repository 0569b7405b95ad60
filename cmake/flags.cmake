# Options and compiler flags of every target.
option(TOOLBELT_TESTS "Build the tests" ON)
option(TOOLBELT_WERROR "Treat warnings as errors" OFF)
set(TOOLBELT_SANITIZE "" CACHE STRING "Sanitizers of the native build, as -fsanitize takes them")

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

add_library(tb_flags INTERFACE)
target_include_directories(tb_flags INTERFACE "${PROJECT_SOURCE_DIR}")
target_compile_options(tb_flags INTERFACE -Wall -Wextra -Wpedantic -Wshadow -ffunction-sections -fdata-sections)
if(TOOLBELT_WERROR)
    target_compile_options(tb_flags INTERFACE -Werror)
endif()
if(WIN32)
    # Windows code may be entered with a stack aligned to four bytes; vector spills would fault without the realignment.
    target_compile_options(tb_flags INTERFACE -mstackrealign)
    target_compile_definitions(tb_flags INTERFACE UNICODE _UNICODE _WIN32_WINNT=0x0501 WINVER=0x0501)
endif()
if(WIN32)
    # The product says nothing of the folders that it was built in: two builds anywhere are the same bytes.
    add_compile_options("-ffile-prefix-map=${PROJECT_SOURCE_DIR}=toolbelt" "-ffile-prefix-map=${CMAKE_BINARY_DIR}=toolbelt/build")
endif()
if(TOOLBELT_SANITIZE)
    add_compile_options(-O1 -g1 -fsanitize=${TOOLBELT_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${TOOLBELT_SANITIZE})
endif()

# tb_layer(NAME SOURCES... USES LAYERS...): one layer of the library. Every symbol marked TB_API is exported by the DLL.
function(tb_layer name)
    cmake_parse_arguments(layer "" "" "USES" ${ARGN})
    add_library(${name} STATIC ${layer_UNPARSED_ARGUMENTS})
    target_link_libraries(${name} PUBLIC tb_flags ${layer_USES})
    target_compile_definitions(${name} PRIVATE TOOLBELT_BUILDING PUBLIC TOOLBELT_STATIC)
endfunction()
