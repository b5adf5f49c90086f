// Demosaicing: where a fragment's site and the columns and rows of its 5x5 neighbourhood lie.

uniform sampler2D source;
uniform vec4 sourceSize;  // width, height, and their reciprocals
uniform vec2 firstRed;    // the red site of the cell of 2x2
uniform int flipVert;     // 1: the picture is turned upside down
uniform float colorCoef;
uniform float colorHigh;
uniform int debug;

varying vec4 center;  // xy: the site, 0 to 1; zw: the site in pixels, counted so that red is at even places
varying vec4 xCoord;  // the columns at -2, -1, 1, 2
varying vec4 yCoord;  // the rows at -2, -1, 1, 2

const vec4 STEPS = vec4(-2.0, -1.0, 1.0, 2.0);

void main() {
  gl_Position = gl_ModelViewProjectionMatrix * gl_Vertex;

  vec2 place = gl_MultiTexCoord0.xy;
  if (flipVert == 1) place.y = 1.0 - place.y;

  // A quarter of a pixel behind the middle of the site: far from both edges, whichever way it is rounded.
  place += sourceSize.zw / 4.0;
  center.xy = place;
  center.zw = place * sourceSize.xy + firstRed;
  xCoord = place.x + STEPS * sourceSize.z;
  yCoord = place.y + STEPS * sourceSize.w;
}
