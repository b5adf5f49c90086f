# zyn_folder(<name> <folder>... LINK <target>...): a static library zyn_<name> of all sources in the folders, which may
# include what its LINK targets hold. Tests link these libraries and so reach every class.
function(zyn_folder name)
  cmake_parse_arguments(ROOM "" "" "LINK" ${ARGN})
  set(sources)
  foreach(folder IN LISTS ROOM_UNPARSED_ARGUMENTS)
    file(GLOB found CONFIGURE_DEPENDS ${folder}/*.cpp ${folder}/*.h)
    list(FILTER found EXCLUDE REGEX "/Module\\.cpp$")
    list(APPEND sources ${found})
  endforeach()
  add_library(zyn_${name} STATIC ${sources})
  set_target_properties(zyn_${name} PROPERTIES AUTOMOC ON LINKER_LANGUAGE CXX)
  target_include_directories(zyn_${name} PUBLIC ${CMAKE_SOURCE_DIR}/include ${CMAKE_SOURCE_DIR})
  target_link_libraries(zyn_${name} PUBLIC ${ROOM_LINK} PRIVATE zyn_options)
endfunction()

# zyn_room: the same for a part of the display library.
function(zyn_room name)
  zyn_folder(${name} ${ARGN})
  set_property(GLOBAL APPEND PROPERTY ZYN_ROOMS zyn_${name})
endfunction()
