import { GLSL3, type IUniform, RawShaderMaterial } from 'three';

/**
 * A material of two shaders. All is drawn from the back to the front in a fixed
 * order and partly see-through, so nothing needs the depth.
 */
export function makeMaterial(
  vertexShader: string,
  fragmentShader: string,
  uniforms: Record<string, IUniform>,
): RawShaderMaterial {
  return new RawShaderMaterial({
    vertexShader: HEAD + vertexShader,
    fragmentShader: HEAD + fragmentShader,
    uniforms,
    glslVersion: GLSL3,
    transparent: true,
    depthTest: false,
    depthWrite: false,
    side: 2,
  });
}

const HEAD = 'precision highp float;\nprecision highp int;\n';
