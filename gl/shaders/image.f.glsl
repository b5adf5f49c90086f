// The copying program: a texture goes into a target, turned, scaled and spread where asked for. Both of the
// pair declare the same uniforms.
uniform sampler2D source;
uniform int flipVert;     // 1 turns the picture upside down
uniform float colorCoef;  // 1.0, and what is not above 0.0: no scaling
uniform float colorHigh;  // ceiling; outside 0.0 to 1.0: 1.0
uniform int colorMono;    // 1 spreads red

varying vec2 center;

// Alpha is not written.

void main() {
  vec3 rgb = texture2D(source, center).rgb;
  float colorHi = colorHigh < 0.0 || colorHigh > 1.0 ? 1.0 : colorHigh;
  if (colorCoef > 0.0 && colorCoef != 1.0) {
    rgb *= colorCoef;
  }
  rgb.r = clamp(rgb.r, 0.0, colorHi);
  if (colorMono == 1) {
    rgb.g = rgb.r;
    rgb.b = rgb.r;
  } else {
    rgb.g = clamp(rgb.g, 0.0, colorHi);
    rgb.b = clamp(rgb.b, 0.0, colorHi);
  }
  gl_FragColor.rgb = rgb;
}
