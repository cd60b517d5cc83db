// The engine's C interface in JavaScript, over the WebAssembly module built from it: records
// laid out as host/veltara.h lays them out on a 32-bit target, errors thrown with the engine's
// number. Loaded by the page's worker (importScripts) and by the tests in node (require).
'use strict';

// Offsets and widths of vt_RenderRequest (48 bytes); flags are 16-bit (-1 true, 0 false).
const REQUEST_FIELDS = [
  ['Theta', 0, 'f64'], ['Phi', 8, 'f64'], ['CameraPos', 16, 'i16'], ['ProjectionPlane', 18, 'i16'],
  ['TransectNo', 20, 'i16'], ['Transector', 22, 'flag'], ['TransectDir', 24, 'i32'],
  ['Size', 28, 'i32'], ['Mode', 32, 'i32'], ['VolQuality', 36, 'i16'], ['VolFinal', 38, 'flag'],
  ['ShowProbLevelOnDots', 40, 'flag'], ['ShowProbLevelOnTrans', 42, 'flag'],
  ['UseColouredTransector', 44, 'flag'], ['StereoFactor', 46, 'i16'],
];
const SETUP_FIELDS = [
  ['AtomRadius', 0, 'i16'], ['DotTarget', 2, 'i16'], ['DotThreshold', 4, 'u8'],
  ['OrbitalIndex', 6, 'i16'], ['OrbitalViewMode', 8, 'i32'],
];
const STATS_FIELDS = [
  ['FramesRendered', 0, 'i32'], ['TotalSamples', 1028, 'i32'], ['Mode', 1032, 'u8'],
  ['CalcTime', 1036, 'i32'], ['CalcRate', 1040, 'i32'], ['DotTarget', 1044, 'i32'],
  ['DotTotal', 1048, 'i32'], ['DotTime', 1052, 'i32'],
];
// vt_OrbInfo with a 4-byte Name pointer (32 bytes).
const INFO_FIELDS = [
  ['DefaultPDFAtomRadius', 4, 'i16'], ['DefaultDRPDFAtomRadius', 6, 'i16'],
  ['DefaultPDFDotThreshold', 8, 'i16'], ['DefaultDRPDFDotThreshold', 10, 'i16'], ['n', 12, 'i16'],
  ['l', 14, 'i16'], ['M', 16, 'i16'], ['OrbType', 20, 'i32'], ['PDFOptFactor', 24, 'i32'],
  ['DRPDFOptFactor', 28, 'i32'],
];
const MAIN_EDGE = 375;
const NANO_EDGE = 127;
const PICTURE_BYTES = MAIN_EDGE * MAIN_EDGE * 4;

class EngineError extends Error {
  constructor(number, message) {
    super(message);
    this.number = number;
  }
}

