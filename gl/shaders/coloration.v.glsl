#version 120
// Exposure coloration: where a fragment reads the picture.

uniform sampler2D colored;
uniform sampler2D source;
uniform int sourceMono;
uniform float colorCoef;
uniform float colorHigh;
uniform vec3 clrLo;
uniform vec3 clrHi;
uniform vec2 thresholds;

varying vec2 center;

void main() {
  gl_Position = gl_ModelViewProjectionMatrix * gl_Vertex;
  center = gl_MultiTexCoord0.xy;
}
