#version 120
// Colour correction: where a fragment reads the picture.

uniform sampler2D source;
uniform int flipVert;  // 1: the picture is turned upside down
uniform float colorCoef;
uniform float colorHigh;
uniform int debugOutput;
uniform int debugMode;
uniform vec3 offs;
uniform vec3 gain;
uniform float gamma;

varying vec2 center;

void main() {
  gl_Position = gl_ModelViewProjectionMatrix * gl_Vertex;
  center.x = gl_MultiTexCoord0.x;
  center.y = (flipVert == 1) ? 1.0 - gl_MultiTexCoord0.y : gl_MultiTexCoord0.y;
}
