# Finds what the library calls, and gives each an imported target Zyn::<Name>.
set(ZYN_QT 5 CACHE STRING "Qt's major version: 5 (5.15) or 6 (6.4)")
if(ZYN_QT EQUAL 6)
  find_package(Qt6 6.4 REQUIRED COMPONENTS Core Gui Widgets OpenGL)
  add_library(Zyn::Qt INTERFACE IMPORTED)
  set_property(TARGET Zyn::Qt PROPERTY INTERFACE_LINK_LIBRARIES Qt6::Widgets Qt6::OpenGL)
else()
  find_package(Qt5 5.15 REQUIRED COMPONENTS Core Gui Widgets)
  add_library(Zyn::Qt INTERFACE IMPORTED)
  set_property(TARGET Zyn::Qt PROPERTY INTERFACE_LINK_LIBRARIES Qt5::Widgets)
endif()
find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
find_package(OpenGL REQUIRED)

# log4cpp has a .pc file only.
pkg_check_modules(LOG4CPP REQUIRED IMPORTED_TARGET log4cpp)
add_library(Zyn::Log4cpp ALIAS PkgConfig::LOG4CPP)

pkg_check_modules(HWY REQUIRED IMPORTED_TARGET libhwy)
add_library(Zyn::Highway ALIAS PkgConfig::HWY)

# The small OpenCV packages come without OpenCVConfig.cmake.
find_path(ZYN_OPENCV_INCLUDE opencv2/core.hpp PATH_SUFFIXES opencv4 REQUIRED)
find_library(ZYN_OPENCV_CORE opencv_core REQUIRED)
find_library(ZYN_OPENCV_IMGPROC opencv_imgproc REQUIRED)
add_library(zyn_opencv INTERFACE)
add_library(Zyn::OpenCV ALIAS zyn_opencv)
target_include_directories(zyn_opencv SYSTEM INTERFACE ${ZYN_OPENCV_INCLUDE})
target_link_libraries(zyn_opencv INTERFACE ${ZYN_OPENCV_IMGPROC} ${ZYN_OPENCV_CORE})

add_library(zyn_openmp INTERFACE)
add_library(Zyn::OpenMP ALIAS zyn_openmp)
if(ZYN_OPENMP)
  find_package(OpenMP REQUIRED)
  target_link_libraries(zyn_openmp INTERFACE OpenMP::OpenMP_CXX)
else()
  target_compile_options(zyn_openmp INTERFACE -Wno-unknown-pragmas)
endif()
