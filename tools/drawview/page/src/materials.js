// The shaders of everything that is drawn. With CLIP defined they cut at the clipping plane, which is
// given in the coordinates of the view: fragments with dot(clip.xyz, p) > clip.w are left out.
// Without CLIP nothing is discarded, so that hidden fragments are dropped before they are shaded.

import { Color, DoubleSide, NoBlending, ShaderMaterial, Vector2, Vector4 } from 'three';

/** Uniforms that all materials of the page share. */
export const shared = {
  clip: { value: new Vector4(0, 0, 0, 1) },
  viewport: { value: new Vector2(1, 1) },
  pixelRatio: { value: 1 },
  /** Depth of the scene's centre, and the scene's radius: far points are a little darker. */
  depth: { value: new Vector2(0, 1) },
};

const clipVertex = /* glsl */ `varying vec3 vPlace;`;
const clipFragment = /* glsl */ `
  uniform vec4 clip;
  varying vec3 vPlace;
  void cut() {
    #ifdef CLIP
      if (dot(clip.xyz, vPlace) > clip.w) discard;
    #endif
  }`;

/** Switches the clipping plane of a material on or off. */
export function setCut(material, on) {
  if (Boolean(material.defines.CLIP) === on) return;
  if (on) material.defines.CLIP = 1;
  else delete material.defines.CLIP;
  material.needsUpdate = true;
}

const surfaceVertex = /* glsl */ `
  ${clipVertex}
  varying vec3 vNormal;
  void main() {
    vec4 place = modelViewMatrix * vec4(position, 1.0);
    vPlace = place.xyz;
    #ifdef SMOOTH
      vNormal = mat3(modelViewMatrix) * normal;
    #endif
    gl_Position = projectionMatrix * place;
  }`;

// A key light over the left shoulder, a weak one from the right, and the sky; all turn with the eye.
const surfaceFragment = /* glsl */ `
  uniform vec3 color;
  uniform vec3 backColor;
  uniform float opacity;
  uniform float parallel;
  ${clipFragment}
  varying vec3 vNormal;
  void main() {
    cut();
    vec3 eye = parallel > 0.5 ? vec3(0.0, 0.0, 1.0) : normalize(-vPlace);
    #ifdef SMOOTH
      vec3 n = normalize(vNormal);
      bool front = gl_FrontFacing;
      if (dot(n, eye) < 0.0 && !front) n = -n;
      else if (dot(n, eye) < -0.2) n = -n;
    #else
      vec3 n = normalize(cross(dFdx(vPlace), dFdy(vPlace)));
      bool front = gl_FrontFacing;
    #endif
    vec3 base = front ? color : backColor;
    float key = max(dot(n, vec3(-0.38, 0.56, 0.735)), 0.0);
    float fill = max(dot(n, vec3(0.72, 0.1, 0.69)), 0.0);
    float sky = 0.5 + 0.5 * n.y;
    float facing = max(dot(n, eye), 0.0);
    float rim = (1.0 - facing) * (1.0 - facing);
    vec3 halfway = normalize(vec3(-0.38, 0.56, 0.735) + eye);
    float shine = pow(max(dot(n, halfway), 0.0), 40.0);
    vec3 light = vec3(0.60, 0.59, 0.57) * key + vec3(0.22, 0.23, 0.26) * fill
      + mix(vec3(0.29, 0.28, 0.29), vec3(0.40, 0.42, 0.45), sky);
    vec3 shade = base * light * (1.0 - 0.30 * rim) + vec3(0.16) * shine;
    gl_FragColor = vec4(shade, opacity);
  }`;

/** Shades triangles; `smooth` when they have normals, else each triangle is flat. */
export function surfaceMaterial(smooth) {
  return new ShaderMaterial({
    vertexShader: surfaceVertex,
    fragmentShader: surfaceFragment,
    defines: smooth ? { SMOOTH: 1 } : {},
    side: DoubleSide,
    polygonOffset: true,
    polygonOffsetFactor: 1.5,
    polygonOffsetUnits: 2,
    uniforms: {
      clip: shared.clip,
      color: { value: new Color() },
      backColor: { value: new Color() },
      opacity: { value: 1 },
      parallel: { value: 0 },
    },
  });
}

