# Makes BuildStamps.h. Run at build time, so that the stamps are those of the library that is being built:
#   cmake -DSOURCE_DIR=... -DTEMPLATE=... -DOUTPUT=... -DOSTREL_SOURCE_PATH=... -P BuildStamps.cmake
# All times are UTC. SOURCE_DATE_EPOCH, when set, is the build time. Without git the stamps say "unknown".

set(OSTREL_REVISION "unknown")
set(OSTREL_COMMIT_TIME "unknown")
string(TIMESTAMP OSTREL_BUILD_TIME "%Y/%m/%d %H:%M:%S" UTC)

# Runs git in the source folder; `variable` keeps its value when that fails.
function(ostrel_ask_git variable)
  execute_process(
    COMMAND ${CMAKE_COMMAND} -E env TZ=UTC ${GIT_EXECUTABLE} ${ARGN}
    WORKING_DIRECTORY ${SOURCE_DIR}
    OUTPUT_VARIABLE answer OUTPUT_STRIP_TRAILING_WHITESPACE
    ERROR_QUIET RESULT_VARIABLE result)
  if(result EQUAL 0 AND NOT answer STREQUAL "")
    set(${variable} "${answer}" PARENT_SCOPE)
  endif()
endfunction()

find_program(GIT_EXECUTABLE git)
if(GIT_EXECUTABLE)
  ostrel_ask_git(OSTREL_REVISION rev-list --count HEAD)
  ostrel_ask_git(OSTREL_COMMIT_TIME log -1 "--date=format-local:%Y/%m/%d %H:%M:%S" --format=%cd)
endif()

configure_file(${TEMPLATE} ${OUTPUT} @ONLY)
# An unchanged file would keep its old time and be made again at every build.
file(TOUCH ${OUTPUT})
