// Demosaicing: gradient-corrected linear interpolation on 5x5 (H. S. Malvar, L. He, R. Cutler, ICASSP 2004).
// All four kernels are evaluated at every site, and the site's class chooses among them. At the red and blue
// sites of two patterns an edge-directed green takes the kernel's place.
//
//     .    .   va.x   .    .      value (va) and temp (te): the neighbours in the column are x and y, those
//     .   D1   va.y  D3    .      in the row z and w
//   va.z va.w   C   te.w te.z
//     .   D2   te.y  D4    .
//     .    .   te.x   .    .

uniform sampler2D source;
uniform vec4 sourceSize;  // width, height, and their reciprocals
uniform vec2 firstRed;    // the red site of the cell of 2x2
uniform int flipVert;
uniform float colorCoef;  // brings samples to the full range; 0 or below: none
uniform float colorHigh;  // the largest value of a channel
uniform int debug;        // 1000 source, 1001 red, 1002 green, 1003 blue, 1004 intensity as grey;
                          // 1005 bayer (Truesense only)

varying vec4 center;
varying vec4 xCoord;
varying vec4 yCoord;

const float SCALE_OF_NEIGHBOURS = 1.001;  // above it the neighbours are scaled, too
const float THRESHOLD_D = 0.05;           // difference of two neighbours that makes an edge
const float THRESHOLD_A = 0.01;           // how clearly one direction must fit better than the other
const float NO_GREEN = -1.0;
const vec3 LUMA = vec3(0.30, 0.59, 0.11);

// The kernels, in eighths. Components: green at a red or blue site; red at blue and blue at red; at a green
// site the colour of its row and that of its column.
const vec4 KERNEL_C = vec4(4.0, 6.0, 5.0, 5.0) / 8.0;     // the site
const vec4 KERNEL_D = vec4(0.0, 2.0, -1.0, -1.0) / 8.0;   // its diagonal neighbours
const vec4 KERNEL_A = vec4(-1.0, -1.5, 0.5, -1.0) / 8.0;  // the column at distance 2
const vec4 KERNEL_E = vec4(-1.0, -1.5, -1.0, 0.5) / 8.0;  // the row at distance 2
const vec4 KERNEL_B = vec4(2.0, 0.0, 0.0, 4.0) / 8.0;     // the column at distance 1
const vec4 KERNEL_F = vec4(2.0, 0.0, 4.0, 0.0) / 8.0;     // the row at distance 1

float at(float x, float y) {
  return texture2D(source, vec2(x, y)).r;
}

float delta(float c, float a, float b) {
  return abs(a - c) + abs(b - c);
}

// Green from two neighbours of green at distance 1, corrected by the site's own colour at distance 2.
float estimate(float c, float near1, float near2, float far1, float far2) {
  return ((near1 + near2) + (2.0 * c - far1 - far2) / 2.0) / 2.0;
}

// Green along the edge that runs through the site; NO_GREEN where there is none.
float greenAlongEdge(float c, vec4 value, vec4 temp) {
  float dH = abs(value.y - temp.y);
  float dV = abs(value.w - temp.w);
  if (dH <= THRESHOLD_D && dV <= THRESHOLD_D) return NO_GREEN;

  float cH = estimate(c, value.w, temp.w, value.z, temp.z);
  float cV = estimate(c, value.y, temp.y, value.x, temp.x);
  if (dH <= THRESHOLD_D) return cV;
  if (dV < THRESHOLD_D) return cH;

  dH = delta(cH, value.w, temp.w) + delta(cV, value.w, temp.w);
  dV = delta(cH, value.y, temp.y) + delta(cV, value.y, temp.y);
  float e = dH - dV;
  if (e <= -THRESHOLD_A) return cH;
  if (e > THRESHOLD_A) return cV;
  return NO_GREEN;
}

void main() {
  float scale = (colorCoef > 0.0 && colorCoef != 1.0) ? colorCoef : 1.0;
  float colorHi = (colorHigh < 0.0 || colorHigh > 1.0) ? 1.0 : colorHigh;

  bool evenCol = mod(floor(center.z), 2.0) < 0.5;
  bool evenRow = mod(floor(center.w), 2.0) < 0.5;

  float c = at(center.x, center.y) * scale;
  vec4 d = vec4(at(xCoord.y, yCoord.y), at(xCoord.y, yCoord.z),  // D1 to D4
                at(xCoord.z, yCoord.y), at(xCoord.z, yCoord.z));
  vec4 value = vec4(at(center.x, yCoord.x), at(center.x, yCoord.y),
                    at(xCoord.x, center.y), at(xCoord.y, center.y));
  vec4 temp = vec4(at(center.x, yCoord.w), at(center.x, yCoord.z),
                   at(xCoord.w, center.y), at(xCoord.z, center.y));
  // A smaller factor scales the site alone. Kept.
  if (scale > SCALE_OF_NEIGHBOURS) {
    d *= scale;
    value *= scale;
    temp *= scale;
  }

  // On purpose this means other sites by the pattern: of GR and GB the red and blue ones, whose green is taken
  // below; of RG and BG the green ones, where it is not. Those two always get the plain kernel.
  bool color = (firstRed.x == firstRed.y) ? (evenCol != evenRow) : (evenCol == evenRow);
  float green = color ? greenAlongEdge(c, value, temp) : NO_GREEN;

  float diagonal = d.x + d.y + d.z + d.w;
  vec4 sums = value + temp;  // A, B, E, F
  vec4 p = KERNEL_C * c + KERNEL_D * diagonal + KERNEL_A * sums.x + KERNEL_B * sums.y + KERNEL_E * sums.z +
           KERNEL_F * sums.w;
  if (green < 0.0) green = p.x;

  vec3 rgb;
  if (evenRow) {
    rgb = evenCol ? vec3(c, green, p.y) : vec3(p.z, c, p.w);
  } else {
    rgb = evenCol ? vec3(p.w, c, p.z) : vec3(p.y, green, c);
  }
  rgb = clamp(rgb, 0.0, colorHi);

  if (debug >= 1000) {
    if (debug == 1000) {
      rgb = vec3(at(center.x, center.y));
    } else if (debug == 1001) {
      rgb = rgb.rrr;
    } else if (debug == 1002) {
      rgb = rgb.ggg;
    } else if (debug == 1003) {
      rgb = rgb.bbb;
    } else if (debug == 1004) {
      rgb = vec3(min(dot(rgb, LUMA), 1.0));
    }
  }
  gl_FragColor.rgb = rgb;
}
