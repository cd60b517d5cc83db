// Files a learner can take away: the picture (PNG), the dots (PLY: x, y, z in Bohr radii and
// the phase colour) and the boundary surface (GLB with vertex colours, and STL for printing;
// one unit is one Bohr radius).
// The exporters load when first asked for, so the first picture need not wait for them.
import { phaseColour } from './scene3d.js';

function save(name, data, type) {
  const a = document.createElement('a');
  a.download = name;
  a.href = URL.createObjectURL(new Blob([data], { type }));
  a.click();
  setTimeout(() => URL.revokeObjectURL(a.href), 10000);
}

/** A file-name stem for a state's text form. */
export const stem = (text) => `veltara-${text.replace(/[^A-Za-z0-9.+-]+/g, '_').slice(0, 60)}`;

export function downloadPng(canvas, name) {
  canvas.toBlob((blob) => save(`${name}.png`, blob, 'image/png'), 'image/png');
}

/** The dots as an ASCII PLY file, each with its phase colour. */
export function downloadPly(dots, palette, name) {
  const count = dots.xyz.length / 3;
  const lines = ['ply', 'format ascii 1.0', `comment Veltara dots of ${name}; lengths in Bohr radii`,
    `element vertex ${count}`, 'property float x', 'property float y', 'property float z',
    'property uchar red', 'property uchar green', 'property uchar blue', 'end_header'];
  for (let i = 0; i < count; i++) {
    const [r, g, b] = phaseColour(dots.phase[i], palette, dots.real).toArray().map((v) => Math.round(v * 255));
    lines.push(`${dots.xyz[3 * i]} ${dots.xyz[3 * i + 1]} ${dots.xyz[3 * i + 2]} ${r} ${g} ${b}`);
  }
  save(`${name}.ply`, `${lines.join('\n')}\n`, 'text/plain');
}

/** The boundary surface as binary glTF (GLB), vertex colours by phase. */
export async function downloadGlb(mesh, name) {
  const { GLTFExporter } = await import('./vendor/GLTFExporter.js');
  const glb = await new GLTFExporter().parseAsync(mesh, { binary: true });
  save(`${name}.glb`, glb, 'model/gltf-binary');
}

/** The boundary surface as binary STL. */
export async function downloadStl(mesh, name) {
  const { STLExporter } = await import('./vendor/STLExporter.js');
  save(`${name}.stl`, new STLExporter().parse(mesh, { binary: true }), 'model/stl');
}