const pointVertex = /* glsl */ `
  uniform float size;
  uniform float pixelRatio;
  uniform vec2 depth;
  varying float vLight;
  ${clipVertex}
  void main() {
    vec4 place = modelViewMatrix * vec4(position, 1.0);
    vPlace = place.xyz;
    gl_Position = projectionMatrix * place;
    gl_Position.z -= 1e-4 * gl_Position.w;
    gl_PointSize = size * pixelRatio;
    vLight = mix(1.12, 0.68, clamp(0.5 - 0.5 * (place.z + depth.x) / depth.y, 0.0, 1.0));
  }`;

const pointFragment = /* glsl */ `
  uniform vec3 color;
  uniform float size;
  varying float vLight;
  ${clipFragment}
  void main() {
    cut();
    #ifdef ROUND
      vec2 p = 2.0 * gl_PointCoord - 1.0;
      float r = dot(p, p);
      if (r > 1.0) discard;
      gl_FragColor = vec4(vLight * (size > 4.5 ? color * mix(1.12, 0.68, r * r) : color), 1.0);
    #else
      gl_FragColor = vec4(vLight * color, 1.0);
    #endif
  }`;

/** Sets the size of points in pixels: round ones, but for the smallest. */
export function setPointSize(material, size) {
  material.uniforms.size.value = size;
  const round = size > 2.5;
  if (Boolean(material.defines.ROUND) === round) return;
  if (round) material.defines.ROUND = 1;
  else delete material.defines.ROUND;
  material.needsUpdate = true;
}

export function pointMaterial() {
  return new ShaderMaterial({
    vertexShader: pointVertex,
    fragmentShader: pointFragment,
    defines: { ROUND: 1 },
    uniforms: {
      clip: shared.clip,
      pixelRatio: shared.pixelRatio,
      depth: shared.depth,
      color: { value: new Color() },
      size: { value: 5 },
    },
  });
}

// A segment becomes a rectangle of `size` pixels across; what lies before the near plane is cut off.
const wideVertex = /* glsl */ `
  attribute vec3 start;
  attribute vec3 end;
  uniform float size;
  uniform vec2 viewport;
  uniform float lift;
  ${clipVertex}
  void main() {
    vec4 a = modelViewMatrix * vec4(start, 1.0);
    vec4 b = modelViewMatrix * vec4(end, 1.0);
    if (projectionMatrix[2][3] != 0.0) {
      float near = projectionMatrix[3][2] / (projectionMatrix[2][2] - 1.0) * -1.001;
      if (a.z > near && b.z < near) a = mix(a, b, (a.z - near) / (a.z - b.z));
      else if (b.z > near && a.z < near) b = mix(b, a, (b.z - near) / (b.z - a.z));
    }
    vec4 ca = projectionMatrix * a;
    vec4 cb = projectionMatrix * b;
    vec2 along = (cb.xy / cb.w - ca.xy / ca.w) * viewport;
    float size2 = dot(along, along);
    along = size2 > 1e-12 ? along * inversesqrt(size2) : vec2(1.0, 0.0);
    vec2 side = vec2(-along.y, along.x) * position.y + along * (position.x * 2.0 - 1.0) * 0.35;
    vec4 at = position.x < 0.5 ? ca : cb;
    vPlace = position.x < 0.5 ? a.xyz : b.xyz;
    at.xy += side * (size / viewport) * at.w;
    at.z -= lift * at.w;
    gl_Position = at;
  }`;

const plainVertex = /* glsl */ `
  uniform float lift;
  ${clipVertex}
  void main() {
    vec4 place = modelViewMatrix * vec4(position, 1.0);
    vPlace = place.xyz;
    gl_Position = projectionMatrix * place;
    gl_Position.z -= lift * gl_Position.w;
  }`;

