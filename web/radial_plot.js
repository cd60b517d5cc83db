// P(r) as a plot (uPlot): ticks and labelled axes with units, radial nodes dashed, the most
// probable radius solid, the region inside the boundary surface's radius shaded.
import uPlot from './vendor/uPlot.esm.js';

let plot = null;

/** Draws P(r) (per Bohr radius) at `radii` into `host`; marks: {nodes, mostProbable, inside}. */
export function plotRadial(host, radii, p, marks) {
  const width = Math.max(220, Math.min(host.clientWidth || 280, 420));
  const inside = marks.inside ?? 0;
  const drawMarks = (u) => {
    const ctx = u.ctx;
    const { left, top, width: w, height: h } = u.bbox;
    ctx.save();
    // The region inside the surface's radius, shaded under the curve.
    if (inside > 0) {
      ctx.fillStyle = 'rgba(86, 180, 233, 0.28)';
      ctx.beginPath();
      ctx.moveTo(u.valToPos(0, 'x', true), u.valToPos(0, 'y', true));
      for (let i = 0; i < radii.length && radii[i] <= inside; i++) {
        ctx.lineTo(u.valToPos(radii[i], 'x', true), u.valToPos(p[i], 'y', true));
      }
      ctx.lineTo(u.valToPos(Math.min(inside, radii[radii.length - 1]), 'x', true), u.valToPos(0, 'y', true));
      ctx.fill();
    }
    const line = (r, colour, dash) => {
      const x = u.valToPos(r, 'x', true);
      if (x < left || x > left + w) return;
      ctx.strokeStyle = colour;
      ctx.setLineDash(dash);
      ctx.lineWidth = 1.5 * devicePixelRatio;
      ctx.beginPath();
      ctx.moveTo(x, top);
      ctx.lineTo(x, top + h);
      ctx.stroke();
    };
    for (const r of marks.nodes || []) line(r, '#cc79a7', [4 * devicePixelRatio, 3 * devicePixelRatio]);
    if (marks.mostProbable) line(marks.mostProbable, '#e69f00', []);
    ctx.restore();
  };
  const options = {
    width, height: 170,
    legend: { show: false },
    cursor: { show: false },
    scales: { x: { time: false }, y: { range: (u, lo, hi) => [0, hi * 1.05 || 1] } },
    axes: [
      { label: 'r (Bohr radii a₀)', stroke: '#c7cdda', grid: { stroke: '#2e3340' }, ticks: { stroke: '#555' }, size: 36, labelSize: 18 },
      // As wide as its longest tick label, so "0.004" does not run into the axis's name.
      { label: 'P(r) (per a₀)', stroke: '#c7cdda', grid: { stroke: '#2e3340' }, ticks: { stroke: '#555' },
        size: (u, values) => Math.max(44, 18 + 7 * Math.max(0, ...(values || []).map((v) => String(v).length))), labelSize: 18 },
    ],
    series: [{}, { stroke: '#56b4e9', width: 2 }],
    hooks: { draw: [drawMarks] },
  };
  if (plot) plot.destroy();
  host.textContent = '';
  plot = new uPlot(options, [radii, p], host);
  return plot;
}
