# The shared library: all rooms, the load and unload hook, and the list of what it exports.
get_property(rooms GLOBAL PROPERTY ZYN_ROOMS)

# What the library shows is exactly what the public headers declare as exported.
set(export_list ${CMAKE_BINARY_DIR}/ZynDisplayQt.map)
configure_file(${CMAKE_SOURCE_DIR}/cmake/ZynDisplayQt.map.in ${export_list} COPYONLY)

add_library(ZynDisplayQt SHARED QTD/display/Module.cpp)
add_library(ZynDisplayQt::ZynDisplayQt ALIAS ZynDisplayQt)
set_target_properties(ZynDisplayQt PROPERTIES
  VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR} LINK_DEPENDS ${export_list} INSTALL_RPATH "$ORIGIN")
target_include_directories(ZynDisplayQt INTERFACE
  $<BUILD_INTERFACE:${CMAKE_SOURCE_DIR}/include> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/ZynDisplayQt>)
# Every object of every room goes in, whether something refers to it or not.
foreach(room IN LISTS rooms)
  target_sources(ZynDisplayQt PRIVATE $<TARGET_OBJECTS:${room}>)
endforeach()
target_include_directories(ZynDisplayQt PRIVATE ${CMAKE_SOURCE_DIR})
target_link_libraries(ZynDisplayQt PRIVATE
  Zyn::Qt Zyn::Log4cpp Zyn::OpenCV Zyn::Highway Zyn::OpenMP OpenGL::GL
  Threads::Threads ZynDemosaicing)
target_link_libraries(ZynDisplayQt PRIVATE zyn_options PUBLIC Qt${ZYN_QT}::Core)
target_link_options(ZynDisplayQt PRIVATE LINKER:--version-script=${export_list})
if(NOT ZYN_SANITIZE)
  # A sanitizer's own symbols are found in the program.
  target_link_options(ZynDisplayQt PRIVATE LINKER:--no-undefined)
endif()
