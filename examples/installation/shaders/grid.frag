#version 330 core

/* The ground grid of the editor's views. */
in vec2 position;
out vec4 color;

void main() {
    vec2 line = abs(fract(position - 0.5) - 0.5) / fwidth(position);
    color = vec4(vec3(0.5), 1.0 - min(min(line.x, line.y), 1.0));
}