const lineFragment = /* glsl */ `
  uniform vec3 color;
  uniform float opacity;
  ${clipFragment}
  void main() {
    cut();
    gl_FragColor = vec4(color, opacity);
  }`;

/** Lines: as wide rectangles (instances of a unit segment) or as lines of one pixel. */
export function lineMaterial(wide) {
  return new ShaderMaterial({
    vertexShader: wide ? wideVertex : plainVertex,
    fragmentShader: lineFragment,
    defines: {},
    side: DoubleSide,
    transparent: true,
    uniforms: {
      clip: shared.clip,
      viewport: shared.viewport,
      color: { value: new Color() },
      opacity: { value: 1 },
      size: { value: 1.5 },
      lift: { value: 2e-5 },
    },
  });
}

const gridVertex = /* glsl */ `
  ${clipVertex}
  varying vec2 vGround;
  uniform float extent;
  void main() {
    vGround = position.xy * extent;
    vec4 place = modelViewMatrix * vec4(vGround, 0.0, 1.0);
    vPlace = place.xyz;
    gl_Position = projectionMatrix * place;
  }`;

const gridFragment = /* glsl */ `
  uniform vec3 color;
  uniform vec3 axisX;
  uniform vec3 axisY;
  uniform float cell;
  uniform float extent;
  uniform vec2 axes;
  ${clipFragment}
  varying vec2 vGround;
  float lines(vec2 p, float width) {
    vec2 slope = fwidth(p);
    vec2 near = abs(fract(p - 0.5) - 0.5) / max(slope, vec2(1e-9));
    vec2 strength = (1.0 - smoothstep(width - 0.5, width + 0.5, near)) * (1.0 - smoothstep(0.15, 0.5, slope));
    return max(strength.x, strength.y);
  }
  float axis(float p) { return 1.0 - smoothstep(0.3, 1.2, abs(p) / max(fwidth(p), 1e-9)); }
  void main() {
    vec2 p = vGround / cell;
    float fade = 1.0 - smoothstep(0.12, 0.95, length(vGround) / extent);
    float strength = max(0.13 * lines(p, 0.5), 0.30 * lines(p / 10.0, 0.5));
    vec4 ink = vec4(color, strength);
    float x = axis(vGround.y - axes.y);
    float y = axis(vGround.x - axes.x);
    ink = mix(ink, vec4(axisX, 0.6), x);
    ink = mix(ink, vec4(axisY, 0.6), y);
    ink.a *= fade;
    if (ink.a < 0.004) discard;
    gl_FragColor = ink;
  }`;

const copyFragment = /* glsl */ `
  uniform sampler2D picture;
  varying vec2 vAt;
  void main() { gl_FragColor = texture2D(picture, vAt); }`;
const copyVertex = /* glsl */ `
  varying vec2 vAt;
  void main() {
    vAt = 0.5 * position.xy + 0.5;
    gl_Position = vec4(position.xy, 0.0, 1.0);
  }`;

/** Copies a texture to the whole target. */
export function copyMaterial(texture) {
  return new ShaderMaterial({
    vertexShader: copyVertex,
    fragmentShader: copyFragment,
    depthTest: false,
    depthWrite: false,
    blending: NoBlending,
    uniforms: { picture: { value: texture } },
  });
}

/** The ground grid: lines every `cell`, stronger ones every ten, and the axes. */
export function gridMaterial() {
  const colour = () => ({ value: new Color() });
  return new ShaderMaterial({
    vertexShader: gridVertex,
    fragmentShader: gridFragment,
    side: DoubleSide,
    transparent: true,
    depthWrite: false,
    uniforms: {
      clip: { value: new Vector4(0, 0, 0, 1) },
      color: colour(),
      axisX: colour(),
      axisY: colour(),
      cell: { value: 1 },
      extent: { value: 10 },
      axes: { value: new Vector2() },
    },
  });
}
