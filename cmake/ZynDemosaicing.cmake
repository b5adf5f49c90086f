# The shared interpolation library, which the display library calls and hosts may call alone.
set(demosaicing_exports ${CMAKE_SOURCE_DIR}/cmake/ZynDemosaicing.map)
add_library(ZynDemosaicing SHARED $<TARGET_OBJECTS:zyn_demosaicing>)
add_library(ZynDisplayQt::ZynDemosaicing ALIAS ZynDemosaicing)
set_target_properties(ZynDemosaicing PROPERTIES LINKER_LANGUAGE CXX
  VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR} LINK_DEPENDS ${demosaicing_exports})
target_include_directories(ZynDemosaicing INTERFACE
  $<BUILD_INTERFACE:${CMAKE_SOURCE_DIR}/include> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/ZynDisplayQt>)
target_link_libraries(ZynDemosaicing PRIVATE Zyn::Highway Zyn::OpenMP zyn_options)
target_link_options(ZynDemosaicing PRIVATE LINKER:--version-script=${demosaicing_exports})
if(NOT ZYN_SANITIZE)
  target_link_options(ZynDemosaicing PRIVATE LINKER:--no-undefined)
endif()