function VeltaraApi(M) {
  const view = () => new DataView(M.HEAPU8.buffer);
  const read = (base, fields) => {
    const v = view();
    const out = {};
    for (const [name, at, type] of fields) {
      const p = base + at;
      out[name] = type === 'f64' ? v.getFloat64(p, true) : type === 'i32' ? v.getInt32(p, true)
        : type === 'u8' ? v.getUint8(p) : type === 'flag' ? v.getInt16(p, true) !== 0
          : v.getInt16(p, true);
    }
    return out;
  };
  const write = (base, fields, values) => {
    const v = view();
    for (const [name, at, type] of fields) {
      const x = values[name];
      const p = base + at;
      if (type === 'f64') v.setFloat64(p, x, true);
      else if (type === 'i32') v.setInt32(p, x, true);
      else if (type === 'u8') v.setUint8(p, x);
      else if (type === 'flag') v.setInt16(p, x ? -1 : 0, true);
      else v.setInt16(p, x, true);
    }
  };
  // One scratch block for every record a call hands over or back.
  const scratch = M._malloc(4096);
  const picture = M._malloc(PICTURE_BYTES);
  const at = { request: scratch, dc: scratch + 64, setup: scratch + 80, i32: scratch + 96,
    i16: scratch + 104, variant: scratch + 112, facts: scratch + 128, engine: scratch + 192,
    stats: scratch + 256, catalogue: scratch + 1344, about: scratch + 2624 };
  const check = (rc) => {
    if (rc !== 0) throw new EngineError(rc, M.UTF8ToString(M._vt_error_text(rc)));
  };

  // A refused state says why in a sentence of its own (a parse error points at the character).
  const checkState = (rc) => {
    if (rc === 0) return;
    const sentence = M.UTF8ToString(M._vtw_last_message());
    throw new EngineError(rc, sentence || M.UTF8ToString(M._vt_error_text(rc)));
  };
  const withBuffer = (bytes, f) => {
    const b = M._malloc(Math.max(8, bytes));
    try {
      return f(b);
    } finally {
      M._free(b);
    }
  };
  const withText = (text, f) => {
    const bytes = new TextEncoder().encode(String(text));
    return withBuffer(bytes.length + 1, (b) => {
      M.HEAPU8.set(bytes, b);
      M.HEAPU8[b + bytes.length] = 0;
      return f(b);
    });
  };

  check(M._vt_create(at.engine));
  const engine = view().getInt32(at.engine, true);
  M._vtw_default_request(at.request);
  const defaults = read(at.request, REQUEST_FIELDS);

  const copyPicture = (edge) => ({
    width: edge, height: edge, bgra: M.HEAPU8.slice(picture, picture + edge * edge * 4),
  });

  return {
    EngineError,
    /** The request every picture starts from (the engine's defaults), as a fresh object. */
    defaultRequest: () => ({ ...defaults }),
    errorText: (n) => M.UTF8ToString(M._vt_error_text(n)),
    /** The clock reads `start` ms now and, if `runs`, goes on from there. */
    setClock: (start, runs = true) => M._vtw_set_clock(start, runs ? 1 : 0),
    catalogue() {
      // As many entries as the engine's catalogue has (asked first), 32 bytes each.
      check(M._vt_enum_orbitals_into(engine, 0, 0, at.i32));
      const count = view().getInt32(at.i32, true);
      const list = M._malloc(count * 32);
      try {
        check(M._vt_enum_orbitals_into(engine, list, count, at.i32));
        return Array.from({ length: count }, (_, index) => {
          const base = list + index * 32;
          return { index, Name: M.UTF8ToString(view().getUint32(base, true)),
            ...read(base, INFO_FIELDS) };
        });
      } finally {
        M._free(list);
      }
    },
    /** Adds an orbital (an OrbitalSetup record) and returns its handle. */
    add(setup) {
      write(at.setup, SETUP_FIELDS, setup);
      check(M._vt_add(engine, at.setup, at.i16));
      return view().getInt16(at.i16, true);
    },
    remove: (handle) => check(M._vt_delete(engine, handle)),
    /** One picture: width, height and B, G, R, A bytes, rows top first. */
    render(handle, request) {
      write(at.request, REQUEST_FIELDS, request);
      check(M._vt_get_render(engine, handle, at.request, at.dc));
      const main = request.Size === MAIN_EDGE;
      const hdc = view().getInt32(at.dc + (main ? 0 : 4), true);
      const edge = main ? MAIN_EDGE : NANO_EDGE;
      check(M._vt_surface_read(hdc, picture, edge * edge * 4));
      return copyPicture(edge);
    },
    /** The dot picture with dots coloured `positive` or `negative` (0xRRGGBB) by the sign of
     *  the wavefunction where they sit; the same colour twice needs no wavefunction. */
    renderPhase(handle, request, positive, negative, state = '') {
      write(at.request, REQUEST_FIELDS, request);
      withText(state, (s) => check(M._vtw_render_phase(engine, handle, at.request, positive,
        negative, s, picture, PICTURE_BYTES, at.i32)));
      return copyPicture(view().getInt32(at.i32, true));
    },
    /** Adds any state (its text form) at time t like add (the setup's OrbitalIndex is not
     *  read; AtomRadius 0 lets the engine choose); a catalogue orbital is added as itself. */
    addState(text, t, setup) {
      return withText(text, (s) => {
        const detail = (rc) => {
          if (rc) throw new EngineError(rc, M.UTF8ToString(M._vt_last_error_detail()) || M.UTF8ToString(M._vt_error_text(rc)));
        };
        detail(M._vt_parse_state(s, at.i32));
        const parsed = view().getUint32(at.i32, true);
        try {
          write(at.setup, SETUP_FIELDS, { ...setup, OrbitalIndex: 0 });
          detail(M._vt_add_state(engine, parsed, t, at.setup, at.i16));
          return view().getInt16(at.i16, true);
        } finally {
          M._vt_superposition_free(parsed);
        }
      });
    },
    refill(handle, threshold, target) {
      const v = view();
      v.setInt32(at.variant, 0, true); // a 16-bit index
      v.setInt16(at.variant + 8, handle, true);
      check(M._vt_refill_dot_matrix(engine, at.variant, threshold, target, at.i32));
    },
    stats(handle) {
      check(M._vt_get_stats(engine, handle, at.stats));
      const s = read(at.stats, STATS_FIELDS);
      s.ProbFreqs = Array.from(new Int32Array(M.HEAPU8.buffer, at.stats + 4, 256));
      return s;
    },
    setup(handle) {
      check(M._vt_get_setup(engine, handle, at.setup));
      return read(at.setup, SETUP_FIELDS);
    },
    /** The dot cloud: 8 bytes a dot (X, Y, Z 16-bit, P, a spare byte). */
    dots(handle) {
      check(M._vt_get_dots(engine, handle, 0, 0, at.i32));
      const count = view().getInt32(at.i32, true);
      const buffer = M._malloc(Math.max(8, count * 8));
      try {
        check(M._vt_get_dots(engine, handle, buffer, count, at.i32));
        return M.HEAPU8.slice(buffer, buffer + count * 8);
      } finally {
        M._free(buffer);
      }
    },
    /** n, l, m, nodes, energy (hartree), mean and most probable radius of a catalogue orbital
     *  (vt_OrbitalFacts, 40 bytes). */
    facts(orbital) {
      check(M._vt_orbital_facts(orbital, at.facts));
      const v = view();
      const f = at.facts;
      return { n: v.getInt16(f, true), l: v.getInt16(f + 2, true), m: v.getInt16(f + 4, true),
        radialNodes: v.getInt32(f + 8, true), angularNodes: v.getInt32(f + 12, true),
        energyHartree: v.getFloat64(f + 16, true), meanRadius: v.getFloat64(f + 24, true),
        mostProbableRadius: v.getFloat64(f + 32, true) };
    },
    /** P(r) of a catalogue orbital at each radius (Bohr radii). */
    radialDistribution(orbital, radii) {
      const buffer = M._malloc(radii.length * 16);
      try {
        new Float64Array(M.HEAPU8.buffer, buffer, radii.length).set(radii);
        check(M._vt_radial_distribution(orbital, buffer, radii.length,
          buffer + radii.length * 8));
        return Array.from(new Float64Array(M.HEAPU8.buffer, buffer + radii.length * 8,
          radii.length));
      } finally {
        M._free(buffer);
      }
    },
    /** Whether this engine reads any state (the text form, samples, surfaces). */
    statesKnown: typeof M._vtw_state_describe === 'function',
    /** The state written as `text`: its engine text form, terms, catalogue row and facts. */
    describe(text) {
      return withText(text, (t) => {
        checkState(M._vtw_state_describe(t, at.i32));
        return JSON.parse(M.UTF8ToString(view().getUint32(at.i32, true)));
      });
    },
    /** `count` exact samples at time t: xyz (Float32Array, Bohr radii), phase (radians), density. */
    sample(text, t, seed, count, weight) {
      return withText(text, (s) => withBuffer(count * 20, (b) => {
        checkState(M._vtw_state_sample(s, t, seed, count, weight, b, b + count * 12, b + count * 16));
        const floats = (from, to) => new Float32Array(M.HEAPU8.slice(b + count * from, b + count * to).buffer);
        return { xyz: floats(0, 12), phase: floats(12, 16), density: floats(16, 20) };
      }));
    },
    /** The boundary surface holding `fraction` of the probability at time t. */
    surface(text, t, fraction, resolution) {
      return withText(text, (s) => {
        checkState(M._vtw_state_surface(s, t, fraction, resolution, at.i32, at.facts));
        const v = view();
        const vertices = v.getInt32(at.i32, true);
        const triangles = v.getInt32(at.i32 + 4, true);
        const copy = (p, bytes) => M.HEAPU8.slice(p, p + bytes).buffer;
        return { level: v.getFloat64(at.facts, true),
          xyz: new Float32Array(copy(M._vtw_surface_xyz(), vertices * 12)),
          triangles: new Uint32Array(copy(M._vtw_surface_triangles(), triangles * 12)),
          phase: new Float32Array(copy(M._vtw_surface_phase(), vertices * 4)) };
      });
    },
    /** P(r) of the state at time t at each radius. */
    stateRadial(text, t, radii) {
      return withText(text, (s) => withBuffer(radii.length * 16, (b) => {
        new Float64Array(M.HEAPU8.buffer, b, radii.length).set(radii);
        checkState(M._vtw_state_radial(s, t, b, radii.length, b + radii.length * 8));
        return Array.from(new Float64Array(M.HEAPU8.buffer, b + radii.length * 8, radii.length));
      }));
    },
    about() {
      check(M._vt_about_texts(at.about));
      const v = view();
      const text = (i) => M.UTF8ToString(v.getUint32(at.about + 4 * i, true));
      return { Caption: text(0), FrameCaption: text(1), Label: text(2), YearsLabel: text(3) };
    },
  };
}

if (typeof module === 'object') module.exports = { VeltaraApi };
