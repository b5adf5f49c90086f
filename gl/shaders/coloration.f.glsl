#version 120
// Exposure coloration: the picture, with marker colours where the camera's samples are too dark or too
// bright.

uniform sampler2D colored;  // the picture
uniform sampler2D source;   // the camera's samples, with the first line at the other end
uniform int sourceMono;     // 1: the samples are in red alone
uniform float colorCoef;    // on the samples; 0 or below: none
uniform float colorHigh;    // the largest value of a channel
uniform vec3 clrLo;
uniform vec3 clrHi;
uniform vec2 thresholds;    // below the first is too dark, above the second too bright

varying vec2 center;

void main() {
  vec3 rgb = texture2D(source, vec2(center.x, 1.0 - center.y)).rgb;
  float colorHi = (colorHigh < 0.0 || colorHigh > 1.0) ? 1.0 : colorHigh;
  if (colorCoef > 0.0 && colorCoef != 1.0) rgb *= colorCoef;

  float val = (sourceMono == 1) ? rgb.r : rgb.r + rgb.g + rgb.b;
  if (val < thresholds[0]) {
    rgb = clrLo;
  } else if (val > thresholds[1]) {
    rgb = clrHi;
  } else {
    rgb = texture2D(colored, center).rgb;
  }
  gl_FragColor.rgb = clamp(rgb, 0.0, colorHi);
}
