// The copying program: a texture goes into a target, turned, scaled and spread where asked for. Both of the
// pair declare the same uniforms.
uniform sampler2D source;
uniform int flipVert;     // 1 turns the picture upside down
uniform float colorCoef;  // 1.0, and what is not above 0.0: no scaling
uniform float colorHigh;  // ceiling; outside 0.0 to 1.0: 1.0
uniform int colorMono;    // 1 spreads red

varying vec2 center;

void main() {
  gl_Position = gl_ModelViewProjectionMatrix * gl_Vertex;
  center.x = gl_MultiTexCoord0.x;
  center.y = flipVert == 1 ? 1.0 - gl_MultiTexCoord0.y : gl_MultiTexCoord0.y;
}
