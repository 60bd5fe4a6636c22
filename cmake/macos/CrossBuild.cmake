# What a cross build needs besides its toolchain: linker stubs, and of the libraries those that are
# headers alone. The window's files are only compiled, against Debian's headers of Qt.
set(ORVO_WINDOW OFF)

set(stubs ${CMAKE_BINARY_DIR}/stubs)
file(GLOB_RECURSE declarations CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/declarations/*.h)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${declarations} ${CMAKE_CURRENT_LIST_DIR}/make-stubs.py)
execute_process(COMMAND python3 ${CMAKE_CURRENT_LIST_DIR}/make-stubs.py ${CMAKE_CURRENT_LIST_DIR}/declarations ${stubs}
                COMMAND_ERROR_IS_FATAL ANY)
add_link_options(-F${stubs} -L${stubs} -lobjc)

file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/headers ${CMAKE_BINARY_DIR}/packages)
file(CREATE_LINK /usr/include/nlohmann ${CMAKE_BINARY_DIR}/headers/nlohmann SYMBOLIC)
file(WRITE ${CMAKE_BINARY_DIR}/packages/nlohmann_json-config.cmake
     "if(NOT TARGET nlohmann_json::nlohmann_json)
  add_library(nlohmann_json::nlohmann_json INTERFACE IMPORTED)
  target_include_directories(nlohmann_json::nlohmann_json INTERFACE ${CMAKE_BINARY_DIR}/headers)
endif()\n")
set(nlohmann_json_DIR ${CMAKE_BINARY_DIR}/packages)

# Compiles what the settings module consists of on macOS.
function(orvo_window_check)
  set(qt /usr/include/x86_64-linux-gnu/qt6)
  file(GLOB version RELATIVE ${qt}/QtCore ${qt}/QtCore/6.*)
  file(GLOB files CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/src/ui/settings/*.cpp
       ${CMAKE_SOURCE_DIR}/src/platform/macos/window/*.cpp ${CMAKE_SOURCE_DIR}/src/platform/macos/window/*.mm)
  file(GLOB headers CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/src/ui/settings/*.h)
  set(includes ${qt})
  foreach(module Core Gui Network OpenGL Qml QmlModels QmlIntegration Quick Svg)
    list(APPEND includes ${qt}/Qt${module} ${qt}/Qt${module}/${version} ${qt}/Qt${module}/${version}/Qt${module})
  endforeach()
  foreach(header ${headers})
    file(STRINGS ${header} marked REGEX "Q_OBJECT|Q_GADGET")
    get_filename_component(name ${header} NAME_WE)
    if(marked)
      set(moc ${CMAKE_BINARY_DIR}/moc/moc_${name}.cpp)
      add_custom_command(OUTPUT ${moc} DEPENDS ${header}
                         COMMAND /usr/lib/qt6/libexec/moc -DQ_OS_MACOS -I${CMAKE_SOURCE_DIR}/src ${header} -o ${moc})
      list(APPEND files ${moc})
    endif()
  endforeach()
  add_library(orvo_window_check OBJECT ${files})
  # Most of the time goes into Qt's headers, which one file reads once.
  set_target_properties(orvo_window_check PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 0)
  target_include_directories(orvo_window_check PRIVATE ${CMAKE_SOURCE_DIR}/src)
  target_include_directories(orvo_window_check SYSTEM PRIVATE ${includes} ${CMAKE_BINARY_DIR}/headers)
  orvo_warnings(orvo_window_check)
endfunction()
