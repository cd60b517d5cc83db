// The state picker: quantum numbers whose fields only take allowed values, the catalogue by
// textbook name, the hybrids and a superposition builder. Each of them writes the engine's text
// form of a state into the State field; the engine reads it (and says what is wrong, if anything).

const $ = (id) => document.getElementById(id);
const HYBRIDS = [['sp', 'sp', 2], ['sp2', 'sp²', 3], ['sp3', 'sp³', 4], ['sp3d', 'sp³d', 5], ['sp3d2', 'sp³d²', 6]];

/** A catalogue name as a textbook writes it: "3Dx²-y²" → "3d_x²−y²", "2Px" → "2p_x". */
export function textbookName(info) {
  const shell = `${info.n}${'spdf'[info.l]}`;
  if (info.OrbType === 1) return `${shell} (average of the subshell)`;
  const sub = info.Name.slice(2).replace(/-/g, '−');
  return sub ? `${shell}_${sub}` : shell;
}

/** The text form of a catalogue row: n,l,m for one orbital, av<n><l> for a subshell's average. */
export const catalogueText = (info) => (info.OrbType === 1 ? `av${info.n}${'spdf'[info.l]}`
  : `${info.n},${info.l},${info.M}`);

/** Keeps l and m inside their ranges for the n (and l) entered; returns whether all are whole. */
function clampNumbers() {
  const field = (id, lo, hi) => {
    const input = $(id);
    input.min = String(lo);
    input.max = String(hi);
    const v = Number(input.value);
    if (input.value !== '' && Number.isFinite(v)) input.value = String(Math.min(hi, Math.max(lo, Math.round(v))));
    return input.value !== '';
  };
  const ok = field('qn', 1, 30);
  const n = Number($('qn').value) || 1;
  field('ql', 0, n - 1);
  const l = Number($('ql').value) || 0;
  field('qm', -l, l);
  return field('qZ', 1, 100) && ok;
}

/** The text form of the quantum-number fields. */
export function numbersText() {
  clampNumbers();
  const v = (id) => Number($(id).value);
  const complex = document.querySelector('input[name=basis]:checked').value === 'complex';
  return `${v('qZ') > 1 ? `Z=${v('qZ')};` : ''}${v('qn')},${v('ql')},${v('qm')}${complex ? 'c' : ''}`;
}

/** Sets the fields from a described state's first term. */
export function showNumbers(info) {
  const t = info.terms?.[0];
  if (!t || t.average) return;
  $('qn').value = t.n;
  $('ql').value = t.l;
  $('qm').value = t.m;
  $('qZ').value = t.Z;
  document.querySelector(`input[name=basis][value=${t.complex ? 'complex' : 'real'}]`).checked = true;
  clampNumbers();
}

const short = (v) => String(Number(v.toPrecision(6)));

/** The builder's terms as one sum: (re+im i)*state + … */
export function sumText() {
  const terms = [...$('terms').children].map((li) => {
    const a = Number(li.querySelector('.amp').value);
    const phase = (Number(li.querySelector('.phase').value) * Math.PI) / 180;
    const re = a * Math.cos(phase);
    const im = a * Math.sin(phase);
    return `(${short(re)}${im < 0 ? '-' : '+'}${short(Math.abs(im))}i)*${li.dataset.state}`;
  });
  const z = [...$('terms').children].map((li) => li.dataset.z).find((x) => x) || '';
  return z + terms.join('+');
}

function addTerm(text) {
  const li = document.createElement('li');
  const z = text.match(/^Z=\d+;/);
  li.dataset.z = z ? z[0] : '';
  li.dataset.state = z ? text.slice(z[0].length) : text;
  const label = document.createElement('span');
  label.textContent = li.dataset.state;
  const amp = Object.assign(document.createElement('input'), { type: 'number', className: 'amp',
    min: '0', max: '1', step: '0.1', value: '0.7' });
  amp.setAttribute('aria-label', `Amplitude of ${li.dataset.state}`);
  const phase = Object.assign(document.createElement('input'), { type: 'number', className: 'phase',
    min: '-180', max: '180', step: '15', value: '0' });
  phase.setAttribute('aria-label', `Phase of ${li.dataset.state} in degrees`);
  const remove = Object.assign(document.createElement('button'), { type: 'button', textContent: '×' });
  remove.setAttribute('aria-label', `Remove ${li.dataset.state}`);
  remove.addEventListener('click', () => li.remove());
  const ampLabel = document.createElement('label');
  ampLabel.append('amplitude ', amp);
  const phaseLabel = document.createElement('label');
  phaseLabel.append('phase ', phase, '°');
  li.append(label, ampLabel, phaseLabel, remove);
  $('terms').append(li);
}

/** Builds the picker; `choose(text)` shows a state. */
export function buildPicker(catalogue, choose) {
  const select = $('catalogue');
  select.append(new Option('— choose —', ''));
  for (const n of [...new Set(catalogue.map((o) => o.n))]) {
    const group = document.createElement('optgroup');
    group.label = `n = ${n}`;
    for (const info of catalogue.filter((o) => o.n === n)) {
      group.append(new Option(textbookName(info), catalogueText(info)));
    }
    select.append(group);
  }
  select.addEventListener('change', () => select.value && choose(select.value));
  const hybrid = $('hybrid');
  hybrid.append(new Option('— choose —', ''));
  for (const [kind, name, count] of HYBRIDS) {
    const group = document.createElement('optgroup');
    group.label = name;
    for (let k = 0; k < count; k++) group.append(new Option(`${name} number ${k + 1} of ${count}`, `${kind}:${k}`));
    hybrid.append(group);
  }
  hybrid.addEventListener('change', () => hybrid.value && choose(hybrid.value));
  for (const id of ['qn', 'ql', 'qm', 'qZ']) {
    $(id).addEventListener('change', () => choose(numbersText()));
    $(id).addEventListener('keydown', (ev) => {
      if (ev.key === 'Enter') {
        ev.preventDefault();
        choose(numbersText());
      }
    });
  }
  for (const input of document.querySelectorAll('input[name=basis]')) {
    input.addEventListener('change', () => choose(numbersText()));
  }
  $('addTerm').addEventListener('click', () => {
    if ($('terms').children.length < 16) addTerm($('stateText').value.trim() || numbersText());
  });
  $('showSum').addEventListener('click', () => $('terms').children.length && choose(sumText()));
  // Two terms to start from: a transition's picture.
  addTerm('1,0,0');
  addTerm('2,1,0');
}
