#version 120
// Samples of 10 and 12 bits from a stream of bytes: one fragment for each sample.

uniform sampler2D source;
uniform vec4 sourceSize;  // bytes of a row, rows, and their reciprocals
uniform vec4 outputSize;  // samples of a row, rows, and their reciprocals
uniform int method;

varying vec2 centerOut;  // where the fragment lies, 0 to 1
varying vec2 center;     // the same in samples and rows

void main() {
  gl_Position = gl_ModelViewProjectionMatrix * gl_Vertex;
  centerOut = gl_MultiTexCoord0.xy;
  center = centerOut * outputSize.xy;
  center.x = floor(center.x);
}
