// The shader texts, embedded from gl/shaders.
#pragma once

// The text of the shader of that name, such as "image.v.glsl", case counts; null for an unknown or null name.
// Any thread.
const char* FindShaderSource(const char* name);
