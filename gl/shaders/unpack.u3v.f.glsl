#extension GL_EXT_gpu_shader4 : enable
// Samples of 10 and 12 bits from a stream of bytes, low bits first. The source holds one byte in each texel,
// and a sample has bits in two neighbouring ones:
//
//   10 bits:  |00000000|11111100|22221111|33222222|33333333|     12 bits:  |00000000|11110000|11111111|
//   byte       0        1        2        3        4             byte       0        1        2

uniform sampler2D source;
uniform vec4 sourceSize;  // bytes of a row, rows, and their reciprocals
uniform vec4 outputSize;  // samples of a row, rows, and their reciprocals
uniform int method;       // 1: 12 bits, else 10

varying vec2 centerOut;
varying vec2 center;

const float MAX_BYTE = 255.0;
const float MAX_WORD = 65535.0;
// Well inside of the texel, so that no rounding leads to its neighbour in the longest row.
const float INSIDE_TEXEL = 0.1;

// The byte at a place of this fragment's row.
int byteAt(float x) {
  return int(floor(texture2D(source, vec2(x, centerOut.y)).r * MAX_BYTE));
}

void main() {
  // Interpolation gives the middle of the column.
  int column = int(floor(center.x));

  int start;   // of the two bytes
  ivec2 mask;  // the sample's bits in them
  int right;   // shift of the first
  int left;    // shift of the second
  int top;     // largest sample
  if (method == 1) {
    int group = column % 2;
    start = (column / 2) * 3 + group;
    top = 4095;
    if (group == 0) {
      mask = ivec2(0xFF, 0x0F); right = 0; left = 8;
    } else {
      mask = ivec2(0xF0, 0xFF); right = 4; left = 4;
    }
  } else {
    int group = column % 4;
    start = (column / 4) * 5 + group;
    top = 1023;
    if (group == 0) {
      mask = ivec2(0xFF, 0x03); right = 0; left = 8;
    } else if (group == 1) {
      mask = ivec2(0xFC, 0x0F); right = 2; left = 6;
    } else if (group == 2) {
      mask = ivec2(0xF0, 0x3F); right = 4; left = 4;
    } else {
      mask = ivec2(0xC0, 0xFF); right = 6; left = 2;
    }
  }

  float first = (float(start) + INSIDE_TEXEL) / sourceSize.x;
  float second = first + sourceSize.z;
  int low = (byteAt(first) & mask.x) >> right;
  int high = (byteAt(second) & mask.y) << left;
  int value = low | high;
  if (value < 0) value = 0;
  if (value > top) value = top;

  // The sample keeps its raw scale in the 16 bits of the target.
  gl_FragColor.rgb = vec3(clamp(float(value) / MAX_WORD, 0.0, 1.0));
}
