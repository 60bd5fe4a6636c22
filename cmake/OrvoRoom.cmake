# One static library a room. Link lines say which arrows exist; a wrong include is a build error
# wherever the room does not link what it includes.
set(ORVO_BUNDLE ${CMAKE_BINARY_DIR}/Orvo.app)

function(orvo_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion $<$<BOOL:${ORVO_WERROR}>:-Werror>
                         $<$<COMPILE_LANGUAGE:CXX,OBJCXX>:-Wnon-virtual-dtor -Woverloaded-virtual>)
endfunction()

# orvo_room(<name> [LINK <targets>...]): takes every source of the calling folder.
function(orvo_room name)
  cmake_parse_arguments(ROOM "" "" "LINK" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/*.h ${CMAKE_CURRENT_SOURCE_DIR}/*.mm)
  if(NOT sources)
    add_library(orvo_${name} INTERFACE)
    return()
  endif()
  add_library(orvo_${name} STATIC ${sources})
  set_target_properties(orvo_${name} PROPERTIES LINKER_LANGUAGE CXX)
  target_include_directories(orvo_${name} PUBLIC ${CMAKE_SOURCE_DIR}/src)
  target_link_libraries(orvo_${name} PUBLIC ${ROOM_LINK})
  orvo_warnings(orvo_${name})
endfunction()

# orvo_test(<name> [LINK <targets>...]): one GoogleTest program of every *Test.cpp of the calling folder.
function(orvo_test name)
  cmake_parse_arguments(TEST "" "" "LINK;LABELS" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/*.c)
  add_executable(${name}_test ${sources})
  target_link_libraries(${name}_test PRIVATE ${TEST_LINK} GTest::gtest GTest::gmock GTest::gtest_main)
  target_include_directories(${name}_test PRIVATE ${CMAKE_SOURCE_DIR}/src ${CMAKE_SOURCE_DIR}/tests)
  orvo_warnings(${name}_test)
  add_test(NAME ${name} COMMAND ${name}_test)
  set_tests_properties(${name} PROPERTIES TIMEOUT 300 LABELS "${TEST_LABELS}")
endfunction()
