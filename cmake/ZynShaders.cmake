# The shader texts of gl/shaders, embedded under their file names: ShaderTexts.inc holds one row for each.
set(shaders
  image.v.glsl image.f.glsl
  bayer.mmhc.v.glsl bayer.mmhc.f.glsl
  corr.color.v.glsl corr.color.f.glsl
  unpack.u3v.v.glsl unpack.u3v.f.glsl
  coloration.v.glsl coloration.f.glsl)

set(rows "")
foreach(shader IN LISTS shaders)
  set(path ${CMAKE_SOURCE_DIR}/gl/shaders/${shader})
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${path})
  file(READ ${path} text)
  string(APPEND rows "{\"${shader}\", R\"glsl(${text})glsl\"},\n")
endforeach()
# Written only when it changes, so that nothing is compiled again for the same texts.
file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/gl/ShaderTexts.inc CONTENT "${rows}" @ONLY)
