# The native build: sources and unit tests that reach no Windows header, with the sanitizers that the target lacks.

# Sets `result` to whether `source`, or a project header it includes, includes a Windows header.
function(needs_windows source result)
  set(${result} FALSE PARENT_SCOPE)
  set(pending ${source})
  set(seen ${source})
  while(pending)
    list(POP_FRONT pending file)
    file(STRINGS ${file} includes REGEX "^#[ \t]*include")
    foreach(line IN LISTS includes)
      string(REGEX REPLACE ".*[\"<]([^\">]+)[\">].*" "\\1" name "${line}")
      if(name MATCHES "Common/Win\\.h$|^windows\\.h$")
        set(${result} TRUE PARENT_SCOPE)
        return()
      endif()
      foreach(root IN ITEMS ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR})
        if(EXISTS ${root}/${name} AND NOT ${root}/${name} IN_LIST seen)
          list(APPEND seen ${root}/${name})
          list(APPEND pending ${root}/${name})
        endif()
      endforeach()
    endforeach()
  endwhile()
endfunction()

function(keep_portable sources result)
  set(kept "")
  foreach(source IN LISTS ${sources})
    needs_windows(${source} windows)
    if(NOT windows)
      list(APPEND kept ${source})
    endif()
  endforeach()
  set(${result} ${kept} PARENT_SCOPE)
endfunction()

file(GLOB_RECURSE all_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/*.cpp)
# tests/native stands in for what the portable sources reach of Windows, and looks at it.
file(GLOB_RECURSE all_tests CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tests/unit/*.cpp
     ${PROJECT_SOURCE_DIR}/tests/native/*.cpp)
keep_portable(all_sources portable_sources)
keep_portable(all_tests portable_tests)
foreach(file IN LISTS portable_sources portable_tests)
  cmake_path(RELATIVE_PATH file BASE_DIRECTORY ${PROJECT_SOURCE_DIR})
  message(STATUS "native: ${file}")
endforeach()

# The last two are no part of "undefined".
set(sanitizers address,undefined,float-divide-by-zero,float-cast-overflow)
add_compile_options(-fsanitize=${sanitizers} -fno-sanitize-recover=all -fno-omit-frame-pointer)
add_link_options(-fsanitize=${sanitizers})

add_library(ostrel_portable STATIC ${portable_sources})
target_include_directories(ostrel_portable PUBLIC ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}
                           ${PROJECT_SOURCE_DIR}/include)
target_include_directories(ostrel_portable SYSTEM PUBLIC ${OSTREL_LINKED_HEADERS})

add_executable(unit_tests ${portable_tests})
target_link_libraries(unit_tests PRIVATE ostrel_portable gmock_main)
set_target_properties(unit_tests PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)

# Clang alone has libFuzzer. Each program brings its own stand-in for what its sources reach of Windows.
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  add_executable(edid_fuzz ${PROJECT_SOURCE_DIR}/tests/fuzz/edid_fuzz.cpp
                 ${PROJECT_SOURCE_DIR}/src/Common/MultiMonitor/Edid.cpp)
  target_include_directories(edid_fuzz PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR})
  target_compile_options(edid_fuzz PRIVATE -O1 -fsanitize=fuzzer)
  target_link_options(edid_fuzz PRIVATE -fsanitize=fuzzer)
  set_target_properties(edid_fuzz PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
endif()
