#version 120
// Colour correction: gain, offset and gamma on a scale of 0 to 1.

uniform sampler2D source;
uniform int flipVert;
uniform float colorCoef;  // on the texel, before all else; 0 or below: none
uniform float colorHigh;  // the largest value of a channel
uniform int debugOutput;  // 1001 red, 1002 green, 1003 blue, 1004 intensity as grey
uniform int debugMode;    // 1: automatic correction
uniform vec3 offs;
uniform vec3 gain;
uniform float gamma;

varying vec2 center;

// The automatic correction fades out towards white: whole where less than this is missing, none at white.
const float WHITE_SUM = 3.0;
const float WHOLE_FROM = 1.57;  // a quarter of a turn, where the sine is 1

const float GAMMA_STEP = 0.01;   // no closer to 1 does gamma act
const float GAMMA_BLACK = 0.004; // what it takes black for, where a power is not defined
const vec3 LUMA = vec3(0.30, 0.59, 0.11);

float power(float c) {
  return pow(c > 0.0 ? c : GAMMA_BLACK, gamma);
}

void main() {
  vec3 rgb = texture2D(source, center).rgb;
  float colorHi = (colorHigh < 0.0 || colorHigh > 1.0) ? 1.0 : colorHigh;
  if (colorCoef > 0.0 && colorCoef != 1.0) rgb *= colorCoef;

  if (debugMode == 1) {
    // It goes without gamma.
    float coef = WHITE_SUM - (rgb.r + rgb.g + rgb.b);
    if (coef > WHOLE_FROM) {
      rgb = offs + gain * rgb;
    } else {
      rgb += offs + (gain * rgb - rgb) * sin(coef);
    }
  } else {
    rgb = offs + gain * rgb;
    if (abs(gamma - 1.0) > GAMMA_STEP) rgb = vec3(power(rgb.r), power(rgb.g), power(rgb.b));
  }
  rgb = clamp(rgb, 0.0, colorHi);

  if (debugOutput >= 1000) {
    if (debugOutput == 1001) {
      rgb = rgb.rrr;
    } else if (debugOutput == 1002) {
      rgb = rgb.ggg;
    } else if (debugOutput == 1003) {
      rgb = rgb.bbb;
    } else if (debugOutput == 1004) {
      rgb = vec3(min(dot(rgb, LUMA), 1.0));
    }
  }
  gl_FragColor.rgb = rgb;
}
